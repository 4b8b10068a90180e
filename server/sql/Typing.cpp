#include "sql/Typing.h"

#include "sql/Values.h"

#include <QString>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

int CharacterCount(std::string_view utf8)
{
    return static_cast<int>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

[[noreturn]] void BadValue(const std::string &text, const QString &wanted, qsizetype position)
{
    throw ESqlError("sql.value", position,
                    u"“%1”不是%2"_s.arg(QString::fromStdString(text).left(60), wanted));
}

NodePtr Retyped(const NodePtr &node, Type type, int size)
{
    auto copy = std::make_shared<Node>(*node);
    copy->type = type;
    copy->size = size;
    return copy;
}

NodePtr ToText(const NodePtr &node)
{
    if (node->type == Type::Date)
        return Retyped(node, Type::Text, 19); // is stored in this form
    if (node->op == Op::Number)
        return TextNode(NumberText(*ParseNumber(node->text)));
    return FunctionNode(Fn::NumberText, Type::Text, {node}, 40);
}

NodePtr ToNumber(const NodePtr &node, qsizetype position)
{
    if (node->type == Type::Date)
        throw ESqlError("sql.syntax", position, u"日期不能当作数字"_s);
    if (node->op != Op::Text)
        return FunctionNode(Fn::ToNumber, Type::Real, {node});
    const auto number = ParseNumber(node->text);
    if (!number)
        BadValue(node->text, u"数字"_s, position);
    const std::string text = NumberText(*number);
    if (!text.starts_with('-'))
        return NumberNode(text);
    return FunctionNode(Fn::Negate, Type::Real, {NumberNode(text.substr(1))});
}

NodePtr ToDate(const NodePtr &node, qsizetype position)
{
    if (IsNumber(node->type))
        throw ESqlError("sql.syntax", position, u"数字不能当作日期"_s);
    if (node->op != Op::Text)
        return FunctionNode(Fn::DateOfText, Type::Date, {node});
    const auto date = ParseDate(node->text);
    if (!date)
        BadValue(node->text, u"日期"_s, position);
    return TextNode(*date, Type::Date);
}

NodePtr DateOf(const std::vector<NodePtr> &arguments, qsizetype position)
{
    const NodePtr text = Convert(arguments[0], Type::Text, position);
    if (arguments.size() == 1)
        return Convert(text, Type::Date, position);
    const NodePtr &format = arguments[1];
    if (text->op == Op::Null)
        return NullNode(Type::Date);
    if (text->op != Op::Text || format->op != Op::Text) {
        return FunctionNode(Fn::DateOfFormat, Type::Date,
                            {text, Convert(format, Type::Text, position)});
    }
    const auto date = ParseDate(text->text, format->text);
    if (!date) {
        BadValue(text->text,
                 u"格式为“%1”的日期"_s.arg(QString::fromStdString(format->text).left(60)),
                 position);
    }
    return TextNode(*date, Type::Date);
}

NodePtr CharOf(const std::vector<NodePtr> &arguments, qsizetype position)
{
    if (arguments.size() == 1)
        return Convert(arguments[0], Type::Text, position);
    if (arguments[0]->type != Type::Date)
        throw ESqlError("sql.function", position, u"TO_CHAR 的格式只能用于日期"_s);
    return FunctionNode(Fn::FormatDate, Type::Text,
                        {arguments[0], Convert(arguments[1], Type::Text, position)}, 100);
}

NodePtr Truncated(std::vector<NodePtr> arguments, qsizetype position)
{
    if (arguments[0]->type == Type::Date) {
        if (arguments.size() > 1)
            throw ESqlError("sql.function", position, u"TRUNC 对日期只接受一个参数"_s);
        return FunctionNode(Fn::TruncDate, Type::Date, std::move(arguments));
    }
    for (NodePtr &argument : arguments)
        argument = Convert(argument, Type::Real, position);
    return FunctionNode(Fn::TruncNumber, Type::Real, std::move(arguments));
}

/// A DECODE writes its first argument once for each search; nested ones double at each level.
constexpr size_t maxDecodedNodes = 20'000;

void CheckDecodedSize(const Node &subject, size_t searches, qsizetype position)
{
    size_t room = maxDecodedNodes / searches;
    if (!ForEachNode(subject, [&](const Node &) { return room-- > 0; }))
        throw ESqlError("sql.limit", position, u"DECODE 展开后过长"_s);
}

/// DECODE(x, search, result, ..., default): NULL matches NULL; without default the rest is NULL.
/// Searches compare as the type of the first one.
NodePtr Decoded(const std::vector<NodePtr> &arguments, qsizetype position)
{
    CheckDecodedSize(*arguments[0], (arguments.size() - 1) / 2, position);
    const Type searchType = arguments[1]->type == Type::Null ? Type::Text : arguments[1]->type;
    const NodePtr subject = Convert(arguments[0], searchType, position);
    auto result = std::make_shared<Node>();
    result->op = Op::Case;
    for (size_t i = 1; i + 1 < arguments.size(); i += 2) {
        const NodePtr search = Convert(arguments[i], searchType, position);
        auto test = std::make_shared<Node>();
        if (search->op == Op::Null) {
            test->op = Op::IsNull;
            test->arguments = {subject};
        } else {
            test->op = search->op == Op::Text || search->op == Op::Number ? Op::Compare : Op::Same;
            test->text = "=";
            test->arguments = {subject, search};
        }
        result->arguments.push_back(std::move(test));
        result->arguments.push_back(arguments[i + 1]);
    }
    if (arguments.size() % 2 == 0)
        result->arguments.push_back(arguments.back());
    std::vector<NodePtr *> results;
    for (size_t i = 0; i < result->arguments.size(); ++i) {
        if (i % 2 == 1 || i + 1 == result->arguments.size())
            results.push_back(&result->arguments[i]);
    }
    MakeAlike(results, position);
    for (const NodePtr *one : results) {
        if (result->type == Type::Null)
            result->type = (*one)->type;
        result->size = std::max(result->size, (*one)->size);
    }
    return result;
}

} // namespace

