#pragma once

#include <QString>

class QWidget;

namespace Qel {

class ClientDataSet;
class DataTree;
class TPageGuide;
enum class TQueryType;

/// Loads all rows of a statement into `target` anew: closes it, keeps its controls still, queries.
void QueryAll(const QString &sql, ClientDataSet &target, TQueryType type);

/// Loads the paging bar's current page of a statement into `target` anew and gives the total to
/// the bar.
void QueryPage(const QString &sql, ClientDataSet &target, TPageGuide &pages);

/// Takes the current row out of a page, and out of the bar's total, without a new query.
void DeleteFromPage(ClientDataSet &target, TPageGuide &pages);

/// Puts the focus into a control, unless that cannot take it now (hidden, disabled).
void FocusIfPossible(QWidget *widget);

/// The same for `list` after a query that found rows, else for `filter`.
void FocusAfterQuery(bool found, QWidget *list, QWidget *filter);

/// After a query that filled a tree: the focused node is expanded (not its children), the first
/// node focused, and the keyboard focus goes into the tree; without nodes into `filter`.
void FocusTreeAfterQuery(DataTree &tree, QWidget *filter);

} // namespace Qel
