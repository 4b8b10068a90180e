#pragma once

#include "store/Connection.h"

#include <QString>

namespace Qel::Managers {

struct PostContext;

/// What SYS_UPDATE_LOG says was done, as the log viewers read it.
enum class Change { Insert = 1, Modify = 2, Approve = 3, LogicalDelete = 5, PhysicalDelete = 6 };

struct LoggedChange
{
    QString table;
    QString key1;
    QString key2; ///< empty: the table has one key
    Change change;
};

/// Notes the record's entry for the change log. A row that is refused after all loses its entries.
void LogChange(PostContext &post, const QString &table, const QString &key1, const QString &key2,
               Change change);

/// Writes the entries, in the post's transaction, with its operator and time.
void WriteLog(const PostContext &post);

/// The key of a new row: decimal digits, never given twice. Screens put such keys into
/// statements without quotes.
QString NewKey(Store::Connection &connection, const QString &table, const QString &keyColumn);

} // namespace Qel::Managers
