#pragma once

#include <QString>

class QWidget;

namespace Qel {

class ClientDataSet;
class TPageGuide;
enum class TQueryType;

/// Loads all rows of a statement into `target` anew: closes it, keeps its controls still, queries.
void QueryAll(const QString &sql, ClientDataSet &target, TQueryType type);

/// Loads the paging bar's current page of a statement into `target` anew and gives the total to
/// the bar.
void QueryPage(const QString &sql, ClientDataSet &target, TPageGuide &pages);

/// Puts the focus into `list` after a query that found rows, else into `filter`; a control that
/// cannot take the focus now (hidden, disabled) is left alone.
void FocusAfterQuery(bool found, QWidget *list, QWidget *filter);

} // namespace Qel
