#include "sql/Tree.h"

#include <algorithm>

namespace Qel::Sql {

namespace {

void ForEachColumn(const Query &query, const std::function<void(const Node &)> &visit)
{
    const auto all = [&](const std::vector<NodePtr> &nodes) {
        for (const NodePtr &node : nodes)
            ForEachColumn(*node, visit);
    };
    for (const Output &output : query.outputs)
        ForEachColumn(*output.value, visit);
    for (const auto &relation : query.relations) {
        all(relation->on);
        if (relation->query)
            ForEachColumn(*relation->query, visit);
    }
    all(query.where);
    all(query.groupBy);
    if (query.having)
        ForEachColumn(*query.having, visit);
    for (const OrderTerm &term : query.orderBy)
        ForEachColumn(*term.value, visit);
}

} // namespace

bool Equal(const Node &a, const Node &b)
{
    return a.op == b.op && a.type == b.type && a.text == b.text && a.fn == b.fn &&
           a.relation == b.relation && a.column == b.column && a.negated == b.negated &&
           a.distinct == b.distinct && a.query == b.query &&
           std::equal(a.arguments.begin(), a.arguments.end(), b.arguments.begin(),
                      b.arguments.end(),
                      [](const NodePtr &x, const NodePtr &y) { return Equal(*x, *y); });
}

void ForEachColumn(const Node &node, const std::function<void(const Node &)> &visit)
{
    if (node.op == Op::Column)
        visit(node);
    for (const NodePtr &argument : node.arguments)
        ForEachColumn(*argument, visit);
    if (node.query)
        ForEachColumn(*node.query, visit);
}

bool CanBeNull(const Node &node)
{
    switch (node.op) {
    case Op::Text:
    case Op::Number:
        return false;
    case Op::Function:
        return node.fn != Fn::Count && node.fn != Fn::RowNumber && node.fn != Fn::SysDate;
    case Op::Column: {
        if (node.column == RowIdColumn)
            return false; // where it is NULL there is no row at all
        const Relation &relation = *node.relation;
        return relation.outer || static_cast<size_t>(node.column) >= relation.columns.size() ||
               !relation.columns[static_cast<size_t>(node.column)].notNull;
    }
    default:
        return true;
    }
}

NodePtr ColumnNode(const Relation &relation, int column)
{
    auto node = std::make_shared<Node>();
    node->op = Op::Column;
    node->relation = &relation;
    node->column = column;
    if (column >= 0 && static_cast<size_t>(column) < relation.columns.size()) {
        const RelationColumn &known = relation.columns[static_cast<size_t>(column)];
        node->type = known.type;
        node->size = known.size;
    }
    return node;
}

} // namespace Qel::Sql
