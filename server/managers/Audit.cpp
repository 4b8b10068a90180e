#include "managers/Audit.h"

#include "managers/Method.h"
#include "store/LargestKey.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

bool HasSequences(const Store::Connection &connection)
{
    return connection.CurrentDialect() == Store::Dialect::PostgreSql;
}

/// The first of `count` keys in a row, counted in a table: for a database with one writer.
qint64 CountKeys(Store::Connection &connection, const QString &table, const QString &keyColumn,
                 qint64 count)
{
    const auto next =
        connection.QueryText("UPDATE SRV_SEQUENCE SET NEXT = NEXT + ?2 WHERE NAME = ?1"
                             " RETURNING NEXT - ?2",
                             {table, count});
    if (next)
        return next->toLongLong();
    // The first key of a table that was filled by other means goes beyond the largest there is.
    const qint64 first = Store::LargestKey(connection, table, keyColumn) + 1;
    connection.Run("INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES (?1, ?2)", {table, first + count});
    return first;
}

/// An entry's columns by itself, those of the post behind them.
constexpr char EntryColumns[] =
    "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2, OPTION_TYPE,"
    " USER_ID, USER_NAME, OPTION_DATE, LAST_OPERATE) ";

QString TypeOf(const LoggedChange &entry)
{
    return QString::number(static_cast<int>(entry.change));
}

void WriteOneByOne(const PostContext &post)
{
    qint64 key = CountKeys(post.connection, u"SYS_UPDATE_LOG"_s, u"LOG_ID"_s, post.changes.size());
    for (const LoggedChange &entry : post.changes)
        post.connection.Run(EntryColumns +
                                QByteArray("VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, '1')"),
                            {QString::number(key++), entry.table, entry.key1, entry.key2,
                             TypeOf(entry), post.user.userId, post.user.userName, post.now});
}

/// The database finds the key itself.
void WriteOne(const PostContext &post, const LoggedChange &entry)
{
    static const QByteArray insert =
        EntryColumns + QByteArray("VALUES (CAST(SRV_NEW_KEY('SYS_UPDATE_LOG') AS TEXT),"
                                  " ?1, ?2, ?3, ?4, ?5, ?6, ?7, '1')");
    post.Write(insert, {entry.table, entry.key1, entry.key2, TypeOf(entry), post.user.userId,
                        post.user.userName, post.now});
}

/// As PostgreSQL reads an array of texts; the empty text is NULL.
class ArrayText
{
public:
    void Append(QString text)
    {
        text_ += text_.isEmpty() ? u'{' : u',';
        if (text.isEmpty())
            text_ += u"NULL";
        else
            text_ += u'"' + text.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s) + u'"';
    }
    QString Text() const { return text_ + u'}'; }

private:
    QString text_;
};

/// Many in one statement.
void WriteAtOnce(const PostContext &post)
{
    ArrayText tables;
    ArrayText keys1;
    ArrayText keys2;
    ArrayText types;
    for (const LoggedChange &entry : post.changes) {
        tables.Append(entry.table);
        keys1.Append(entry.key1);
        keys2.Append(entry.key2);
        types.Append(TypeOf(entry));
    }
    post.Write(
        EntryColumns +
            QByteArray("SELECT CAST(SRV_NEW_KEY('SYS_UPDATE_LOG') AS TEXT), E.TABLE_NAME,"
                       " E.KEY1, E.KEY2, E.OPTION_TYPE, ?5, ?6, ?7, '1'"
                       " FROM unnest(CAST(?1 AS TEXT[]), CAST(?2 AS TEXT[]), CAST(?3 AS TEXT[]),"
                       " CAST(?4 AS TEXT[])) WITH ORDINALITY"
                       " AS E (TABLE_NAME, KEY1, KEY2, OPTION_TYPE, PLACE) ORDER BY E.PLACE"),
        {tables.Text(), keys1.Text(), keys2.Text(), types.Text(), post.user.userId,
         post.user.userName, post.now});
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
    if (!HasSequences(post.connection))
        WriteOneByOne(post);
    else if (post.changes.size() == 1)
        WriteOne(post, post.changes.first());
    else
        WriteAtOnce(post);
}

QString NewKey(Store::Connection &connection, const QString &table, const QString &keyColumn)
{
    if (HasSequences(connection))
        return *connection.QueryText("SELECT SRV_NEW_KEY(?1)", {table});
    return QString::number(CountKeys(connection, table, keyColumn, 1));
}

} // namespace Qel::Managers
