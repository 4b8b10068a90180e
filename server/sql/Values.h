#pragma once

#include <QtGlobal>

#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// Oracle's conversions between texts, numbers and dates. A date is text
/// 'YYYY-MM-DD HH24:MI:SS'. Used for literals while compiling and by the SQLite functions for
/// everything else, so both follow one rule. nullopt: the value does not fit.
namespace Qel::Sql {

using NumberValue = std::variant<qint64, double>;

/// Blanks around it are allowed; a whole number comes as integer where it has room.
std::optional<NumberValue> ParseNumber(std::string_view text);

/// At most 15 significant digits, no exponent for usual sizes, no zero before the point: ".5".
std::string NumberText(NumberValue value);

/// TO_DATE. Elements: YYYY MM DD HH24 HH12 HH MI SS and punctuation; letters in any case.
/// Text that ends early leaves the rest at its least value; leading zeros may be missing.
std::optional<std::string> ParseDate(std::string_view text, std::string_view format);

/// A text that is used as a date: 'YYYY-MM-DD HH24:MI:SS' or its beginning.
std::optional<std::string> ParseDate(std::string_view text);

/// TO_CHAR. Elements as above, YY, and "quoted text".
std::optional<std::string> FormatDate(std::string_view date, std::string_view format);

/// `days` may have a fraction.
std::optional<std::string> AddDays(std::string_view date, double days);
std::optional<double> DaysBetween(std::string_view later, std::string_view earlier);

/// UPPER and LOWER: character by character, so that no text grows beyond the size of its field: ß
/// has no capital of one character and stays as it is.
std::string WithOtherCase(std::string_view utf8, bool upper);

} // namespace Qel::Sql
