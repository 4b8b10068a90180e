#include "admin/StoredSchema.h"

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

QByteArrayView ByDialect(const Store::Connection &connection, QByteArrayView sqlite,
                         QByteArrayView postgres)
{
    return connection.CurrentDialect() == Store::Dialect::Sqlite ? sqlite : postgres;
}

} // namespace

QList<StoredColumn> StoredColumns(Store::Connection &connection, const QString &table)
{
    const auto statement = connection.Prepare(
        ByDialect(connection, "SELECT name, type, \"notnull\" FROM pragma_table_info(?1)",
                  "SELECT upper(A.attname), upper(format_type(A.atttypid, A.atttypmod)) ||"
                  " CASE WHEN C.collname IS NULL THEN '' ELSE ' COLLATE \"' || C.collname || '\"'"
                  " END, A.attnotnull::integer"
                  " FROM pg_attribute A LEFT JOIN pg_collation C ON C.oid = A.attcollation"
                  " WHERE A.attrelid = to_regclass(lower(?1::text)) AND A.attnum > 0"
                  " AND NOT A.attisdropped ORDER BY A.attnum"));
    statement->Bind(1, table);
    QList<StoredColumn> columns;
    while (statement->Step())
        columns.append(
            {statement->ColumnText(0), statement->ColumnText(1), statement->ColumnInt(2) != 0});
    return columns;
}

QString StoredKey(Store::Connection &connection, const QString &table)
{
    return connection
        .QueryText(ByDialect(connection,
                             "SELECT group_concat(name, ', ') FROM (SELECT name FROM"
                             " pragma_table_info(?1) WHERE pk > 0 ORDER BY pk)",
                             "SELECT string_agg(upper(A.attname), ', ' ORDER BY K.place)"
                             " FROM pg_index I, unnest(I.indkey::smallint[])"
                             " WITH ORDINALITY K (attribute, place), pg_attribute A"
                             " WHERE I.indrelid = to_regclass(lower(?1::text)) AND I.indisprimary"
                             " AND A.attrelid = I.indrelid AND A.attnum = K.attribute"),
                   {table})
        .value_or(QString());
}

std::optional<QString> StoredIndex(Store::Connection &connection, const QString &table,
                                   const QString &name)
{
    return connection.QueryText(
        ByDialect(connection,
                  "SELECT (SELECT group_concat(name, ', ') FROM (SELECT name FROM"
                  " pragma_index_info(?1) ORDER BY seqno)) ||"
                  " CASE WHEN sql LIKE 'CREATE UNIQUE %' THEN ' UNIQUE' ELSE '' END"
                  " FROM sqlite_master WHERE type = 'index' AND name = ?1 AND tbl_name = ?2",
                  "SELECT string_agg(upper(A.attname), ', ' ORDER BY K.place) ||"
                  " CASE WHEN bool_and(I.indisunique) THEN ' UNIQUE' ELSE '' END"
                  " FROM pg_index I, unnest(I.indkey::smallint[])"
                  " WITH ORDINALITY K (attribute, place), pg_attribute A"
                  " WHERE I.indexrelid = to_regclass(lower(?1::text)) AND I.indisvalid"
                  " AND I.indrelid = to_regclass(lower(?2::text))"
                  " AND A.attrelid = I.indrelid AND A.attnum = K.attribute"),
        {name, table});
}

std::optional<QString> StoredSearchObject(Store::Connection &connection, const QString &name)
{
    return connection.QueryText(
        ByDialect(connection, "SELECT sql FROM sqlite_master WHERE name = ?1",
                  "SELECT upper(A.amname) || ' (' || string_agg(upper(pg_get_indexdef("
                  "I.indexrelid, K, true)), ', ' ORDER BY K) || ')'"
                  " FROM pg_index I JOIN pg_class C ON C.oid = I.indexrelid"
                  " JOIN pg_am A ON A.oid = C.relam, generate_series(1, I.indnatts) K"
                  " WHERE I.indexrelid = to_regclass(lower(?1::text)) AND I.indisvalid"
                  " GROUP BY A.amname"),
        {name});
}

} // namespace Qel::Admin
