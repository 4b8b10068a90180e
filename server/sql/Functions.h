#pragma once

#include "sql/Compile.h"

#include <string_view>

/// The functions of the language: which a client may call, and how each is written for a database.
namespace Qel::Sql {

enum class Fn {
    // what clients call
    Upper,
    Lower,
    Trim,
    Substr,
    Length,
    Nvl,
    Nvl2,
    Decode,
    ToChar,
    ToDate,
    ToNumber,
    Trunc,
    Count,
    Max,
    Min,
    Sum,
    Avg,
    // what the binder makes of operators, casts and conversions
    Coalesce,
    Choose, ///< NVL2: first not NULL ? second : third
    Concat, ///< of two texts or more; has no template
    Add,
    Subtract,
    Multiply,
    Divide,
    Negate,
    AddDays,
    SubtractDays,
    DaysBetween,
    NumberText,
    DateOfText,
    DateOfFormat,
    FormatDate,
    TruncDate,
    TruncNumber,
    Truncate, ///< a text to its first characters
    Pad,      ///< a text to exactly so many characters
    SysDate,
    RowNumber, ///< has no template
};

struct ClientFunction
{
    std::string_view name;
    Fn fn;
    int minArguments;
    int maxArguments;
    bool aggregate;
};

/// Null: clients may not call it.
const ClientFunction *FindClientFunction(std::string_view upperName);

/// How it is written: $1 is the first argument, $* all of them with commas. An argument stands at
/// most once in a template, so nested calls cannot grow without bound.
std::string_view FunctionTemplate(Fn fn, Dialect dialect);

/// Whether a printed statement calls the database's function of this name, in any case. Nothing
/// else needs to be allowed to one that reads for clients.
bool IsPrintedFunction(std::string_view name, Dialect dialect);

/// Of a LIKE: Oracle's longest text. The time that a comparison takes grows with it, and a
/// database cannot be stopped inside of one.
inline constexpr int MaxPatternBytes = 4000;

} // namespace Qel::Sql
