#include "dataset/RowFilterParser.h"

#include "dataset/FieldValue.h"
#include "dataset/QelError.h"

#include <array>
#include <utility>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

// Deeper nesting is nobody's filter, and each level is a few stack frames.
constexpr int kDeepest = 100;

bool IsWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'$' || c == u'#' || c.isSurrogate();
}

} // namespace

RowFilter RowFilterParser::Parse()
{
    SkipBlanks();
    if (at_ == text_.size())
        return {};
    ParseOr(0);
    if (at_ != text_.size())
        Fail(u"此处应为 and、or 或结尾"_s);
    return std::move(filter_);
}

int RowFilterParser::ParseOr(int depth)
{
    int left = ParseAnd(depth);
    while (TakeWord(u"or")) {
        const int right = ParseAnd(depth);
        left = Add({.kind = RowFilter::Kind::Or, .left = left, .right = right});
    }
    return left;
}

int RowFilterParser::ParseAnd(int depth)
{
    int left = ParseNot(depth);
    while (TakeWord(u"and")) {
        const int right = ParseNot(depth);
        left = Add({.kind = RowFilter::Kind::And, .left = left, .right = right});
    }
    return left;
}

int RowFilterParser::ParseNot(int depth)
{
    if (depth > kDeepest)
        Fail(u"嵌套过深"_s);
    if (TakeWord(u"not"))
        return Add({.kind = RowFilter::Kind::Not, .left = ParseNot(depth + 1)});
    if (TakeSign(u"(")) {
        const int inner = ParseOr(depth + 1);
        if (!TakeSign(u")"))
            Fail(u"缺少右括号"_s);
        return inner;
    }
    return ParseComparison();
}

int RowFilterParser::ParseComparison()
{
    const QStringView name = PeekWord();
    if (name.isEmpty())
        Fail(u"此处应为字段名"_s);
    Node node{.fieldName = name.toString()};
    at_ += name.size();
    SkipBlanks();
    node.op = ParseOperator();
    const qsizetype literalAt = at_;
    ParseLiteral(node);
    const bool equality =
        node.op == RowFilter::Operator::Equal || node.op == RowFilter::Operator::NotEqual;
    if (node.literal == RowFilter::Literal::Null && !equality) {
        at_ = literalAt;
        Fail(u"NULL 只能用 = 或 <> 比较"_s);
    }
    if (node.op == RowFilter::Operator::Contains && node.literal != RowFilter::Literal::Text) {
        at_ = literalAt;
        Fail(u"contains 之后应为引号内的文本"_s);
    }
    return Add(std::move(node));
}

RowFilter::Operator RowFilterParser::ParseOperator()
{
    using enum RowFilter::Operator;
    // Longer signs first: "<" would match the start of "<>".
    static constexpr std::array kSigns{
        std::pair(QStringView(u"<>"), NotEqual),
        std::pair(QStringView(u"<="), LessOrEqual),
        std::pair(QStringView(u">="), GreaterOrEqual),
        std::pair(QStringView(u"="), Equal),
        std::pair(QStringView(u"<"), Less),
        std::pair(QStringView(u">"), Greater),
    };
    for (const auto &[sign, op] : kSigns) {
        if (TakeSign(sign))
            return op;
    }
    if (TakeWord(u"contains"))
        return Contains;
    Fail(u"此处应为比较符号"_s);
}

void RowFilterParser::ParseLiteral(Node &node)
{
    if (at_ < text_.size() && text_[at_] == u'\'') {
        QString value;
        for (qsizetype i = at_ + 1; i < text_.size(); ++i) {
            if (text_[i] != u'\'') {
                value += text_[i];
            } else if (i + 1 < text_.size() && text_[i + 1] == u'\'') {
                value += u'\'';
                ++i;
            } else {
                at_ = i + 1;
                SkipBlanks();
                node.value = value.toUtf8();
                node.decimal = CanonicalDecimal(node.value).value_or(QByteArray());
                return;
            }
        }
        Fail(u"引号没有结束"_s);
    }
    if (TakeWord(u"null")) {
        node.literal = RowFilter::Literal::Null;
        return;
    }
    qsizetype end = at_;
    while (end < text_.size() &&
           (IsWordCharacter(text_[end]) || QStringView(u"+-.").contains(text_[end])))
        ++end;
    node.value = QStringView(text_).sliced(at_, end - at_).toUtf8();
    const std::optional<QByteArray> number = CanonicalDecimal(node.value);
    if (!number)
        Fail(u"此处应为引号内的文本、数值或 NULL"_s);
    node.literal = RowFilter::Literal::Number;
    node.decimal = *number;
    at_ = end;
    SkipBlanks();
}

int RowFilterParser::Add(Node node)
{
    filter_.nodes_.push_back(std::move(node));
    return int(filter_.nodes_.size()) - 1;
}

void RowFilterParser::SkipBlanks()
{
    while (at_ < text_.size() && text_[at_].isSpace())
        ++at_;
}

QStringView RowFilterParser::PeekWord() const
{
    qsizetype end = at_;
    while (end < text_.size() && IsWordCharacter(text_[end]))
        ++end;
    return QStringView(text_).sliced(at_, end - at_);
}

bool RowFilterParser::TakeWord(QStringView word)
{
    if (PeekWord().compare(word, Qt::CaseInsensitive) != 0)
        return false;
    at_ += word.size();
    SkipBlanks();
    return true;
}

bool RowFilterParser::TakeSign(QStringView sign)
{
    if (!QStringView(text_).sliced(at_).startsWith(sign))
        return false;
    at_ += sign.size();
    SkipBlanks();
    return true;
}

void RowFilterParser::Fail(const QString &what) const
{
    throw EDataSetError(u"筛选条件“%1”有误：%2（第 %3 个字符）"_s.arg(text_, what).arg(at_ + 1));
}

} // namespace Qel
