#include "sql/Values.h"

#include "sql/Lexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace Qel::Sql {

namespace {

struct DateParts
{
    int year = 0;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

enum class Element { Year, ShortYear, Month, Day, Hour24, Hour12, Minute, Second };

struct ElementName
{
    std::string_view name;
    Element element;
    size_t digits;
};

// A name that begins with another one stands before it.
constexpr std::array<ElementName, 9> elementNames = {{{"YYYY", Element::Year, 4},
                                                      {"YY", Element::ShortYear, 2},
                                                      {"MM", Element::Month, 2},
                                                      {"DD", Element::Day, 2},
                                                      {"HH24", Element::Hour24, 2},
                                                      {"HH12", Element::Hour12, 2},
                                                      {"HH", Element::Hour12, 2},
                                                      {"MI", Element::Minute, 2},
                                                      {"SS", Element::Second, 2}}};

const ElementName *ElementAt(std::string_view upperFormat)
{
    const auto found =
        std::find_if(elementNames.begin(), elementNames.end(),
                     [&](const ElementName &e) { return upperFormat.starts_with(e.name); });
    return found == elementNames.end() ? nullptr : &*found;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsPunctuation(char c)
{
    return c == '-' || c == '/' || c == ':' || c == '.' || c == ',' || c == ';' || c == ' ';
}

std::string_view Trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

bool SetPart(DateParts &parts, Element element, int value)
{
    const auto set = [value](int &part, int low, int high) {
        part = value;
        return value >= low && value <= high;
    };
    switch (element) {
    case Element::Year:
        return set(parts.year, 1, 9999);
    case Element::ShortYear:
        return false; // which century is anybody's guess
    case Element::Month:
        return set(parts.month, 1, 12);
    case Element::Day:
        return set(parts.day, 1, 31);
    case Element::Hour24:
        return set(parts.hour, 0, 23);
    case Element::Hour12:
        return set(parts.hour, 1, 12);
    case Element::Minute:
        return set(parts.minute, 0, 59);
    case Element::Second:
        return set(parts.second, 0, 59);
    }
    return false;
}

int PartOf(const DateParts &parts, Element element)
{
    switch (element) {
    case Element::Year:
        return parts.year;
    case Element::ShortYear:
        return parts.year % 100;
    case Element::Month:
        return parts.month;
    case Element::Day:
        return parts.day;
    case Element::Hour24:
        return parts.hour;
    case Element::Hour12:
        return parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    case Element::Minute:
        return parts.minute;
    case Element::Second:
        return parts.second;
    }
    return 0;
}

std::chrono::year_month_day Calendar(const DateParts &parts)
{
    return std::chrono::year(parts.year) / std::chrono::month(static_cast<unsigned>(parts.month)) /
           std::chrono::day(static_cast<unsigned>(parts.day));
}

std::string Canonical(const DateParts &parts)
{
    std::array<char, 80> buffer;
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%04d-%02d-%02d %02d:%02d:%02d", parts.year,
                      parts.month, parts.day, parts.hour, parts.minute, parts.second);
    return {buffer.data(), static_cast<size_t>(length)};
}

std::optional<DateParts> ReadParts(std::string_view text, std::string_view format)
{
    const std::string upper = UpperAscii(format);
    std::string_view pattern = upper;
    text = Trimmed(text);
    DateParts parts;
    bool yearSeen = false;
    while (!pattern.empty() && !text.empty()) {
        if (const ElementName *element = ElementAt(pattern)) {
            pattern.remove_prefix(element->name.size());
            size_t digits = 0;
            int value = 0;
            while (digits < element->digits && digits < text.size() && IsDigit(text[digits]))
                value = value * 10 + (text[digits++] - '0');
            if (digits == 0 || !SetPart(parts, element->element, value))
                return std::nullopt;
            yearSeen = yearSeen || element->element == Element::Year;
            text.remove_prefix(digits);
        } else if (IsPunctuation(pattern.front())) {
            pattern.remove_prefix(1);
            if (IsPunctuation(text.front()))
                text.remove_prefix(1);
        } else {
            return std::nullopt;
        }
    }
    if (!yearSeen || !text.empty() || !Calendar(parts).ok())
        return std::nullopt;
    return parts;
}

constexpr std::string_view fullFormat = "YYYY-MM-DD HH24:MI:SS";

using Seconds = std::chrono::sys_seconds;

Seconds TimeOf(const DateParts &parts)
{
    return std::chrono::sys_days(Calendar(parts)) + std::chrono::hours(parts.hour) +
           std::chrono::minutes(parts.minute) + std::chrono::seconds(parts.second);
}

constexpr double secondsPerDay = 86400.0;

} // namespace

std::optional<NumberValue> ParseNumber(std::string_view text)
{
    text = Trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    // from_chars also reads "inf" and "nan", and a second sign must not pass
    const size_t first = text.starts_with('-') ? 1 : 0;
    if (text.size() == first || (!IsDigit(text[first]) && text[first] != '.'))
        return std::nullopt;
    const char *const end = text.data() + text.size();
    qint64 whole = 0;
    if (const auto read = std::from_chars(text.data(), end, whole);
        read.ec == std::errc() && read.ptr == end)
        return whole;
    double real = 0;
    const auto read = std::from_chars(text.data(), end, real);
    if (read.ec != std::errc() || read.ptr != end)
        return std::nullopt;
    if (real == std::floor(real) && std::abs(real) < 9e15)
        return static_cast<qint64>(real);
    return real;
}

std::string NumberText(NumberValue value)
{
    if (const qint64 *whole = std::get_if<qint64>(&value))
        return std::to_string(*whole);
    std::array<char, 40> buffer;
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%.15g", std::get<double>(value));
    std::string text(buffer.data(), static_cast<size_t>(length));
    if (const size_t exponent = text.find("e-"); exponent != std::string::npos) {
        // Digits of a small number move behind the point.
        std::string digits = text.substr(0, exponent);
        std::string sign;
        if (digits.front() == '-') {
            sign = "-";
            digits.erase(0, 1);
        }
        digits.erase(std::remove(digits.begin(), digits.end(), '.'), digits.end());
        const int shift = std::stoi(text.substr(exponent + 2));
        if (shift <= 40)
            return sign + "." + std::string(static_cast<size_t>(shift - 1), '0') + digits;
    }
    if (text.starts_with("0."))
        text.erase(0, 1);
    else if (text.starts_with("-0."))
        text.erase(1, 1);
    return text;
}

std::optional<std::string> ParseDate(std::string_view text, std::string_view format)
{
    const auto parts = ReadParts(text, format);
    return parts ? std::optional(Canonical(*parts)) : std::nullopt;
}

std::optional<std::string> ParseDate(std::string_view text)
{
    return ParseDate(text, fullFormat);
}

std::optional<std::string> FormatDate(std::string_view date, std::string_view format)
{
    const auto parts = ReadParts(date, fullFormat);
    if (!parts)
        return std::nullopt;
    const std::string upper = UpperAscii(format);
    std::string result;
    for (size_t at = 0; at < upper.size();) {
        if (const ElementName *element = ElementAt(std::string_view(upper).substr(at))) {
            const std::string number = std::to_string(PartOf(*parts, element->element));
            result.append(element->digits - std::min(element->digits, number.size()), '0');
            result += number;
            at += element->name.size();
        } else if (upper[at] == '"') {
            const size_t end = format.find('"', at + 1);
            if (end == std::string_view::npos)
                return std::nullopt;
            result += format.substr(at + 1, end - at - 1);
            at = end + 1;
        } else if (IsPunctuation(upper[at])) {
            result += upper[at++];
        } else {
            return std::nullopt;
        }
    }
    return result;
}

std::optional<std::string> AddDays(std::string_view date, double days)
{
    const auto parts = ReadParts(date, fullFormat);
    if (!parts || !(std::abs(days) < 4e6))
        return std::nullopt;
    const Seconds time = TimeOf(*parts) + std::chrono::seconds(std::llround(days * secondsPerDay));
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day calendar(day);
    const std::chrono::hh_mm_ss clock(time - day);
    const int year = static_cast<int>(calendar.year());
    if (year < 1 || year > 9999)
        return std::nullopt;
    return Canonical({year, static_cast<int>(static_cast<unsigned>(calendar.month())),
                      static_cast<int>(static_cast<unsigned>(calendar.day())),
                      static_cast<int>(clock.hours().count()),
                      static_cast<int>(clock.minutes().count()),
                      static_cast<int>(clock.seconds().count())});
}

std::optional<double> DaysBetween(std::string_view later, std::string_view earlier)
{
    const auto a = ReadParts(later, fullFormat);
    const auto b = ReadParts(earlier, fullFormat);
    if (!a || !b)
        return std::nullopt;
    return static_cast<double>((TimeOf(*a) - TimeOf(*b)).count()) / secondsPerDay;
}

namespace {

/// Unicode's mapping of one character to one. Qt leaves those alone that have one to several too:
/// Greek vowels with a small iota below, and the dotted capital I.
uint WithOtherCase(uint c, bool upper)
{
    constexpr uint iotaBelow[] = {0x1f80, 0x1f90, 0x1fa0}; // eight small ones, eight capitals
    constexpr uint iotaBelowAlone[] = {0x1fb3, 0x1fc3, 0x1ff3};
    constexpr uint dottedI = 0x130;
    if (upper && std::ranges::find(iotaBelow, c & ~7u) != std::end(iotaBelow))
        return c + 8;
    if (upper && std::ranges::find(iotaBelowAlone, c) != std::end(iotaBelowAlone))
        return c + 9;
    if (!upper && c == dottedI)
        return U'i';
    return upper ? QChar::toUpper(c) : QChar::toLower(c);
}

} // namespace

std::string WithOtherCase(std::string_view utf8, bool upper)
{
    QList<uint> characters =
        QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())).toUcs4();
    for (uint &c : characters)
        c = WithOtherCase(c, upper);
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(characters.constData()),
                             characters.size())
        .toStdString();
}

} // namespace Qel::Sql
