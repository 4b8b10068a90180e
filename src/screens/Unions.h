#pragma once

#include <QString>

namespace Qel {

/// The live groups by code, each with its region's and its leading organisation's name, as the
/// group trees show them; those whose code or name contains `filter`, unless that is blank.
QString UnionsSql(const QString &filter);

} // namespace Qel
