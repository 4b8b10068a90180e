#pragma once

#include "store/Connection.h"

namespace Qel::Store {

/// What schema/columns.csv and schema/indexes.csv say, read once. Tables "SRV_..." are the
/// server's own: no client reads them.
const Sql::Catalog &SchemaCatalog();

/// Creates every table and index of the catalogue in the connection's dialect, in one
/// transaction: all of it or nothing. The database must be empty.
void CreateSchema(Connection &connection);

/// Whether CreateSchema has run here.
bool HasSchema(Connection &connection);

} // namespace Qel::Store
