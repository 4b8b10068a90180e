#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// What SYS_UPDATE_LOG says was done, as the log viewers read it.
enum class Change { Insert = 1, Modify = 2, LogicalDelete = 5 };

/// Writes the record's entry in the change log, in the post's transaction. A table with one key
/// leaves `key2` empty.
void LogChange(PostContext &post, const QString &table, const QString &key1, const QString &key2,
               Change change);

/// The key of a new row: decimal digits, never given twice. Screens put such keys into
/// statements without quotes.
QString NewKey(Store::Connection &connection, const QString &table, const QString &keyColumn);

} // namespace Qel::Managers
