#include "sql/SqliteFunctions.h"

#include "dataset/QelError.h"
#include "sql/ExactSum.h"
#include "sql/Grams.h"
#include "sql/Values.h"

#include <QList>
#include <QString>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

using Context = sqlite3_context;
using Value = sqlite3_value;

std::string_view TextOf(Value *value)
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return text ? std::string_view(text, static_cast<size_t>(sqlite3_value_bytes(value)))
                : std::string_view();
}

bool AnyNull(int count, Value **values)
{
    return std::any_of(values, values + count,
                       [](Value *value) { return sqlite3_value_type(value) == SQLITE_NULL; });
}

void Give(Context *context, std::string_view text)
{
    if (text.empty()) // Oracle's empty text
        sqlite3_result_null(context);
    else
        sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void Give(Context *context, NumberValue number)
{
    if (const qint64 *whole = std::get_if<qint64>(&number))
        sqlite3_result_int64(context, *whole);
    else
        sqlite3_result_double(context, std::get<double>(number));
}

void Give(Context *context, double number)
{
    if (number == std::floor(number) && std::abs(number) < 9e15)
        sqlite3_result_int64(context, static_cast<qint64>(number));
    else
        sqlite3_result_double(context, number);
}

void Refuse(Context *context, const QByteArray &message)
{
    sqlite3_result_error(context, message.constData(), static_cast<int>(message.size()));
    sqlite3_result_error_code(context, SQLITE_MISMATCH); // tells it from the database's own errors
}

void Refuse(Context *context, std::string_view text, const QString &wanted)
{
    const QByteArray message =
        u"“%1”不是%2"_s
            .arg(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).left(60),
                 wanted)
            .toUtf8();
    Refuse(context, message);
}

/// Whether changing the case of the text can change anything but ASCII letters. Han characters,
/// kana and full-width punctuation (lead bytes E3 to E9) have no case; they and ASCII are nearly
/// all that the tables hold.
bool OnlyAsciiHasCase(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0xC0 || (byte >= 0xE3 && byte <= 0xE9);
    });
}

template <bool upper>
void ChangeCase(Context *context, int, Value **values)
{
    if (sqlite3_value_type(values[0]) == SQLITE_NULL)
        return;
    const std::string_view text = TextOf(values[0]);
    constexpr char first = upper ? 'a' : 'A';
    constexpr char last = upper ? 'z' : 'Z';
    const auto changes = [](char c) { return c >= first && c <= last; };
    if (!OnlyAsciiHasCase(text)) {
        Give(context, WithOtherCase(text, upper));
    } else if (std::any_of(text.begin(), text.end(), changes)) {
        std::string changed(text);
        for (char &c : changed)
            c = static_cast<char>(changes(c) ? c ^ 0x20 : c);
        Give(context, changed);
    } else {
        Give(context, text);
    }
}

/// Positions count characters from 1, from the end if negative; 0 is 1.
void Substr(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    const std::string_view utf8 = TextOf(values[0]);
    const auto isStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    const qint64 size = std::count_if(utf8.begin(), utf8.end(), isStart);
    const qint64 position = sqlite3_value_int64(values[1]);
    const qint64 from = position > 0 ? position - 1 : position < 0 ? size + position : 0;
    const qint64 wanted = count > 2 ? sqlite3_value_int64(values[2]) : size;
    if (from < 0 || from >= size || wanted < 1)
        return;
    const qint64 to = wanted > size - from ? size : from + wanted;
    qint64 character = -1;
    size_t begin = utf8.size();
    size_t end = utf8.size();
    for (size_t i = 0; i < utf8.size(); ++i) {
        if (!isStart(utf8[i]))
            continue;
        ++character;
        if (character == from)
            begin = i;
        if (character == to) {
            end = i;
            break;
        }
    }
    Give(context, utf8.substr(begin, end - begin));
}

void Number(Context *context, int, Value **values)
{
    switch (sqlite3_value_type(values[0])) {
    case SQLITE_NULL:
        return;
    case SQLITE_TEXT:
        if (const auto number = ParseNumber(TextOf(values[0])))
            Give(context, *number);
        else
            Refuse(context, TextOf(values[0]), u"数字"_s);
        return;
    default:
        sqlite3_result_value(context, values[0]);
    }
}

void NumberAsText(Context *context, int, Value **values)
{
    switch (sqlite3_value_type(values[0])) {
    case SQLITE_INTEGER:
        return Give(context, NumberText(qint64(sqlite3_value_int64(values[0]))));
    case SQLITE_FLOAT: {
        const double real = sqlite3_value_double(values[0]);
        const bool whole = real == std::floor(real) && std::abs(real) < 9e15;
        return Give(context, whole ? NumberText(static_cast<qint64>(real)) : NumberText(real));
    }
    default:
        sqlite3_result_value(context, values[0]);
    }
}

void Divide(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    const double divisor = sqlite3_value_double(values[1]);
    if (divisor == 0.0)
        Refuse(context, "除数为零");
    else
        Give(context, sqlite3_value_double(values[0]) / divisor);
}

/// TRUNC(number, places): cut towards zero.
void Truncate(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    const qint64 places =
        count > 1 ? std::clamp<qint64>(sqlite3_value_int64(values[1]), -15, 15) : 0;
    const double scale = std::pow(10.0, static_cast<double>(places));
    const double number = sqlite3_value_double(values[0]);
    // 2.3 * 100 is a hair below 230: what 15 digits do not show is not cut
    const double scaled = number * scale;
    const double rounded = std::round(scaled);
    const double cut =
        std::abs(scaled - rounded) < std::abs(scaled) * 1e-15 ? rounded : std::trunc(scaled);
    Give(context, cut / scale);
}

