#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <variant>

/// Oracle SELECT statements as a test makes them, and (Evaluator.h) what they mean, read off the
/// rules of the language in the most simple-minded way. Shares nothing with server/sql, so that
/// the two can be held against each other.
namespace Qel::Reference {

enum class Type { Text, Number };

/// NULL, a text (never an empty one) or a whole number.
using Cell = std::variant<std::monostate, QString, qint64>;
using Row = QList<Cell>;
using Rows = QList<Row>;

inline bool IsNull(const Cell &cell)
{
    return cell.index() == 0;
}
QString Shown(const Cell &cell); ///< NULL as "-"

struct Select;
struct Term;
using SelectPtr = std::shared_ptr<const Select>;
using TermPtr = std::shared_ptr<const Term>;

enum class Kind {
    // values
    Column,
    Literal,
    Call, ///< NVL, DECODE
    Concat,
    Add,
    Case, ///< a condition and two values
    Scalar,
    Aggregate, ///< COUNT (without arguments: of *), MAX, MIN, SUM
    // conditions
    Compare,
    IsNull,
    Like,
    Between,
    InList, ///< the value, then the list
    InSelect,
    Exists,
    And,
    Or,
    Not,
};

struct Term
{
    Kind kind = Kind::Literal;
    Type type = Type::Text;
    QString text = {}; ///< the column's name, the function or the comparison
    // of a column
    int up = 0; ///< how many queries further out its relation is
    int relation = 0;
    int column = 0;
    bool marked = false; ///< with (+)
    bool negated = false;
    bool distinct = false;
    Cell literal = {};
    QList<TermPtr> arguments = {};
    SelectPtr select = {};
};

/// One part of WHERE; `marked` is the relation that carries (+) in it, -1: none does.
struct Conjunct
{
    TermPtr condition;
    int marked = -1;
};

/// One item of FROM.
struct Source
{
    QString alias;
    bool aliasWritten = true;
    int table = -1; ///< T<number>; -1: a sub-select
    SelectPtr select;
    QStringList columns;
    QList<Type> types;
};

struct Item
{
    TermPtr value = {}; ///< null: a star
    int starOf = -1;    ///< the relation; -1: of all of them
    QString label = {}; ///< written behind AS; empty: none
};

struct OrderTerm
{
    int item = -1; ///< of the select list, by its number or label; -1: a value of its own
    bool byLabel = false;
    TermPtr value;
    bool descending = false;
    std::optional<bool> nullsFirst = {}; ///< as written
};

struct Select
{
    bool distinct = false;
    QList<Item> items;
    QList<Source> sources;
    QList<Conjunct> where;
    bool bracketed = false; ///< the first two parts of WHERE stand in a bracket
    QList<TermPtr> groupBy;
    bool grouped = false; ///< GROUP BY or an aggregate
    TermPtr having;
    QList<OrderTerm> orderBy;
};

QString Text(const Select &select);

/// What the columns are called and of which type they are, stars written out.
QStringList LabelsOf(const Select &select);
QList<Type> TypesOf(const Select &select);

} // namespace Qel::Reference
