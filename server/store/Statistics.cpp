#include "store/Statistics.h"

#include "store/Schema.h"

namespace Qel::Store {

namespace {

constexpr qint64 SmallTable = 100; ///< rows that any plan goes through quickly

/// Rows of a table at the time that SQLite counted them; the number is the first of the line.
qint64 CountedRows(Connection &connection, const QString &table)
{
    const auto line = connection.QueryText("SELECT stat FROM sqlite_stat1 WHERE tbl = ?1", {table});
    return line.value_or(QString()).section(u' ', 0, 0).toLongLong();
}

/// No fewer than the table has: rows are seldom removed, and their numbers not used again.
qint64 MostRows(Connection &connection, const QString &table)
{
    return connection.QueryText("SELECT MAX(rowid) FROM " + table.toUtf8())
        .value_or(QString())
        .toLongLong();
}

bool SqliteNeedsStatistics(Connection &connection)
{
    const bool areThere = HasTable(connection, QStringLiteral("sqlite_stat1"));
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        if (table.name.starts_with("SRV_"))
            continue; // looked up by their keys alone, and rows come and go
        const QString name = QString::fromStdString(table.name);
        const qint64 rows = MostRows(connection, name);
        if (rows > SmallTable && (!areThere || rows > 2 * CountedRows(connection, name)))
            return true;
    }
    return false;
}

/// PostgreSQL keeps its own up to date, but for tables that have just been filled and for what a
/// new index is over. How many rows a table has it knows from the making of an index already, what
/// is in them it does not.
constexpr char NeverCounted[] =
    "SELECT relname FROM pg_class C WHERE relkind = 'r'"
    " AND relnamespace = current_schema()::regnamespace AND pg_relation_size(oid) > 0"
    " AND (NOT EXISTS (SELECT 1 FROM pg_stats WHERE schemaname = current_schema()"
    " AND tablename = relname)"
    " OR EXISTS (SELECT 1 FROM pg_index I JOIN pg_class X ON X.oid = I.indexrelid"
    " WHERE I.indrelid = C.oid AND I.indexprs IS NOT NULL AND NOT EXISTS (SELECT 1 FROM pg_stats"
    " WHERE schemaname = current_schema() AND tablename = X.relname)))";

} // namespace

void UpdateStatistics(Connection &connection)
{
    if (connection.CurrentDialect() == Dialect::Sqlite) {
        // Open connections read the statistics anew only where a table has come or gone.
        Transaction transaction(connection);
        connection.Execute("DROP TABLE IF EXISTS sqlite_stat1; ANALYZE");
        transaction.Commit();
        return;
    }
    QByteArrayList tables;
    for (const auto never = connection.Prepare(NeverCounted); never->Step();)
        tables += never->ColumnBytes(0).toByteArray();
    // Nobody waits for copies of the database to hear of it; there may be none.
    connection.Execute("SET synchronous_commit = local");
    for (const QByteArray &table : tables)
        connection.Execute("ANALYZE " + table);
    connection.Execute("RESET synchronous_commit");
}

bool NeedStatistics(Connection &connection)
{
    return connection.CurrentDialect() == Dialect::Sqlite ? SqliteNeedsStatistics(connection)
                                                          : connection.Exists(NeverCounted);
}

StatisticsKeeper::StatisticsKeeper(Database &database, std::chrono::milliseconds interval)
    : keep_(interval, NowAndThen::First::AtOnce, [&database](const std::stop_token &stop) {
        const auto connection = database.OpenWriter();
        connection->StopWhen([&stop] { return stop.stop_requested(); });
        if (NeedStatistics(*connection))
            UpdateStatistics(*connection);
    })
{
}

} // namespace Qel::Store