void Date(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    const std::string_view text = TextOf(values[0]);
    const auto date = count > 1 ? ParseDate(text, TextOf(values[1])) : ParseDate(text);
    if (date)
        Give(context, *date);
    else
        Refuse(context, text, u"日期"_s);
}

void DateAsText(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    if (const auto text = FormatDate(TextOf(values[0]), TextOf(values[1])))
        Give(context, *text);
    else
        Refuse(context, TextOf(values[1]), u"可用的日期格式"_s);
}

void AddDaysTo(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    if (const auto date = AddDays(TextOf(values[0]), sqlite3_value_double(values[1])))
        Give(context, *date);
    else
        Refuse(context, TextOf(values[0]), u"可以加减天数的日期"_s);
}

void DaysBetweenDates(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    if (const auto days = DaysBetween(TextOf(values[0]), TextOf(values[1])))
        Give(context, *days);
    else
        Refuse(context, TextOf(values[0]), u"日期"_s);
}

/// To exactly so many characters: cut, or filled with blanks.
void Pad(Context *context, int count, Value **values)
{
    if (AnyNull(count, values))
        return;
    const std::string_view utf8 = TextOf(values[0]);
    const auto isStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    const qint64 wanted = sqlite3_value_int64(values[1]);
    qint64 characters = 0;
    size_t end = 0;
    for (; end < utf8.size(); ++end) {
        if (isStart(utf8[end]) && characters++ == wanted)
            break;
    }
    std::string padded(utf8.substr(0, end));
    if (characters < wanted)
        padded.append(static_cast<size_t>(wanted - characters), ' ');
    Give(context, padded);
}

void AddUp(Context *context, int, Value **values)
{
    const int type = sqlite3_value_type(values[0]);
    if (type == SQLITE_NULL)
        return;
    auto *sum = static_cast<ExactSum *>(sqlite3_aggregate_context(context, sizeof(ExactSum)));
    if (!sum)
        sqlite3_result_error_nomem(context);
    else if (type == SQLITE_INTEGER)
        sum->Add(qint64(sqlite3_value_int64(values[0])));
    else
        sum->Add(sqlite3_value_double(values[0]));
}

/// Of no rows: NULL.
template <NumberValue (ExactSum::*result)() const>
void GiveResult(Context *context)
{
    if (const auto *sum = static_cast<ExactSum *>(sqlite3_aggregate_context(context, 0)))
        Give(context, (sum->*result)());
}

/// Of several texts, as the triggers of a gram table need them.
void Grams(Context *context, int count, Value **values)
{
    std::string grams;
    for (Value **value = values; value != values + count; ++value)
        grams += GramsOf(WithOtherCase(TextOf(*value), true));
    Give(context, grams);
}

/// Of a row and its grams.
void GramSum(Context *context, int, Value **values)
{
    sqlite3_result_int64(context, SumOfGrams(sqlite3_value_int64(values[0]), TextOf(values[1])));
}

struct Registration
{
    const char *name;
    int arguments; ///< -1: any number
    void (*function)(Context *, int, Value **);
};

constexpr std::array<Registration, 14> registrations = {{
    {"QEL_UPPER", 1, ChangeCase<true>},
    {"QEL_LOWER", 1, ChangeCase<false>},
    {"QEL_SUBSTR", -1, Substr},
    {"QEL_NUMBER", 1, Number},
    {"QEL_NUMBER_TEXT", 1, NumberAsText},
    {"QEL_DIVIDE", 2, Divide},
    {"QEL_TRUNC", -1, Truncate},
    {"QEL_DATE", -1, Date},
    {"QEL_FORMAT_DATE", 2, DateAsText},
    {"QEL_ADD_DAYS", 2, AddDaysTo},
    {"QEL_DAYS_BETWEEN", 2, DaysBetweenDates},
    {"QEL_PAD", 2, Pad},
    {"QEL_GRAMS", -1, Grams},
    {"QEL_GRAM_SUM", 2, GramSum},
}};

struct AggregateRegistration
{
    const char *name;
    void (*result)(Context *);
};

constexpr std::array<AggregateRegistration, 2> aggregates = {{
    {"QEL_SUM", GiveResult<&ExactSum::Sum>},
    {"QEL_AVG", GiveResult<&ExactSum::Average>},
}};

} // namespace

void PrepareSqliteConnection(sqlite3 *database)
{
    // SQLite leaves out an outer join that nobody needs and then (3.40) reads the tables behind it
    // in the direction of the ones before: ORDER BY ... DESC comes ascending. Totals leave such
    // joins out by themselves (RelationsThatCount); nothing else has many of them.
    constexpr int omitNoopJoin = 0x100;
    sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, database, omitNoopJoin);
    int result = SQLITE_OK;
    for (const Registration &one : registrations) {
        if (result == SQLITE_OK) {
            result =
                sqlite3_create_function_v2(database, one.name, one.arguments,
                                           SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                                           nullptr, one.function, nullptr, nullptr, nullptr);
        }
    }
    for (const AggregateRegistration &one : aggregates) {
        if (result == SQLITE_OK) {
            result = sqlite3_create_function_v2(
                database, one.name, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                nullptr, nullptr, AddUp, one.result, nullptr);
        }
    }
    if (result == SQLITE_OK) {
        result =
            sqlite3_exec(database, "PRAGMA case_sensitive_like = ON", nullptr, nullptr, nullptr);
    }
    if (result != SQLITE_OK) {
        throw EQelError(
            u"数据库连接准备失败：%1"_s.arg(QString::fromUtf8(sqlite3_errmsg(database))));
    }
}

} // namespace Qel::Sql
