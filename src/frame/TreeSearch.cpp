#include "frame/TreeSearch.h"

#include "controls/DataTree.h"
#include "frame/MisCommon.h"

#include <algorithm>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

bool Matches(const DataTree &tree, int node, const QStringList &columns, const QString &text)
{
    return std::ranges::any_of(
        columns, [&](const QString &column) { return tree.NodeText(node, column).contains(text); });
}

/// The first top-level node from place `first` up to the column count that matches, or -1.
int FirstMatch(const DataTree &tree, int first, const QStringList &columns, const QString &text)
{
    const int end = std::min(tree.ColumnCount(), tree.TopLevelCount());
    for (int at = first; at < end; ++at) {
        const int node = tree.TopLevelNode(at);
        if (Matches(tree, node, columns, text))
            return node;
    }
    return -1;
}

} // namespace

void ReportSearchFinished(const QString &text)
{
    InfoBox(u"搜索 "_s + u'"' + text + u'"' + u" 完毕！"_s, u"提示"_s);
}

void FindNextInTree(DataTree &tree, const QStringList &columns, const QString &text)
{
    if (text.isEmpty())
        return;
    const int focused = tree.FocusedNode();
    const bool onMatch = focused >= 0 && Matches(tree, focused, columns, text);
    if (onMatch)
        tree.ExpandFocused();
    const int found =
        FirstMatch(tree, onMatch ? tree.AbsoluteIndex(focused) + 1 : 0, columns, text);
    if (found < 0)
        return ReportSearchFinished(text);
    tree.FocusNode(found);
    if (!onMatch) {
        tree.ExpandNode(found);
        tree.FocusNode(found);
    }
}

} // namespace Qel
