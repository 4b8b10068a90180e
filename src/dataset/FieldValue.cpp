#include "dataset/FieldValue.h"

#include "dataset/QelError.h"

#include <QDateTime>

#include <algorithm>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

// Digits on either side of the point. More than any column of the database holds, and a bound for
// what an exponent may unfold to.
constexpr qsizetype kMostDigits = 64;

[[noreturn]] void Refuse(const FieldDef &field, const QString &text, const QString &wanted)
{
    throw EDataSetError(u"字段“%1”的值“%2”不是%3"_s.arg(field.name, text.left(50), wanted));
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

qsizetype CharacterCount(const QString &text)
{
    return std::count_if(text.begin(), text.end(), [](QChar c) { return !c.isLowSurrogate(); });
}

qsizetype SkipDigits(QByteArrayView text, qsizetype at)
{
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    return at;
}

FieldValue CanonicalText(const FieldDef &field, const QString &text)
{
    if (field.size > 0 && text.size() > field.size && CharacterCount(text) > field.size) {
        throw EDataSetError(u"字段“%1”最多 %2 个字符，实有 %3 个"_s.arg(field.name)
                                .arg(field.size)
                                .arg(CharacterCount(text)));
    }
    return {text.toUtf8(), false};
}

QByteArray CanonicalInteger(const FieldDef &field, const QString &text)
{
    const std::optional<QByteArray> number = CanonicalDecimal(text.toUtf8());
    bool fits = false;
    if (number)
        number->toLongLong(&fits);
    if (!fits)
        Refuse(field, text, u"整数"_s);
    return *number;
}

QByteArray CanonicalDateTime(const FieldDef &field, const QString &text)
{
    static const QString kCanonical = u"yyyy-MM-dd HH:mm:ss"_s;
    for (const QString &form : {kCanonical, u"yyyy-MM-dd HH:mm"_s, u"yyyy-MM-dd"_s}) {
        const QDateTime value = QDateTime::fromString(text, form);
        if (value.isValid())
            return value.toString(kCanonical).toLatin1();
    }
    Refuse(field, text, u"日期时间（例如 2024-03-05 13:07:00）"_s);
}

} // namespace

FieldValue CanonicalValue(const FieldDef &field, const QString &text)
{
    if (field.type == FieldType::Text || field.type == FieldType::WideText)
        return CanonicalText(field, text);
    if (field.type == FieldType::AutoIncrement)
        throw EDataSetError(u"字段“%1”自动编号，不能修改"_s.arg(field.name));
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {QByteArray(), true};
    if (field.type == FieldType::Integer)
        return {CanonicalInteger(field, trimmed), false};
    if (field.type == FieldType::DateTime)
        return {CanonicalDateTime(field, trimmed), false};
    const std::optional<QByteArray> number = CanonicalDecimal(trimmed.toUtf8());
    if (!number)
        Refuse(field, trimmed, u"数值"_s);
    return {*number, false};
}

std::optional<QByteArray> CanonicalDecimal(QByteArrayView text)
{
    qsizetype at = 0;
    const bool negative = text.startsWith('-');
    if (negative || text.startsWith('+'))
        ++at;
    const qsizetype wholeEnd = SkipDigits(text, at);
    QByteArray digits = text.sliced(at, wholeEnd - at).toByteArray();
    qsizetype point = digits.size(); // digits in front of the point
    at = wholeEnd;
    if (at < text.size() && text[at] == '.') {
        const qsizetype fractionEnd = SkipDigits(text, at + 1);
        digits += text.sliced(at + 1, fractionEnd - at - 1);
        at = fractionEnd;
    }
    if (digits.isEmpty())
        return std::nullopt;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        const QByteArray exponent = text.sliced(at + 1).toByteArray();
        const bool isSigned = exponent.startsWith('-') || exponent.startsWith('+');
        bool ok = false;
        point += exponent.toShort(&ok);
        if (!ok || SkipDigits(exponent, isSigned) != exponent.size())
            return std::nullopt;
        at = text.size();
    }
    if (at != text.size())
        return std::nullopt;

    qsizetype leading = 0;
    while (leading < digits.size() && digits[leading] == '0')
        ++leading;
    digits.remove(0, leading);
    point -= leading;
    while (digits.endsWith('0'))
        digits.chop(1);
    if (digits.isEmpty())
        return QByteArray("0");
    if (point > kMostDigits || digits.size() - point > kMostDigits)
        return std::nullopt;

    QByteArray result = negative ? "-" : "";
    if (point <= 0)
        result += "0." + QByteArray(-point, '0') + digits;
    else if (point >= digits.size())
        result += digits + QByteArray(point - digits.size(), '0');
    else
        result += digits.first(point) + '.' + digits.sliced(point);
    return result;
}

std::strong_ordering CompareDecimals(QByteArrayView left, QByteArrayView right)
{
    const bool negative = left.startsWith('-');
    if (negative != right.startsWith('-'))
        return negative ? std::strong_ordering::less : std::strong_ordering::greater;
    if (negative)
        return CompareDecimals(right.sliced(1), left.sliced(1));
    const auto wholeDigits = [](QByteArrayView number) {
        const qsizetype point = number.indexOf('.');
        return point < 0 ? number.size() : point;
    };
    if (const auto order = wholeDigits(left) <=> wholeDigits(right); order != 0)
        return order;
    // Equal lengths in front of the point: the order of the digits is the order of the numbers.
    const int order =
        std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end())
            ? -1
            : int(left != right);
    return order <=> 0;
}

} // namespace Qel
