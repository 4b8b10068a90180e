#pragma once

#include "sql/Catalog.h"
#include "sql/Functions.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The statement with every name looked up, every value typed and every join in its place. Made by
/// the binder, completed with a total order, written out by the printer.
namespace Qel::Sql {

enum class Type { Null, Text, Integer, Real, Date };

inline bool IsNumber(Type type)
{
    return type == Type::Integer || type == Type::Real;
}

enum class Op {
    // values
    Null,
    Text,   ///< text
    Number, ///< text
    Column,
    Function,   ///< fn
    Case,       ///< pairs of condition and value, then perhaps a last value
    SimpleCase, ///< before those the value that is compared with each
    Query,
    // conditions
    And,
    Or,
    Not,
    Compare, ///< text: the operator
    Same,    ///< equal, or both NULL
    IsNull,
    Like,
    Between,
    In,
    InQuery,
    Exists,
    HasGrams,     ///< the row number of a table; text: what its gram table must match, on SQLite;
                  ///< behind it on PostgreSQL: parts of which its texts must have the grams
    KeepsGrams,   ///< the same, of rows that are found another way
    LeadsToGrams, ///< rows of `relation` that lead to such rows; in threes: a column of it, the
                  ///< column of another table that it is equal to, that table's HasGrams
};

struct Node;
struct Query;
struct Relation;
using NodePtr = std::shared_ptr<const Node>; ///< parts of a tree may be shared

struct Node
{
    Op op = Op::Null;
    Type type = Type::Null;
    int size = 0; ///< largest number of characters of a text; 0: not known
    std::string text;
    Fn fn = Fn::Count;
    const Relation *relation = nullptr;
    int column = 0; ///< in Relation::columns; behind them the hidden columns of its sub-select
    bool negated = false;
    bool distinct = false;
    std::vector<NodePtr> arguments;
    std::shared_ptr<Query> query;
};

/// Node::column of the number that SQLite gives every row of a table.
inline constexpr int RowIdColumn = -1;

struct RelationColumn
{
    std::string name;
    Type type = Type::Null;
    int size = 0;
    bool notNull = false;
    bool readable = true;
};

/// One item of a FROM list: a table or a sub-select.
struct Relation
{
    int id = 0; ///< unique in the whole statement; its name there is t<id>
    std::string alias;
    const Table *table = nullptr; ///< null: a sub-select
    std::string
        condition; ///< in the database's SQL: the rows of the table that are there; empty: all
    std::shared_ptr<Query> query;
    std::vector<RelationColumn> columns;
    std::vector<ColumnList> uniqueKeys; ///< an empty one: at most one row
    bool outer = false;                 ///< filled with NULL where nothing fits
    std::vector<NodePtr> on;            ///< of an outer one
};

struct Output
{
    std::string label;
    NodePtr value;
};

struct OrderTerm
{
    NodePtr value;
    bool descending = false;
    bool nullsFirst = false;
};

struct Query
{
    bool distinct = false;
    bool grouped = false; ///< GROUP BY or an aggregate
    std::vector<Output> outputs;
    std::vector<NodePtr> hidden; ///< columns behind the outputs that only an outer order needs
    std::vector<std::unique_ptr<Relation>> relations; ///< as in FROM
    std::vector<const Relation *> joinOrder;          ///< inner ones first
    std::vector<NodePtr> where;                       ///< all of them hold
    std::vector<NodePtr> groupBy;
    NodePtr having;
    std::vector<OrderTerm> orderBy;
    std::vector<OrderTerm> tieBreak; ///< makes `orderBy` a total order
    std::optional<qint64> rowLimit;  ///< ROWNUM <= n; the query is flat and has no order of its own
    bool numbersRows = false;        ///< ROWNUM is among the values
    std::vector<OrderTerm> rowOrder; ///< in which it counts; total

    bool IsFlat() const { return !distinct && !grouped; }
};

bool Equal(const Node &a, const Node &b);

/// Calls `visit` for every node of the tree, those in its sub-selects too, until it says false.
/// Returns whether it never did.
bool ForEachNode(const Node &node, const std::function<bool(const Node &)> &visit);

/// Calls `visit` for every column that the tree names, those in its sub-selects too.
void ForEachColumn(const Node &node, const std::function<void(const Node &)> &visit);

/// Calls `visit` for every query below this one, the innermost first.
void ForEachSubSelect(const Query &query, const std::function<void(Query &)> &visit);

/// A literal, signed or not: it orders and groups nothing, and databases may read it as the
/// position of a column there.
bool IsConstant(const Node &node);

/// Whether a value can be NULL, as far as the tree shows it: false is certain.
bool CanBeNull(const Node &node);

NodePtr ColumnNode(const Relation &relation, int column);

} // namespace Qel::Sql
