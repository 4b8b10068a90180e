#include "managers/Audit.h"

#include "managers/Method.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

/// The first of `count` keys in a row.
qint64 NewKeys(Store::Connection &connection, const QString &table, const QString &keyColumn,
               qint64 count)
{
    const auto next =
        connection.QueryText("UPDATE SRV_SEQUENCE SET NEXT = NEXT + ?2 WHERE NAME = ?1"
                             " RETURNING NEXT - ?2",
                             {table, count});
    if (next)
        return next->toLongLong();
    // The first key of a table that was filled by other means goes beyond the largest there is.
    const QString sql =
        u"SELECT COALESCE(MAX(CAST(%1 AS BIGINT)), 0) + 1 FROM %2"_s.arg(keyColumn, table);
    const qint64 first = connection.QueryText(sql.toUtf8()).value_or(u"1"_s).toLongLong();
    connection.Run("INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES (?1, ?2)", {table, first + count});
    return first;
}

} // namespace

void LogChange(PostContext &post, const QString &table, const QString &key1, const QString &key2,
               Change change)
{
    post.changes.append({table, key1, key2, change});
}

void WriteLog(const PostContext &post)
{
    if (post.changes.isEmpty())
        return;
    qint64 key = NewKeys(post.connection, u"SYS_UPDATE_LOG"_s, u"LOG_ID"_s, post.changes.size());
    const auto insert = post.connection.Prepare(
        "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2, OPTION_TYPE,"
        " USER_ID, USER_NAME, OPTION_DATE, LAST_OPERATE)"
        " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, '1')");
    insert->Bind(6, post.user.userId);
    insert->Bind(7, post.user.userName);
    insert->Bind(8, post.now);
    for (const LoggedChange &entry : post.changes) {
        insert->Bind(1, QString::number(key++));
        insert->Bind(2, entry.table);
        insert->Bind(3, entry.key1);
        insert->Bind(4, entry.key2);
        insert->Bind(5, QString::number(static_cast<int>(entry.change)));
        insert->Step();
        insert->Reset();
    }
}

QString NewKey(Store::Connection &connection, const QString &table, const QString &keyColumn)
{
    return QString::number(NewKeys(connection, table, keyColumn, 1));
}

} // namespace Qel::Managers
