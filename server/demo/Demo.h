#pragma once

#include "demo/TableRows.h"

#include <QDate>

#include <vector>

/// The sample database: regions, organisations, groups, products, users, prices and trade that look
/// like a platform at work. What they are made of stands in demo/. The same rows every time; only
/// the dates of the trade follow the day, so that its last week is the one before it.
namespace Qel::Demo {

/// Everything that Fill stores. Throws EQelError if a file of demo/ is not as it should be.
std::vector<TableRows> MakeRows(QDate today);

/// Stores the sample database in one transaction. The schema must exist and hold no rows.
/// `today` is the day after which nothing has happened; before October 2026 the trade lies in the
/// future, for it cannot begin before there are prices. The operator's login code is AdminUserCode;
/// giving it a token is the caller's business.
void Fill(Store::Connection &connection, QDate today);

} // namespace Qel::Demo
