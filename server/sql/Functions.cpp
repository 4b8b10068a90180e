#include "sql/Functions.h"

#include "sql/Lexer.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>

namespace Qel::Sql {

namespace {

constexpr std::array<ClientFunction, 17> clientFunctions = {{
    {"UPPER", Fn::Upper, 1, 1, false},
    {"LOWER", Fn::Lower, 1, 1, false},
    {"TRIM", Fn::Trim, 1, 1, false},
    {"SUBSTR", Fn::Substr, 2, 3, false},
    {"LENGTH", Fn::Length, 1, 1, false},
    {"NVL", Fn::Nvl, 2, 2, false},
    {"NVL2", Fn::Nvl2, 3, 3, false},
    {"DECODE", Fn::Decode, 3, 255, false},
    {"TO_CHAR", Fn::ToChar, 1, 2, false},
    {"TO_DATE", Fn::ToDate, 1, 2, false},
    {"TO_NUMBER", Fn::ToNumber, 1, 1, false},
    {"TRUNC", Fn::Trunc, 1, 2, false},
    {"COUNT", Fn::Count, 1, 1, true},
    {"MAX", Fn::Max, 1, 1, true},
    {"MIN", Fn::Min, 1, 1, true},
    {"SUM", Fn::Sum, 1, 1, true},
    {"AVG", Fn::Avg, 1, 1, true},
}};

struct Template
{
    Fn fn;
    std::string_view sqlite;
    std::string_view postgreSql; ///< empty: the same
};

// The QEL_ functions are registered on SQLite connections; for PostgreSQL they are part of the
// database. An empty text that a function could give is turned into NULL.
constexpr std::array<Template, 30> templates = {{
    {Fn::Upper, "QEL_UPPER($1)", {}},
    {Fn::Lower, "QEL_LOWER($1)", {}},
    {Fn::Trim, "NULLIF(TRIM($1),'')", {}},
    {Fn::Substr, "QEL_SUBSTR($*)", {}},
    {Fn::Length, "LENGTH($1)", {}},
    {Fn::ToNumber, "QEL_NUMBER($1)", {}},
    {Fn::Count, "COUNT($*)", {}},
    {Fn::Max, "MAX($*)", {}},
    {Fn::Min, "MIN($*)", {}},
    // Exact, so in whatever order; the many places keep the quotient to as many.
    {Fn::Sum, "QEL_SUM($*)", "SUM($*::numeric)"},
    {Fn::Avg, "QEL_AVG($*)", "AVG($*::numeric*1.0000000000000000000000000)"},
    {Fn::Coalesce, "COALESCE($*)", {}},
    {Fn::Choose, "CASE WHEN $1 IS NOT NULL THEN $2 ELSE $3 END", {}},
    {Fn::Add, "($1 + $2)", {}},
    {Fn::Subtract, "($1 - $2)", {}},
    {Fn::Multiply, "($1 * $2)", {}},
    {Fn::Divide, "QEL_DIVIDE($1,$2)", {}},
    {Fn::Negate, "(- $1)", {}},
    {Fn::AddDays, "QEL_ADD_DAYS($1,$2)", {}},
    {Fn::SubtractDays, "QEL_ADD_DAYS($1,- $2)", {}},
    {Fn::DaysBetween, "QEL_DAYS_BETWEEN($1,$2)", {}},
    {Fn::NumberText, "QEL_NUMBER_TEXT($1)", {}},
    {Fn::DateOfText, "QEL_DATE($1)", {}},
    {Fn::DateOfFormat, "QEL_DATE($1,$2)", {}},
    {Fn::FormatDate, "QEL_FORMAT_DATE($1,$2)", {}},
    {Fn::TruncDate, "(SUBSTR($1,1,10)||' 00:00:00')", {}},
    {Fn::TruncNumber, "QEL_TRUNC($*)", {}},
    {Fn::Truncate, "SUBSTR($1,1,$2)", {}},
    {Fn::Pad, "QEL_PAD($1,$2)", {}},
    {Fn::SysDate, "STRFTIME('%Y-%m-%d %H:%M:%S','now','localtime')",
     "TO_CHAR(LOCALTIMESTAMP,'YYYY-MM-DD HH24:MI:SS')"},
}};

/// The names before brackets in all templates, and what the printer writes without one.
std::set<std::string> PrintedFunctions(Dialect dialect)
{
    std::set<std::string> names{"COALESCE", "LIKE", "NULLIF", "ROW_NUMBER"};
    if (dialect == Dialect::Sqlite)
        names.emplace("MATCH"); // of the gram tables
    const auto isOfName = [](char c) { return (c >= 'A' && c <= 'Z') || c == '_'; };
    for (const Template &one : templates) {
        const std::string_view text = FunctionTemplate(one.fn, dialect);
        for (size_t bracket = text.find('('); bracket != std::string_view::npos;
             bracket = text.find('(', bracket + 1)) {
            size_t begin = bracket;
            while (begin > 0 && isOfName(text[begin - 1]))
                --begin;
            if (begin < bracket)
                names.emplace(text.substr(begin, bracket - begin));
        }
    }
    return names;
}

} // namespace

const ClientFunction *FindClientFunction(std::string_view upperName)
{
    const auto found = std::find_if(clientFunctions.begin(), clientFunctions.end(),
                                    [&](const ClientFunction &f) { return f.name == upperName; });
    return found == clientFunctions.end() ? nullptr : &*found;
}

std::string_view FunctionTemplate(Fn fn, Dialect dialect)
{
    const auto found = std::find_if(templates.begin(), templates.end(),
                                    [fn](const Template &t) { return t.fn == fn; });
    Q_ASSERT(found != templates.end());
    if (found == templates.end())
        return {};
    return dialect == Dialect::PostgreSql && !found->postgreSql.empty() ? found->postgreSql
                                                                        : found->sqlite;
}

bool IsPrintedFunction(std::string_view name, Dialect dialect)
{
    static const std::set<std::string> sqlite = PrintedFunctions(Dialect::Sqlite);
    static const std::set<std::string> postgreSql = PrintedFunctions(Dialect::PostgreSql);
    return (dialect == Dialect::Sqlite ? sqlite : postgreSql).contains(UpperAscii(name));
}

} // namespace Qel::Sql
