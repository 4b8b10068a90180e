#pragma once

#include <QMap>
#include <QString>

namespace Qel::Store {

/// The environment variables that say to PostgreSQL's own programs what the address says: so a
/// password in it stands in no argument. Throws EStoreError, which does not name the address.
QMap<QString, QString> PostgresEnvironment(const QString &url);

} // namespace Qel::Store
