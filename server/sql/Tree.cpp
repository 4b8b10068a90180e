#include "sql/Tree.h"

#include <algorithm>
#include <unordered_set>

namespace Qel::Sql {

namespace {

/// The values and conditions that stand in a query itself, down to where `visit` says false.
bool ForEachRoot(const Query &query, const std::function<bool(const Node &)> &visit)
{
    const auto all = [&](const std::vector<NodePtr> &nodes) {
        return std::all_of(nodes.begin(), nodes.end(),
                           [&](const NodePtr &node) { return visit(*node); });
    };
    const auto ordered = [&](const std::vector<OrderTerm> &terms) {
        return std::all_of(terms.begin(), terms.end(),
                           [&](const OrderTerm &term) { return visit(*term.value); });
    };
    return std::all_of(query.outputs.begin(), query.outputs.end(),
                       [&](const Output &output) { return visit(*output.value); }) &&
           std::all_of(query.relations.begin(), query.relations.end(),
                       [&](const auto &relation) { return all(relation->on); }) &&
           all(query.hidden) && all(query.where) && all(query.groupBy) &&
           (!query.having || visit(*query.having)) && ordered(query.orderBy);
}

bool ForEachNode(const Query &query, const std::function<bool(const Node &)> &visit)
{
    return ForEachRoot(query, [&](const Node &node) { return ForEachNode(node, visit); }) &&
           std::all_of(query.relations.begin(), query.relations.end(), [&](const auto &relation) {
               return !relation->query || ForEachNode(*relation->query, visit);
           });
}

} // namespace

bool Equal(const Node &a, const Node &b)
{
    if (&a == &b)
        return true;
    return a.op == b.op && a.type == b.type && a.text == b.text && a.fn == b.fn &&
           a.relation == b.relation && a.column == b.column && a.negated == b.negated &&
           a.distinct == b.distinct && a.query == b.query &&
           std::equal(a.arguments.begin(), a.arguments.end(), b.arguments.begin(),
                      b.arguments.end(),
                      [](const NodePtr &x, const NodePtr &y) { return Equal(*x, *y); });
}

bool ForEachNode(const Node &node, const std::function<bool(const Node &)> &visit)
{
    return visit(node) &&
           std::all_of(node.arguments.begin(), node.arguments.end(),
                       [&](const NodePtr &argument) { return ForEachNode(*argument, visit); }) &&
           (!node.query || ForEachNode(*node.query, visit));
}

void ForEachColumn(const Node &node, const std::function<void(const Node &)> &visit)
{
    ForEachNode(node, [&](const Node &part) {
        if (part.op == Op::Column)
            visit(part);
        return true;
    });
}

void ForEachSubSelect(const Query &query, const std::function<void(Query &)> &visit)
{
    std::vector<Query *> direct;
    std::unordered_set<const Node *> seen; // parts of a tree are shared, by ORDER BY above all
    const std::function<bool(const Node &)> collect = [&](const Node &node) {
        if (!seen.insert(&node).second)
            return true;
        if (node.query)
            direct.push_back(node.query.get());
        return std::all_of(node.arguments.begin(), node.arguments.end(),
                           [&](const NodePtr &argument) { return collect(*argument); });
    };
    ForEachRoot(query, collect);
    for (const auto &relation : query.relations) {
        if (relation->query)
            direct.push_back(relation->query.get());
    }
    for (Query *inner : direct) {
        ForEachSubSelect(*inner, visit);
        visit(*inner);
    }
}

bool IsConstant(const Node &node)
{
    return node.op == Op::Text || node.op == Op::Number || node.op == Op::Null ||
           (node.op == Op::Function && node.fn == Fn::Negate && IsConstant(*node.arguments[0]));
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