NodePtr NullNode(Type type, int size)
{
    auto node = std::make_shared<Node>();
    node->type = type;
    node->size = size;
    return node;
}

NodePtr TextNode(std::string text, Type type)
{
    if (text.empty())
        return NullNode(type);
    auto node = std::make_shared<Node>();
    node->op = Op::Text;
    node->type = type;
    node->size = type == Type::Text ? CharacterCount(text) : 0;
    node->text = std::move(text);
    return node;
}

NodePtr NumberNode(std::string text)
{
    if (text.starts_with('.'))
        text.insert(text.begin(), '0');
    auto node = std::make_shared<Node>();
    node->op = Op::Number;
    const bool whole = text.size() < 19 && text.find_first_of(".eE") == std::string::npos;
    node->type = whole ? Type::Integer : Type::Real;
    node->text = std::move(text);
    return node;
}

NodePtr FunctionNode(Fn fn, Type type, std::vector<NodePtr> arguments, int size)
{
    auto node = std::make_shared<Node>();
    node->op = Op::Function;
    node->fn = fn;
    node->type = type;
    node->size = size;
    node->arguments = std::move(arguments);
    return node;
}

NodePtr Convert(const NodePtr &node, Type type, qsizetype position)
{
    // What has no type is NULL, be it a column of a sub-select.
    if (node->op == Op::Null || (node->type == Type::Null && type != Type::Null))
        return node->type == type ? node : NullNode(type, node->size);
    if (type == Type::Null || node->type == type || (IsNumber(node->type) && IsNumber(type)))
        return node;
    switch (type) {
    case Type::Text:
        return ToText(node);
    case Type::Date:
        return ToDate(node, position);
    default:
        return ToNumber(node, position);
    }
}

void MakeComparable(std::vector<NodePtr> &nodes, qsizetype position)
{
    Type common = Type::Null;
    for (const NodePtr &node : nodes) {
        if (node->type == Type::Date)
            common = Type::Date;
        else if (IsNumber(node->type) && common != Type::Date)
            common = Type::Real;
        else if (node->type == Type::Text && common == Type::Null)
            common = Type::Text;
    }
    for (NodePtr &node : nodes)
        node = Convert(node, common, position);
}

void MakeAlike(std::vector<NodePtr *> results, qsizetype position)
{
    const auto first = std::find_if(results.begin(), results.end(), [](const NodePtr *result) {
        return (*result)->type != Type::Null;
    });
    if (first == results.end())
        return;
    Type type = (**first)->type;
    // Whole and other numbers together are just numbers.
    if (type == Type::Integer &&
        std::any_of(results.begin(), results.end(),
                    [](const NodePtr *result) { return (*result)->type == Type::Real; }))
        type = Type::Real;
    for (NodePtr *result : results)
        *result = Convert(*result, type, position);
}

NodePtr Cast(const NodePtr &node, const std::string &typeName, int size, qsizetype position)
{
    const bool fixed = typeName == "CHAR" || typeName == "NCHAR";
    if (fixed || typeName == "VARCHAR2" || typeName == "NVARCHAR2" || typeName == "VARCHAR") {
        const int length = size > 0 ? size : 1;
        if (size == 0 && !fixed)
            throw ESqlError("sql.syntax", position, u"CAST 的文本类型没有长度"_s);
        const NodePtr text = Convert(node, Type::Text, position);
        if (text->op == Op::Null)
            return NullNode(Type::Text, length);
        if (!fixed && text->size > 0 && text->size <= length)
            return Retyped(text, Type::Text, length);
        return FunctionNode(fixed ? Fn::Pad : Fn::Truncate, Type::Text,
                            {text, NumberNode(std::to_string(length))}, length);
    }
    if (typeName == "DATE" && size == 0)
        return Convert(node, Type::Date, position);
    if (typeName == "NUMBER" && size == 0)
        return Convert(node, Type::Real, position);
    throw ESqlError("sql.syntax", position,
                    u"CAST 不支持类型“%1”"_s.arg(QString::fromStdString(typeName)));
}

