#pragma once

class QWidget;
class QString;

namespace Qel {

class ButtonEdit;

// The pickers as an edit's button opens them: with the edit's text as search text, and on Ok with
// the chosen id and name in the edit. False, and the edit is as it was, when cancelled.

bool PickRegion(QWidget *owner, ButtonEdit &edit);

/// Over `baseSql`, a complete SELECT over organisations without ORDER BY. `abbr`, if it is asked
/// for, becomes the chosen organisation's short name.
bool PickOrg(QWidget *owner, const QString &baseSql, ButtonEdit &edit, QString *abbr = nullptr);

} // namespace Qel
