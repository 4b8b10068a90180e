#pragma once

#include "store/Connection.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace Qel::Store {

/// What the CSV files in schema/ say, read once. Tables "SRV_..." are the
/// server's own: no client reads them.
const Sql::Catalog &SchemaCatalog();

/// What CreateSchema makes; the newest row of SRV_SCHEMA says what a database has. Whoever changes
/// a table counts it up and adds a step to Migrations.cpp.
inline constexpr int SchemaVersion = 4;

/// The type of a column with its collation, as the database itself would name it.
QByteArray TypeName(const Sql::Column &column, Dialect dialect);

/// An index of a table and what makes it.
struct Index
{
    QByteArray name;
    QByteArray columns; ///< "A, B"
    bool unique = false;
    QByteArray sql;
};

QList<Index> IndexesOf(const Sql::Table &table);

/// The names of the functions in a PostgreSQL database, upper case; one for each list of arguments.
QStringList SchemaFunctions();

/// Creates every table, index and function in the connection's dialect, in one transaction: all of
/// it or nothing. A database that somebody else is just making the same in is waited for. On
/// PostgreSQL it also grants PostgresReaderRole what clients may read.
void CreateSchema(Connection &connection);

/// For migrations, in a transaction of the caller's: one table of the catalogue, without indexes;
/// and the functions of the query language, anew if they are there. SQLite has those in the
/// program.
void CreateTable(Connection &connection, const char *name);
void CreateFunctions(Connection &connection);

/// For a scope nobody else makes or changes tables. Begins before the transaction that does, which
/// then sees what others have done.
class SchemaLock
{
public:
    explicit SchemaLock(Connection &connection);
    ~SchemaLock();
    Q_DISABLE_COPY_MOVE(SchemaLock)

private:
    Connection &connection_;
};

/// Filling empty tables costs less without their indexes, which are made afterwards in one go,
/// those for parts of texts too (SearchIndex.h). The primary keys stay. Both are for a transaction
/// of the caller's.
void DropIndexes(Connection &connection);
void CreateIndexes(Connection &connection);

/// Whether CreateSchema has run here.
bool HasSchema(Connection &connection);
bool HasTable(Connection &connection, const QString &name);

} // namespace Qel::Store
