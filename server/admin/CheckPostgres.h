#pragma once

#include "admin/FindingList.h"
#include "store/Connection.h"

namespace Qel::Admin {

/// Settings of the PostgreSQL server and the database, whether the tables are there or not.
void CheckPostgresSettings(Store::Connection &connection, FindingList &findings);

/// What else only PostgreSQL has: the functions of the query language, and what the role of queries
/// may and may not.
void CheckPostgresSchema(Store::Connection &connection, FindingList &findings);

} // namespace Qel::Admin