NodePtr Arithmetic(const std::string &symbol, const NodePtr &left, const NodePtr &right,
                   qsizetype position)
{
    if (symbol == "||") {
        const NodePtr a = Convert(left, Type::Text, position);
        const NodePtr b = Convert(right, Type::Text, position);
        const int size = a->size > 0 && b->size > 0 ? a->size + b->size : 0;
        // a || b || c is one concatenation of three: databases limit how deep calls are nested.
        std::vector<NodePtr> parts;
        for (const NodePtr &part : {a, b}) {
            if (part->op == Op::Function && part->fn == Fn::Concat)
                parts.insert(parts.end(), part->arguments.begin(), part->arguments.end());
            else
                parts.push_back(part);
        }
        return FunctionNode(Fn::Concat, Type::Text, std::move(parts), size);
    }
    const bool leftDate = left->type == Type::Date;
    const bool rightDate = right->type == Type::Date;
    if (leftDate || rightDate) {
        if (symbol == "-" && leftDate && rightDate)
            return FunctionNode(Fn::DaysBetween, Type::Real, {left, right});
        if (symbol == "-" && leftDate)
            return FunctionNode(Fn::SubtractDays, Type::Date,
                                {left, Convert(right, Type::Real, position)});
        if (symbol == "+" && !(leftDate && rightDate)) {
            const NodePtr &date = leftDate ? left : right;
            const NodePtr &days = leftDate ? right : left;
            return FunctionNode(Fn::AddDays, Type::Date,
                                {date, Convert(days, Type::Real, position)});
        }
        throw ESqlError("sql.syntax", position, u"日期不能这样计算"_s);
    }
    const bool whole = left->type == Type::Integer && right->type == Type::Integer;
    const Fn fn = symbol == "+"   ? Fn::Add
                  : symbol == "-" ? Fn::Subtract
                  : symbol == "*" ? Fn::Multiply
                                  : Fn::Divide;
    return FunctionNode(
        fn, whole && fn != Fn::Divide ? Type::Integer : Type::Real,
        {Convert(left, Type::Real, position), Convert(right, Type::Real, position)});
}

NodePtr Call(const ClientFunction &function, std::vector<NodePtr> arguments, bool distinct,
             qsizetype position)
{
    const auto asText = [&](size_t i) { return Convert(arguments[i], Type::Text, position); };
    switch (function.fn) {
    case Fn::Upper:
    case Fn::Lower:
    case Fn::Trim:
        return FunctionNode(function.fn, Type::Text, {asText(0)}, arguments[0]->size);
    case Fn::Length:
        return FunctionNode(Fn::Length, Type::Integer, {asText(0)});
    case Fn::Substr: {
        const int size = arguments[0]->size;
        arguments[0] = asText(0);
        for (size_t i = 1; i < arguments.size(); ++i)
            arguments[i] = Convert(arguments[i], Type::Real, position);
        return FunctionNode(Fn::Substr, Type::Text, std::move(arguments), size);
    }
    case Fn::Nvl: {
        MakeAlike({&arguments[0], &arguments[1]}, position);
        const Type type = arguments[0]->type;
        const int size = std::max(arguments[0]->size, arguments[1]->size);
        return FunctionNode(Fn::Coalesce, type, std::move(arguments), size);
    }
    case Fn::Nvl2: {
        MakeAlike({&arguments[1], &arguments[2]}, position);
        const Type type = arguments[1]->type;
        const int size = std::max(arguments[1]->size, arguments[2]->size);
        return FunctionNode(Fn::Choose, type, std::move(arguments), size);
    }
    case Fn::Decode:
        return Decoded(arguments, position);
    case Fn::ToChar:
        return CharOf(arguments, position);
    case Fn::ToDate:
        return DateOf(arguments, position);
    case Fn::ToNumber:
        return Convert(arguments[0], Type::Real, position);
    case Fn::Trunc:
        return Truncated(std::move(arguments), position);
    default:
        break;
    }
    // the aggregates
    Type type = Type::Integer;
    int size = 0;
    if (function.fn == Fn::Sum || function.fn == Fn::Avg) {
        arguments[0] = Convert(arguments[0], Type::Real, position);
        type = function.fn == Fn::Sum ? arguments[0]->type : Type::Real;
    } else if (function.fn != Fn::Count) {
        type = arguments[0]->type;
        size = arguments[0]->size;
    }
    const NodePtr call = FunctionNode(function.fn, type, std::move(arguments), size);
    if (!distinct)
        return call;
    auto copy = std::make_shared<Node>(*call);
    copy->distinct = true;
    return copy;
}

} // namespace Qel::Sql
