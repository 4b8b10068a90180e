#pragma once

#include <QString>

namespace Qel::Admin {

/// A copy of the database in one file, of one state, made while servers work with it. SQLite: a
/// database file like the original. PostgreSQL: the custom format of pg_dump, which must be
/// installed; `url` is handed over in its environment, not its arguments. The file appears whole or
/// not at all, for its owner alone. Throws EQelError if it is there already, and for failures.
void BackUp(const QString &url, const QString &path);

} // namespace Qel::Admin
