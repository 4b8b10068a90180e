#pragma once

#include "store/Connection.h"
#include "store/Schema.h"

#include <QList>

namespace Qel::Store {

/// What SRV_SCHEMA says; 1 for tables from before it was kept, 0 for a database without tables.
int SchemaVersionOf(Connection &connection);

/// Brings older tables up to this program's version, one transaction a step: what is there stays,
/// and a step that fails leaves the version before it. An empty database gets its tables. Returns
/// the versions that were reached, none if there was nothing to do. Of several at the same time one
/// works and the others wait. Throws EQelError for tables of a newer program, EStoreError.
QList<int> MigrateSchema(Connection &connection);

enum class OldTables { Refuse, Migrate };

/// For a program that is about to work with the tables: makes those of an empty database, and
/// throws EQelError that says what to do if they are older, or newer, than it.
void PrepareSchema(Connection &connection, OldTables old);

/// The same for a program that makes no tables.
void RequireSchema(Connection &connection);

/// Makes all indexes anew, in one transaction; posts wait meanwhile. Throws as RequireSchema does.
void RebuildIndexes(Connection &connection);

} // namespace Qel::Store
