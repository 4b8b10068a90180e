#include "sql/LikeIndex.h"

#include "sql/Catalog.h"
#include "sql/Grams.h"
#include "sql/Values.h"

#include <algorithm>
#include <optional>

namespace Qel::Sql {

namespace {

/// The alternatives of a condition, however they are bracketed.
void CollectAlternatives(const Node &condition, std::vector<const Node *> &alternatives)
{
    if (condition.op != Op::Or) {
        alternatives.push_back(&condition);
        return;
    }
    for (const NodePtr &one : condition.arguments)
        CollectAlternatives(*one, alternatives);
}

/// Whether rows may be left out of the query before its conditions without another effect: no row
/// of its result depends on which others there are.
bool PassesRowsOn(const Query &query)
{
    return query.IsFlat() && !query.rowLimit && !query.numbersRows;
}

/// A column of a table, named in `owner` or passed on from there by sub-selects.
struct Place
{
    Query *owner;
    const Relation *relation;
    int column;
};

std::optional<Place> PlaceOf(Query &query, const Node &column)
{
    Query *owner = &query;
    const Node *node = &column;
    while (node->op == Op::Column && node->column != RowIdColumn) {
        const Relation *relation = node->relation;
        const bool own = std::any_of(owner->relations.begin(), owner->relations.end(),
                                     [&](const auto &one) { return one.get() == relation; });
        if (!own) // of a query around this one
            return std::nullopt;
        if (relation->table)
            return Place{owner, relation, node->column};
        owner = relation->query.get();
        if (!PassesRowsOn(*owner) || static_cast<size_t>(node->column) >= owner->outputs.size())
            return std::nullopt;
        node = owner->outputs[static_cast<size_t>(node->column)].value.get();
    }
    return std::nullopt;
}

/// What a table's grams are asked for: on SQLite an expression, on PostgreSQL parts that must all
/// be there.
using Grams = std::vector<std::string>;

Grams GramsAskedFor(const std::string &pattern, char escape, Dialect dialect)
{
    if (dialect == Dialect::PostgreSql) // which itself puts them in upper case
        return PartsOfPattern(pattern, escape);
    // Grams are of upper-case texts: what holds the pattern as it is holds it in upper case.
    std::string expression = GramsOfPattern(WithOtherCase(pattern, true), escape);
    return expression.empty() ? Grams() : Grams{std::move(expression)};
}

/// "Column LIKE pattern" or "UPPER(column) LIKE pattern" that grams can tell something about.
struct Search
{
    Place place;
    Grams grams;
};

std::optional<Search> SearchOf(Query &query, const Node &condition, Dialect dialect)
{
    if (condition.op != Op::Like || condition.negated || condition.arguments[1]->op != Op::Text)
        return std::nullopt;
    const Node *value = condition.arguments[0].get();
    if (value->op == Op::Function && value->fn == Fn::Upper)
        value = value->arguments[0].get();
    const auto place = PlaceOf(query, *value);
    if (!place)
        return std::nullopt;
    const ColumnList &searched = place->relation->table->searched;
    if (std::find(searched.begin(), searched.end(), place->column) == searched.end())
        return std::nullopt;
    char escape = 0;
    if (condition.arguments.size() > 2) {
        const Node &character = *condition.arguments[2];
        if (character.op != Op::Text || character.text.size() != 1)
            return std::nullopt;
        escape = character.text.front();
    }
    Grams grams = GramsAskedFor(condition.arguments[1]->text, escape, dialect);
    if (grams.empty())
        return std::nullopt;
    return Search{*place, std::move(grams)};
}

bool HoldsColumns(const Node &node)
{
    bool found = false;
    ForEachColumn(node, [&](const Node &) { found = true; });
    return found;
}

bool LeadsIndex(const Table &table, int column)
{
    const auto leads = [&](const ColumnList &index) { return index.front() == column; };
    return (!table.primaryKey.empty() && leads(table.primaryKey)) ||
           std::any_of(table.indexes.begin(), table.indexes.end(), leads) ||
           std::any_of(table.uniqueIndexes.begin(), table.uniqueIndexes.end(), leads);
}

/// Whether a condition compares an indexed column with a value. SQLite takes candidates for few,
/// however many there are: a week of orders is the better way in.
bool IsWayIn(const Node &condition)
{
    if (condition.op != Op::Compare && condition.op != Op::Between && condition.op != Op::In)
        return false;
    if (condition.negated || condition.text == "<>" || HoldsColumns(*condition.arguments[1]))
        return false;
    const Node &column = *condition.arguments[0];
    if (column.op != Op::Column || !column.relation->table)
        return false;
    return LeadsIndex(*column.relation->table, column.column);
}

bool IsFoundAnotherWay(const Query &query)
{
    return std::any_of(query.where.begin(), query.where.end(),
                       [](const NodePtr &condition) { return IsWayIn(*condition); });
}

NodePtr HasParts(const Relation &relation, const Grams &parts)
{
    auto node = std::make_shared<Node>();
    node->op = Op::HasGrams;
    node->arguments = {ColumnNode(relation, RowIdColumn)};
    for (const std::string &part : parts) {
        auto text = std::make_shared<Node>();
        text->op = Op::Text;
        text->type = Type::Text;
        text->text = part;
        node->arguments.push_back(std::move(text));
    }
    return node;
}

NodePtr Matches(const Query &owner, const Relation &relation, std::string grams)
{
    auto node = std::make_shared<Node>();
    node->op = IsFoundAnotherWay(owner) ? Op::KeepsGrams : Op::HasGrams;
    node->text = std::move(grams);
    node->arguments = {ColumnNode(relation, RowIdColumn)};
    return node;
}

/// What the rows of each table must have grams of, in the order of the condition.
struct Needed
{
    Query *owner;
    const Relation *relation;
    std::vector<Grams> alternatives;
};

void Need(std::vector<Needed> &all, Search search)
{
    auto found = std::find_if(all.begin(), all.end(), [&](const Needed &one) {
        return one.relation == search.place.relation;
    });
    if (found == all.end())
        found = all.insert(all.end(), {search.place.owner, search.place.relation, {}});
    auto &list = found->alternatives;
    if (std::find(list.begin(), list.end(), search.grams) == list.end())
        list.push_back(std::move(search.grams));
}

NodePtr AnyOf(std::vector<NodePtr> conditions)
{
    if (conditions.size() == 1)
        return conditions.front();
    auto either = std::make_shared<Node>();
    either->op = Op::Or;
    either->arguments = std::move(conditions);
    return either;
}

NodePtr ConditionOf(const Needed &needed, Dialect dialect)
{
    if (dialect == Dialect::PostgreSql) {
        std::vector<NodePtr> conditions;
        for (const Grams &parts : needed.alternatives)
            conditions.push_back(HasParts(*needed.relation, parts));
        return AnyOf(std::move(conditions));
    }
    std::string grams;
    for (const Grams &one : needed.alternatives)
        grams += (grams.empty() ? "(" : " OR (") + one.front() + ')';
    return Matches(*needed.owner, *needed.relation, std::move(grams));
}

/// Of one condition; false where a row may fit it without the grams of any pattern.
bool CollectNeeds(Query &query, const Node &condition, Dialect dialect, std::vector<Needed> &needs)
{
    std::vector<const Node *> alternatives;
    CollectAlternatives(condition, alternatives);
    for (const Node *one : alternatives) {
        auto search = SearchOf(query, *one, dialect);
        if (!search)
            return false;
        Need(needs, *std::move(search));
    }
    return true;
}

/// The condition itself, as "CASE WHEN condition THEN 1 = 1 END": PostgreSQL expects half of the
/// rows of that, so that what is rare is not counted as rare twice. One that makes outer joins
/// inner ones stays as it is: the planner would not see that any more.
NodePtr Confirming(const NodePtr &condition, const Needed &needed)
{
    bool isOuter = needed.relation->outer;
    ForEachColumn(*condition,
                  [&](const Node &column) { isOuter = isOuter || column.relation->outer; });
    if (isOuter)
        return condition;
    auto one = std::make_shared<Node>();
    one->op = Op::Number;
    one->type = Type::Integer;
    one->text = "1";
    auto holds = std::make_shared<Node>();
    holds->op = Op::Compare;
    holds->text = "=";
    holds->arguments = {one, one};
    auto node = std::make_shared<Node>();
    node->op = Op::Case;
    node->arguments = {condition, holds};
    return node;
}

void Narrow(Query &query, Dialect dialect, std::vector<NodePtr> &added)
{
    const std::vector<NodePtr> conditions = query.where; // more are added meanwhile
    for (const NodePtr &condition : conditions) {
        std::vector<Needed> needs;
        if (!CollectNeeds(query, *condition, dialect, needs))
            continue;
        if (needs.size() == 1) {
            added.push_back(ConditionOf(needs.front(), dialect));
            if (dialect == Dialect::PostgreSql)
                *std::find(query.where.begin(), query.where.end(), condition) =
                    Confirming(condition, needs.front());
            auto &where = needs.front().owner->where;
            where.insert(where.begin(), added.back());
            continue;
        }
        // One or the other table: only where both are at hand, and where it is no dearer than LIKE.
        if (dialect == Dialect::PostgreSql ||
            std::any_of(needs.begin(), needs.end(),
                        [&](const Needed &one) { return one.owner != &query; }))
            continue;
        std::vector<NodePtr> either;
        for (const Needed &one : needs)
            either.push_back(ConditionOf(one, dialect));
        added.push_back(AnyOf(std::move(either)));
        query.where.insert(query.where.begin(), added.back());
    }
}

/// "Hub.column = relation.key": the rows of the relation are looked up from the hub.
struct Link
{
    const Relation *hub;
    int hubColumn;
    int key;
};

/// Those of a relation whose hub has an index for the way back.
std::vector<Link> LinksOf(const Query &query, const Relation &relation)
{
    std::vector<Link> links;
    const auto add = [&](const Node &key, const Node &column) {
        if (key.op != Op::Column || key.relation != &relation || column.op != Op::Column ||
            column.relation == &relation || !column.relation->table ||
            std::find(query.joinOrder.begin(), query.joinOrder.end(), column.relation) ==
                query.joinOrder.end())
            return;
        if (LeadsIndex(*column.relation->table, column.column))
            links.push_back({column.relation, column.column, key.column});
    };
    for (const auto *conditions : {&query.where, &relation.on}) {
        for (const NodePtr &condition : *conditions) {
            if (condition->op != Op::Compare || condition->text != "=")
                continue;
            add(*condition->arguments[0], *condition->arguments[1]);
            add(*condition->arguments[1], *condition->arguments[0]);
        }
    }
    return links;
}

/// From `hub` to what each of the tables needs; null: one of them hangs on something else.
NodePtr LeadFrom(const Query &query, const Relation &hub, const std::vector<Needed> &needs,
                 Dialect dialect)
{
    auto node = std::make_shared<Node>();
    node->op = Op::LeadsToGrams;
    node->relation = &hub;
    for (const Needed &needed : needs) {
        const std::vector<Link> links = LinksOf(query, *needed.relation);
        const auto link = std::find_if(links.begin(), links.end(),
                                       [&](const Link &one) { return one.hub == &hub; });
        if (link == links.end())
            return nullptr;
        node->arguments.push_back(ColumnNode(hub, link->hubColumn));
        node->arguments.push_back(ColumnNode(*needed.relation, link->key));
        node->arguments.push_back(ConditionOf(needed, dialect));
    }
    return node;
}

NodePtr LeadOf(Query &query, const Node &condition, Dialect dialect)
{
    std::vector<Needed> needs;
    if (!CollectNeeds(query, condition, dialect, needs) || needs.size() < 2 ||
        std::any_of(needs.begin(), needs.end(),
                    [&](const Needed &one) { return one.owner != &query; }))
        return nullptr;
    for (const Link &link : LinksOf(query, *needs.front().relation)) {
        if (NodePtr lead = LeadFrom(query, *link.hub, needs, dialect))
            return lead;
    }
    return nullptr;
}

} // namespace

NodePtr LeadByGrams(Query &query, Dialect dialect)
{
    if (IsFoundAnotherWay(query))
        return nullptr;
    for (const NodePtr &condition : query.where) {
        if (NodePtr lead = LeadOf(query, *condition, dialect)) {
            query.where.insert(query.where.begin(), lead);
            return lead;
        }
    }
    return nullptr;
}

std::vector<NodePtr> NarrowByGrams(Query &query, Dialect dialect)
{
    std::vector<NodePtr> added;
    ForEachSubSelect(query, [&](Query &below) { Narrow(below, dialect, added); });
    Narrow(query, dialect, added);
    return added;
}

bool IsOrderedByIndex(Query &query)
{
    if (query.orderBy.empty() || query.orderBy.front().value->op != Op::Column)
        return false;
    const auto place = PlaceOf(query, *query.orderBy.front().value);
    if (!place)
        return false;
    return LeadsIndex(*place->relation->table, place->column);
}

} // namespace Qel::Sql
