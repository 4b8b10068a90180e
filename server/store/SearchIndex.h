#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QList>

/// What finds parts of texts without reading a table through, for the columns that
/// schema/searched.csv names: grams (sql/Grams.h). On SQLite a full-text table of them stands
/// beside each such table, and triggers keep it in step within every transaction, whoever writes.
/// On PostgreSQL it is a GIN index over QEL_GRAMS of the columns together.
namespace Qel::Store {

/// Something in the database that belongs to a search index.
struct SearchObject
{
    QByteArray name;
    QByteArray sql;  ///< what makes it
    QByteArray form; ///< what the database, asked for it, says of it
};

/// Of one table, in the order in which they are made.
QList<SearchObject> SearchObjectsOf(const Sql::Table &table, Dialect dialect);

/// Both are for a transaction of the caller's. What is dropped are those of any version.
void CreateSearchIndexes(Connection &connection);
void DropSearchIndexes(Connection &connection);

/// Whether the index of a table holds what its rows hold and no more. Reads all of it: seconds for
/// a hundred thousand rows. Throws EStoreError where it cannot be read.
bool IsSearchIndexInStep(Connection &connection, const Sql::Table &table);

} // namespace Qel::Store
