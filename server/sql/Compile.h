#pragma once

#include "dataset/FieldDef.h"
#include "sql/Catalog.h"
#include "sql/SqlError.h"

#include <QByteArrayView>

#include <map>
#include <string>
#include <vector>

/// The Oracle SELECT front end. Clients send complete Oracle SELECT text; it is never forwarded:
/// it is parsed, every name is looked up in the catalogue, and a statement of the database in use
/// is printed from the tree.
///
/// What the database must be like:
///   * a text that is empty is stored as NULL, never as '' (Oracle knows no empty text);
///   * a DateTime is stored as text 'YYYY-MM-DD HH24:MI:SS';
///   * texts sort by their UTF-8 bytes (SQLite's BINARY, PostgreSQL's "C");
///   * SQLite tables are rowid tables; each connection has had PrepareSqliteConnection.
namespace Qel::Sql {

enum class Dialect { Sqlite, PostgreSql };

struct Limits
{
    int maxTextBytes = 1 << 20;
    /// Of nested brackets, sub-selects and operators. A guard of this code's own recursion: some
    /// kinds of nesting are too deep for the database before, which says so itself.
    int maxDepth = 60;
    int maxTables = 40;    ///< over all sub-selects
    int maxColumns = 1000; ///< of one select list, GROUP BY or ORDER BY
    int maxLiterals = 50000;
    int maxLiteralBytes = 4000; ///< of one, as in Oracle
};

/// The tables that a client may read and the rows of each, as a condition in the database's own SQL
/// over the table's columns; an empty one means every row. What is not named is not there.
using RowScope = std::map<std::string, std::string>;

/// Of 100,000 rows so many are found by reading through in the time in which they are looked up.
inline constexpr int ManyCandidates = 2'000;

/// Literals stand inside the texts, quoted by the printer: an IN list may have more of them than a
/// database accepts parameters, and planners see what they compare with. The texts are complete:
/// nothing is to be bound.
struct CompiledQuery
{
    std::string all;   ///< every row; in the order of the pages if the statement states one
    std::string count; ///< one row with one integer: how many rows `all` gives

    /// Rows `offset` + 1 to `offset` + `limit` of one total order that agrees with the statement's
    /// own, so that pages neither overlap nor leave out a row.
    std::string Page(qint64 limit, qint64 offset, bool readsThrough = false) const;

    /// `count`, or what costs less where the page reads through.
    const std::string &Total(bool readsThrough = false) const;

    FieldDefs fields;                ///< one per output column; labels may repeat
    std::vector<std::string> tables; ///< those read, each once, upper case

    std::string ordered; ///< what Page() puts the limits behind

    /// Where the rows are looked for by the grams of what they shall hold, and that may cost more
    /// than to read through (an index may give them in their order, or they are looked up from
    /// several tables): a statement for one number, how many candidates there are, at most
    /// ManyCandidates; and, for pages when there are so many, the ordered text that reads through.
    std::string candidates;
    std::string readThrough;
    std::string readThroughCount; ///< empty: `count` is the better one all the same
};

/// `oracleText` is UTF-8. With a scope every mention of a table, at whatever depth, is one of the
/// rows that the scope leaves of it: no alias, join or sub-select gets around that. Throws
/// ESqlError.
CompiledQuery Compile(QByteArrayView oracleText, const Catalog &catalog, Dialect dialect,
                      const Limits &limits = {}, const RowScope *scope = nullptr);

} // namespace Qel::Sql
