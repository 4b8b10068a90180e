#include "managers/Audit.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

void LogChange(PostContext &post, const QString &table, const QString &key1, const QString &key2,
               Change change)
{
    post.connection.Run("INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2,"
                        " USER_ID, USER_NAME, OPTION_TYPE, OPTION_DATE, LAST_OPERATE)"
                        " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, '1')",
                        {NewKey(post.connection, u"SYS_UPDATE_LOG"_s, u"LOG_ID"_s), table, key1,
                         key2, post.user.userId, post.user.userName,
                         QString::number(static_cast<int>(change)), post.now});
}

QString NewKey(Store::Connection &connection, const QString &table, const QString &keyColumn)
{
    const auto next = connection.QueryText("UPDATE SRV_SEQUENCE SET NEXT = NEXT + 1 WHERE NAME = ?1"
                                           " RETURNING NEXT - 1",
                                           {table});
    if (next)
        return *next;
    // The first key of a table that was filled by other means goes beyond the largest there is.
    const QString sql =
        u"SELECT COALESCE(MAX(CAST(%1 AS BIGINT)), 0) + 1 FROM %2"_s.arg(keyColumn, table);
    const QString first = connection.QueryText(sql.toUtf8()).value_or(u"1"_s);
    connection.Run("INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES (?1, ?2)",
                   {table, first.toLongLong() + 1});
    return first;
}

} // namespace Qel::Managers
