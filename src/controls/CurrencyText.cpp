#include "controls/CurrencyText.h"

#include <QRegularExpression>

#include <cmath>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int Decimals = 2;

bool IsDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Digits, a point and two digits: what most cells hold, or come to hold, already.
bool IsShownForm(const QString &text)
{
    const qsizetype point = text.size() - Decimals - 1;
    if (point < 1 || text[point] != u'.' || (text[0] == u'0' && point > 1))
        return false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (at != point && !IsDigit(text[at]))
            return false;
    }
    return true;
}

/// The half as it is written: the binary fraction of 1.005 lies below it.
double RoundedToCents(double amount)
{
    const double cents = std::abs(amount) * 100;
    return std::copysign(std::floor(cents + 0.5 + 1e-6) / 100, amount);
}

QChar Plain(QChar character)
{
    constexpr char16_t fullWidthOffset = u'０' - u'0';
    if (character >= u'０' && character <= u'９')
        return QChar(char16_t(character.unicode() - fullWidthOffset));
    if (character == u'．' || character == u'。')
        return u'.';
    return character == u'，' ? QChar(u',') : character;
}

QString WithoutGroups(const QString &text)
{
    static const QRegularExpression groups(uR"(\A[0-9]{1,3}(,[0-9]{3})+(\.[0-9]*)?\z)"_s);
    return groups.match(text).hasMatch() ? QString(text).remove(u',') : text;
}

} // namespace

QString CurrencyText(const QString &stored)
{
    if (stored.isEmpty() || IsShownForm(stored))
        return stored;
    bool isNumber = false;
    const double amount = stored.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(amount))
        return stored;
    return QString::number(RoundedToCents(amount), 'f', Decimals);
}

bool IsSameCurrency(const QString &one, const QString &other)
{
    if (one == other)
        return true;
    bool isNumber = false;
    bool isOtherNumber = false;
    const double amount = one.toDouble(&isNumber);
    const double otherAmount = other.toDouble(&isOtherNumber);
    return isNumber && isOtherNumber && amount == otherAmount;
}

std::optional<QString> CurrencyInput(const QString &typed, int longest)
{
    QString text = typed.trimmed();
    for (QChar &character : text)
        character = Plain(character);
    text = WithoutGroups(text);
    if (text == u'.')
        text = u"0."_s;
    static const QRegularExpression amount(uR"(\A[0-9]*(\.[0-9]{0,2})?\z)"_s);
    if (text.size() > longest || !amount.match(text).hasMatch() ||
        text.toDouble() > HighestCurrency)
        return std::nullopt;
    return text;
}

} // namespace Qel
