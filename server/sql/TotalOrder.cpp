#include "sql/TotalOrder.h"

#include <algorithm>
#include <set>

namespace Qel::Sql {

namespace {

using RelationSet = std::set<const Relation *>;

/// This column has one value once the rows of `needs` are known.
struct Fact
{
    const Relation *relation;
    int column;
    RelationSet needs;
};

RelationSet AllOf(const Query &query)
{
    return {query.joinOrder.begin(), query.joinOrder.end()};
}

/// Facts that `condition` states about `only`, or about any relation if that is null.
void CollectFacts(const Node &condition, const Relation *only, const RelationSet &own,
                  std::vector<Fact> &facts)
{
    if (condition.op != Op::Compare || condition.text != "=")
        return;
    for (size_t side = 0; side < 2; ++side) {
        const Node &column = *condition.arguments[side];
        if (column.op != Op::Column || !own.contains(column.relation) ||
            (only && column.relation != only))
            continue;
        Fact fact{column.relation, column.column, {}};
        ForEachColumn(*condition.arguments[1 - side], [&](const Node &other) {
            if (own.contains(other.relation))
                fact.needs.insert(other.relation);
        });
        if (!fact.needs.contains(column.relation))
            facts.push_back(std::move(fact));
    }
}

/// Equalities of WHERE hold for every row. Those of an ON say what the outer relation's row is,
/// not what the others' are: those have rows that the condition does not hold for.
std::vector<Fact> FactsOf(const Query &query)
{
    const RelationSet own = AllOf(query);
    std::vector<Fact> facts;
    for (const NodePtr &condition : query.where)
        CollectFacts(*condition, nullptr, own, facts);
    for (const Relation *relation : query.joinOrder) {
        for (const NodePtr &condition : relation->on)
            CollectFacts(*condition, relation, own, facts);
    }
    return facts;
}

bool IsSeed(const std::vector<OrderTerm> &order, const Relation &relation, int column)
{
    return relation.columns[static_cast<size_t>(column)].notNull &&
           std::any_of(order.begin(), order.end(), [&](const OrderTerm &term) {
               return term.value->op == Op::Column && term.value->relation == &relation &&
                      term.value->column == column;
           });
}

bool IsDetermined(const Relation &relation, const RelationSet &known,
                  const std::vector<Fact> &facts, const std::vector<OrderTerm> &order)
{
    const auto columnKnown = [&](int column) {
        return IsSeed(order, relation, column) ||
               std::any_of(facts.begin(), facts.end(), [&](const Fact &fact) {
                   return fact.relation == &relation && fact.column == column &&
                          std::includes(known.begin(), known.end(), fact.needs.begin(),
                                        fact.needs.end());
               });
    };
    return std::any_of(
        relation.uniqueKeys.begin(), relation.uniqueKeys.end(),
        [&](const ColumnList &key) { return std::all_of(key.begin(), key.end(), columnKnown); });
}

RelationSet Closure(RelationSet known, const Query &query, const std::vector<Fact> &facts,
                    const std::vector<OrderTerm> &order)
{
    for (bool grown = true; grown;) {
        grown = false;
        for (const Relation *relation : query.joinOrder) {
            if (!known.contains(relation) && IsDetermined(*relation, known, facts, order)) {
                known.insert(relation);
                grown = true;
            }
        }
    }
    return known;
}

/// Relations whose rows, together with the values of `order`, determine the rows of all.
std::vector<const Relation *> Determining(const Query &query, const std::vector<OrderTerm> &order)
{
    const std::vector<Fact> facts = FactsOf(query);
    RelationSet needed = AllOf(query);
    const size_t all = needed.size();
    // The outer ones go first: they hang on others. Then in FROM order: clients begin with the
    // table that the others are looked up from as often as not, so the choice is as good as any.
    std::vector<const Relation *> candidates(query.joinOrder.rbegin(), query.joinOrder.rend());
    std::stable_partition(candidates.begin(), candidates.end(),
                          [](const Relation *relation) { return relation->outer; });
    for (const Relation *relation : candidates) {
        RelationSet fewer = needed;
        fewer.erase(relation);
        if (Closure(fewer, query, facts, order).size() == all)
            needed = std::move(fewer);
    }
    std::vector<const Relation *> result;
    for (const Relation *relation : query.joinOrder) {
        if (needed.contains(relation))
            result.push_back(relation);
    }
    return result;
}

int OutputOf(const Query &query, const Node &value)
{
    for (size_t i = 0; i < query.outputs.size(); ++i) {
        if (Equal(*query.outputs[i].value, value))
            return static_cast<int>(i);
    }
    return -1;
}

/// The column of `relation`, a flat sub-select, that shows this value of its query.
NodePtr Exported(const Relation &relation, const NodePtr &value)
{
    Query &query = *relation.query;
    if (const int output = OutputOf(query, *value); output >= 0)
        return ColumnNode(relation, output);
    auto hidden = std::find_if(query.hidden.begin(), query.hidden.end(),
                               [&](const NodePtr &node) { return Equal(*node, *value); });
    if (hidden == query.hidden.end()) {
        query.hidden.push_back(value);
        hidden = query.hidden.end() - 1;
    }
    return ColumnNode(relation, static_cast<int>(relation.columns.size()) +
                                    static_cast<int>(hidden - query.hidden.begin()));
}

std::vector<NodePtr> RowIdentity(const Query &query, const std::vector<OrderTerm> &order,
                                 Dialect dialect);

/// Values that tell the rows of this relation apart.
std::vector<NodePtr> RowIdentity(const Relation &relation, Dialect dialect)
{
    std::vector<NodePtr> identity;
    if (relation.query && relation.query->IsFlat()) {
        for (const NodePtr &value : RowIdentity(*relation.query, {}, dialect))
            identity.push_back(Exported(relation, value));
        return identity;
    }
    if (relation.query) {
        // Rows that look alike are alike, whatever they were made of.
        for (size_t i = 0; i < relation.columns.size(); ++i)
            identity.push_back(ColumnNode(relation, static_cast<int>(i)));
        return identity;
    }
    if (dialect == Dialect::Sqlite)
        return {ColumnNode(relation, RowIdColumn)};
    ColumnList columns = relation.table->primaryKey;
    if (columns.empty()) {
        for (size_t i = 0; i < relation.columns.size(); ++i)
            columns.push_back(static_cast<int>(i));
    }
    for (const int column : columns)
        identity.push_back(ColumnNode(relation, column));
    return identity;
}

/// Values that tell apart the rows that the tables and conditions, or the groups, make.
std::vector<NodePtr> StoredIdentity(const Query &query, const std::vector<OrderTerm> &order,
                                    Dialect dialect)
{
    if (query.grouped)
        return query.groupBy;
    std::vector<NodePtr> identity;
    for (const Relation *relation : Determining(query, order)) {
        for (NodePtr &value : RowIdentity(*relation, dialect))
            identity.push_back(std::move(value));
    }
    return identity;
}

/// Values that tell the query's rows apart.
std::vector<NodePtr> RowIdentity(const Query &query, const std::vector<OrderTerm> &order,
                                 Dialect dialect)
{
    if (!query.distinct)
        return StoredIdentity(query, order, dialect);
    std::vector<NodePtr> identity;
    for (const Output &output : query.outputs)
        identity.push_back(output.value);
    return identity;
}

/// What has to stand behind `order` so that no two of these values' rows are equal in it.
std::vector<OrderTerm> Remaining(const std::vector<OrderTerm> &order,
                                 const std::vector<NodePtr> &identity)
{
    // In the direction of the last term one index can give the whole order.
    const bool descending = !order.empty() && order.back().descending;
    std::vector<OrderTerm> terms;
    for (const NodePtr &value : identity) {
        const bool known =
            IsConstant(*value) || std::any_of(order.begin(), order.end(), [&](const auto &term) {
                return Equal(*term.value, *value);
            });
        if (!known)
            terms.push_back({value, descending, descending});
    }
    return terms;
}

std::vector<OrderTerm> TieBreak(const Query &query, Dialect dialect)
{
    return Remaining(query.orderBy, RowIdentity(query, query.orderBy, dialect));
}

/// The order of an ordered sub-select that is the only source of the query.
std::vector<OrderTerm> InheritedOrder(const Query &query)
{
    std::vector<OrderTerm> order;
    if (query.relations.size() != 1 || !query.relations[0]->query)
        return order;
    const Relation &only = *query.relations[0];
    for (const OrderTerm &term : only.query->orderBy) {
        if (only.query->IsFlat() || OutputOf(*only.query, *term.value) >= 0)
            order.push_back({Exported(only, term.value), term.descending, term.nullsFirst});
    }
    return order;
}

/// The order in which rows are numbered, before the query's own is applied.
std::vector<OrderTerm> StoredOrder(const Query &query, Dialect dialect)
{
    std::vector<OrderTerm> order = InheritedOrder(query);
    const auto rest = Remaining(order, StoredIdentity(query, order, dialect));
    order.insert(order.end(), rest.begin(), rest.end());
    return order;
}

} // namespace

std::vector<ColumnList> UniqueKeysOf(const Query &query)
{
    const auto outputsOf = [&](const std::vector<NodePtr> &values) {
        ColumnList columns;
        for (const NodePtr &value : values)
            columns.push_back(OutputOf(query, *value));
        return columns;
    };
    const auto isShown = [](const ColumnList &columns) {
        return std::find(columns.begin(), columns.end(), -1) == columns.end();
    };
    if (query.grouped) {
        const ColumnList key = outputsOf(query.groupBy);
        return isShown(key) ? std::vector<ColumnList>{key} : std::vector<ColumnList>();
    }
    if (query.distinct) {
        ColumnList all(query.outputs.size());
        for (size_t i = 0; i < all.size(); ++i)
            all[i] = static_cast<int>(i);
        return {all};
    }
    // One key of each determining relation, as far as its columns are shown or have one value.
    const std::vector<Fact> facts = FactsOf(query);
    ColumnList key;
    for (const Relation *relation : Determining(query, {})) {
        const auto shownKey = [&](const ColumnList &columns) -> std::optional<ColumnList> {
            ColumnList shown;
            for (const int column : columns) {
                const int output = OutputOf(query, *ColumnNode(*relation, column));
                const bool fixed = std::any_of(facts.begin(), facts.end(), [&](const Fact &fact) {
                    return fact.relation == relation && fact.column == column && fact.needs.empty();
                });
                if (output >= 0)
                    shown.push_back(output);
                else if (!fixed)
                    return std::nullopt;
            }
            return shown;
        };
        std::optional<ColumnList> shown;
        for (const ColumnList &columns : relation->uniqueKeys) {
            shown = shownKey(columns);
            if (shown)
                break;
        }
        if (!shown)
            return {};
        key.insert(key.end(), shown->begin(), shown->end());
    }
    return {key};
}

void CompleteOrder(Query &query, Dialect dialect)
{
    ForEachSubSelect(query, [&](Query &inner) {
        // Only what is cut or handed on has to be in order.
        if (inner.IsFlat() && inner.orderBy.empty())
            inner.orderBy = InheritedOrder(inner);
        if (inner.rowLimit)
            inner.tieBreak = TieBreak(inner, dialect);
        if (inner.numbersRows)
            inner.rowOrder = StoredOrder(inner, dialect);
    });
    if (query.IsFlat() && query.orderBy.empty())
        query.orderBy = InheritedOrder(query);
    query.tieBreak = TieBreak(query, dialect);
    if (query.numbersRows)
        query.rowOrder = StoredOrder(query, dialect);
}

std::vector<const Relation *> RelationsThatCount(const Query &query)
{
    RelationSet named;
    const auto name = [&](const Node &column) { named.insert(column.relation); };
    for (const NodePtr &condition : query.where)
        ForEachColumn(*condition, name);
    const std::vector<Fact> facts = FactsOf(query);
    std::vector<const Relation *> result;
    for (auto it = query.joinOrder.rbegin(); it != query.joinOrder.rend(); ++it) {
        const Relation *relation = *it;
        RelationSet others = AllOf(query);
        others.erase(relation);
        if (relation->outer && !named.contains(relation) &&
            IsDetermined(*relation, others, facts, {}))
            continue;
        for (const NodePtr &condition : relation->on)
            ForEachColumn(*condition, name);
        result.push_back(relation);
    }
    std::reverse(result.begin(), result.end());
    return result;
}

} // namespace Qel::Sql
