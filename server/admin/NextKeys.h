#pragma once

#include "store/Connection.h"

#include <QMap>
#include <QString>

namespace Qel::Admin {

/// By table the number that its next new row gets, as far as the database has begun to count: by a
/// sequence where there is one that has begun, else by SRV_SEQUENCE.
QMap<QString, qint64> NextKeys(Store::Connection &connection);

} // namespace Qel::Admin
