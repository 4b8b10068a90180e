#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QList>

/// What finds parts of texts without reading a table through, for the columns that
/// schema/searched.csv names. On SQLite a full-text table of grams stands beside each such table
/// (sql/Grams.h), and triggers keep it in step within every transaction, whoever writes. On
/// PostgreSQL it is a GIN index of trigrams over QEL_UPPER of each column; it needs the extension
/// pg_trgm, and where the owner of the database may not make that, there is none.
namespace Qel::Store {

/// Something in the database that belongs to a search index.
struct SearchObject
{
    QByteArray name;
    QByteArray sql;  ///< what makes it
    QByteArray form; ///< what the database, asked for it, says of it
};

/// Of PostgreSQL; stands in a schema where queries of clients do not find its functions.
inline constexpr char TrigramExtension[] = "pg_trgm";
bool HasTrigrams(Connection &connection);

/// Of one table, in the order in which they are made.
QList<SearchObject> SearchObjectsOf(const Sql::Table &table, Dialect dialect);

/// Both are for a transaction of the caller's. What is dropped are those of any version. Where the
/// extension is missing and cannot be made, nothing is created; `check` says so.
void CreateSearchIndexes(Connection &connection);
void DropSearchIndexes(Connection &connection);

/// Whether the index of a table holds what its rows hold and no more. Reads all of it: seconds for
/// a hundred thousand rows. Throws EStoreError where it cannot be read.
bool IsSearchIndexInStep(Connection &connection, const Sql::Table &table);

} // namespace Qel::Store
