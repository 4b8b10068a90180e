#pragma once

#include <QString>

namespace Qel::Store {

/// Copies an SQLite database into an empty file: one state of it, while others read and write.
/// Throws EStoreError.
void CopySqlite(const QString &from, const QString &to);

} // namespace Qel::Store
