#pragma once

#include "admin/FindingList.h"
#include "store/Connection.h"

namespace Qel::Admin {

/// What only PostgreSQL has: settings of the server and the database, the functions of the query
/// language, and what the role of queries may and may not.
void CheckPostgres(Store::Connection &connection, FindingList &findings);

} // namespace Qel::Admin
