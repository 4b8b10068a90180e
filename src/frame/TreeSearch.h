#pragma once

#include <QString>
#include <QStringList>

namespace Qel {

class DataTree;

/// Says that a tree search found nothing more: 搜索 "text" 完毕！
void ReportSearchFinished(const QString &text);

/// Find next (F3) as the pickers and most trees do it, over the named columns; nothing for an
/// empty text, the closing message when nothing matched.
///  - If the focused node matches, it is expanded and the search goes on among the top-level
///    nodes from its place in the whole tree + 1.
///  - Otherwise it starts at the first top-level node, and the match is expanded.
/// Both scans end at the tree's number of columns, not of nodes. That bound is part of these
/// screens' behaviour: operators know F3 as a step among the first few top-level nodes.
void FindNextInTree(DataTree &tree, const QStringList &columns, const QString &text);

} // namespace Qel
