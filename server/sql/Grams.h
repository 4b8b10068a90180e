#pragma once

#include <QtGlobal>

#include <string>
#include <string_view>
#include <vector>

/// How parts of texts are found without a scan. A text is kept as its grams: from each of its
/// characters on, up to three. A part of it then begins one of them, however short the part is, and
/// texts that hold the part's own grams are candidates, which LIKE itself looks at. On SQLite the
/// grams of one table's rows stand in a full-text table (FTS5) beside it; see Catalog's
/// Table::searched. On PostgreSQL they are of one and two characters, made by functions of the
/// schema (QEL_GRAMS), and a GIN index holds them.
namespace Qel::Sql {

/// The grams of an upper-case text, each with a blank behind, for an FTS5 table that takes apart at
/// blanks (tokenizer "ascii").
std::string GramsOf(std::string_view upperText);

/// A number that depends on the distinct grams and on the row they are of, in whatever order and
/// however their letters are written: what grams a table keeps can be compared by the sum over its
/// rows, or over its grams one by one. 0 without grams.
qint64 SumOfGrams(qint64 row, std::string_view grams);

/// What such a table has to match for the texts that a LIKE pattern fits; `escape` as LIKE's, 0:
/// none. Empty where the pattern says nothing that grams could tell.
std::string GramsOfPattern(std::string_view upperPattern, char escape);

/// The same for PostgreSQL: parts that the pattern's texts hold, for QEL_PART_GRAMS to take apart.
/// None where the pattern says nothing.
std::vector<std::string> PartsOfPattern(std::string_view pattern, char escape);

/// The full-text table of a table.
std::string GramTableOf(std::string_view table);

} // namespace Qel::Sql
