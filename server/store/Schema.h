#pragma once

#include "store/Connection.h"

namespace Qel::Store {

/// What schema/columns.csv and schema/indexes.csv say, read once. Tables "SRV_..." are the
/// server's own: no client reads them.
const Sql::Catalog &SchemaCatalog();

/// What CreateSchema makes; the newest row of SRV_SCHEMA says what a database has.
inline constexpr int SchemaVersion = 1;

/// Creates every table, index and function in the connection's dialect, in one transaction: all of
/// it or nothing. A database that somebody else is just making the same in is waited for. On
/// PostgreSQL it also grants PostgresReaderRole what clients may read.
void CreateSchema(Connection &connection);

/// Filling empty tables costs less without their indexes, which are made afterwards in one go. The
/// primary keys stay. Both are for a transaction of the caller's.
void DropIndexes(Connection &connection);
void CreateIndexes(Connection &connection);

/// Counts what the database chooses between ways to a statement's rows by: how many rows a table
/// has and an index's value leads to. Without it a join may begin at the wrong end. Takes a tenth
/// of a second for the sample database.
void UpdateStatistics(Connection &connection);

/// Whether CreateSchema has run here.
bool HasSchema(Connection &connection);

} // namespace Qel::Store
