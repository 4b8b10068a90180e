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
///   sql.value          a literal or a stored value that is no date or number where one is needed
///   sql.limit          larger or deeper than Limits allows
class ESqlError : public EQelError
{
public:
    ESqlError(std::string code, qsizetype position, const QString &message);
    ESqlError(std::string code, const QString &message); ///< of the statement as a whole

    const std::string &Code() const noexcept { return code_; }
    /// Bytes of the statement before the mistake; -1: it is in no one place.
    qsizetype Position() const noexcept { return position_; }

private:
    std::string code_;
    qsizetype position_;
};

} // namespace Qel::Sql
