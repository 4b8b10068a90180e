#pragma once

#include "store/Connection.h"

namespace Qel::Store {

/// Creates every table and index that schema/columns.csv and schema/indexes.csv describe, and
/// the server's own tables (credentials, keys of answered posts), in the connection's dialect.
/// One transaction: all of it or nothing. The database must be empty.
void CreateSchema(Connection &connection);

/// Whether CreateSchema has run here.
bool HasSchema(Connection &connection);

} // namespace Qel::Store
