#pragma once

#include <QtGlobal>

#include <memory>
#include <string>
#include <vector>

/// The statement as it was written: nothing looked up yet. Made by the parser, read by the binder.
namespace Qel::Sql::Syntax {

struct Select;
struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

enum class Kind {
    // values
    Number,
    Text,
    Null,
    Name,       ///< text, qualifier; marked by (+)
    Star,       ///< the * of COUNT(*)
    Call,       ///< text: the function; arguments
    Cast,       ///< text: the type; size; argument
    Case,       ///< arguments: pairs of condition and value, then perhaps a last value
    SimpleCase, ///< before those the value that is compared with each
    Minus,      ///< one argument
    Arithmetic, ///< text: + - * / ||; two arguments
    Query,      ///< a scalar sub-select
    // conditions
    And, ///< two arguments or more
    Or,
    Not,
    Compare, ///< text: = <> < <= > >=
    IsNull,
    Like,    ///< value, pattern and perhaps the escape character
    Between, ///< value, low, high
    In,      ///< value and a list
    InQuery, ///< value and a sub-select
    Exists,
};

struct Expression
{
    Kind kind = Kind::Null;
    qsizetype begin = 0; ///< place in the statement's text
    qsizetype end = 0;
    int depth = 1;
    std::string text;
    std::string qualifier;
    int size = 0;
    bool marked = false;
    bool negated = false;  ///< NOT LIKE, IS NOT NULL, ...
    bool distinct = false; ///< COUNT(DISTINCT x)
    std::vector<ExpressionPtr> arguments;
    std::unique_ptr<Select> query;

    bool IsCondition() const { return kind >= Kind::And; }
};

struct Item
{
    qsizetype begin = 0;
    bool star = false;     ///< * or qualifier.*
    std::string qualifier; ///< of a star
    ExpressionPtr value;
    std::string label; ///< empty: none was given
};

struct Source
{
    qsizetype begin = 0;
    std::string table; ///< empty: a sub-select
    std::unique_ptr<Select> query;
    std::string alias; ///< empty: none was given
};

struct Order
{
    ExpressionPtr value;
    bool descending = false;
    bool nullsFirst = false; ///< Oracle: with DESC unless said otherwise
};

struct Select
{
    qsizetype begin = 0;
    bool distinct = false;
    std::vector<Item> items;
    std::vector<Source> from;
    ExpressionPtr where;
    std::vector<ExpressionPtr> groupBy;
    ExpressionPtr having;
    std::vector<Order> orderBy;
};

} // namespace Qel::Sql::Syntax
