#pragma once

#include "demo/TableRows.h"

#include <vector>

/// The sample database: regions, organisations, groups, products and users that look like a
/// platform at work. The same rows every time; what they are made of stands in demo/.
namespace Qel::Demo {

/// Everything that Fill stores. Throws EQelError if a file of demo/ is not as it should be.
std::vector<TableRows> MakeRows();

/// Stores the sample database in one transaction. The schema must exist and hold no rows.
/// The operator's login code is AdminUserCode; giving it a token is the caller's business.
void Fill(Store::Connection &connection);

} // namespace Qel::Demo
