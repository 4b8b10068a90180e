#pragma once

#include "dataset/QelError.h"

#include <string>

namespace Qel::Sql {

/// A statement that is not run. Code() is one of
///   sql.syntax         not a statement of the accepted language
///   sql.not_select     something other than exactly one SELECT
///   sql.unknown_table  no such table, or clients may not read it
///   sql.unknown_column no such column, or clients may not read it
///   sql.ambiguous      a name that fits several columns
///   sql.function       a function that is not on the list, or wrong arguments
///   sql.value          a literal that is no date or number where one is needed
///   sql.limit          larger or deeper than Limits allows
class ESqlError : public EQelError
{
public:
    ESqlError(std::string code, qsizetype position, const QString &message);

    const std::string &Code() const noexcept { return code_; }
    qsizetype Position() const noexcept { return position_; } ///< byte offset in the statement

private:
    std::string code_;
    qsizetype position_;
};

} // namespace Qel::Sql
