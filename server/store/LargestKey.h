#pragma once

#include "store/Connection.h"

namespace Qel::Store {

/// The largest number among the keys of a table, 0 if there is none. What has other characters than
/// digits, or more than 18 of them, was not counted by a server and is passed over: counting on
/// from the rest never reaches it.
qint64 LargestKey(Connection &connection, const QString &table, const QString &keyColumn);

} // namespace Qel::Store
