#include "store/SearchIndex.h"

#include "sql/Grams.h"
#include "store/Schema.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

QByteArrayList SearchedColumns(const Sql::Table &table)
{
    QByteArrayList names;
    for (const int column : table.searched)
        names += QByteArray::fromStdString(table.columns[static_cast<std::size_t>(column)].name);
    return names;
}

/// QEL_GRAMS of the searched columns, each behind `prefix`; both databases have the function.
QByteArray GramsCall(const Sql::Table &table, const QByteArray &prefix = {})
{
    return "QEL_GRAMS(" + prefix + SearchedColumns(table).join(", " + prefix) + ')';
}

/// Posts store whole rows; most leave the searched texts as they were.
QByteArray Changes(const Sql::Table &table)
{
    QByteArrayList changes;
    for (const QByteArray &column : SearchedColumns(table))
        changes += "old." + column + " IS NOT new." + column;
    return changes.join(" OR ");
}

/// The full-text table keeps no texts: what a row no longer holds is told to it by the texts of
/// before.
QList<SearchObject> GramTable(const Sql::Table &table)
{
    const QByteArray name = QByteArray::fromStdString(table.name);
    const QByteArray grams = QByteArray::fromStdString(Sql::GramTableOf(table.name));
    const QByteArray add = "INSERT INTO " + grams + " (rowid, GRAMS) VALUES (new.rowid, " +
                           GramsCall(table, "new.") + "); ";
    const QByteArray remove = "INSERT INTO " + grams + " (" + grams +
                              ", rowid, GRAMS) VALUES ('delete', old.rowid, " +
                              GramsCall(table, "old.") + "); ";
    const QByteArray create = "CREATE VIRTUAL TABLE " + grams +
                              " USING fts5(GRAMS, content='', columnsize=0, detail=none,"
                              " tokenize='ascii')";
    QList<SearchObject> objects{{grams, create, create}};
    const auto trigger = [&](const char *suffix, const QByteArray &event, const QByteArray &body) {
        const QByteArray triggerName = grams + suffix;
        const QByteArray sql =
            "CREATE TRIGGER " + triggerName + " AFTER " + event + " BEGIN " + body + "END";
        objects += {triggerName, sql, sql};
    };
    trigger("_I", "INSERT ON " + name, add);
    trigger("_D", "DELETE ON " + name, remove);
    trigger("_U",
            "UPDATE OF " + SearchedColumns(table).join(", ") + " ON " + name + " WHEN " +
                Changes(table),
            remove + add);
    return objects;
}

/// New entries go to their places at once: a list of pending ones, which is quicker to write, is
/// read through by every search, and the planner then prefers the table.
SearchObject GramIndex(const Sql::Table &table)
{
    const QByteArray name = "IX_" + QByteArray::fromStdString(table.name) + "_PARTS";
    return {name,
            "CREATE INDEX " + name + " ON " + QByteArray::fromStdString(table.name) +
                " USING GIN (" + GramsCall(table) + ") WITH (fastupdate = off)",
            "GIN (QEL_GRAMS(VARIADIC ARRAY[" + SearchedColumns(table).join(", ") + "]))"};
}

void FillGrams(Connection &connection, const Sql::Table &table)
{
    connection.Execute("INSERT INTO " + QByteArray::fromStdString(Sql::GramTableOf(table.name)) +
                       " (rowid, GRAMS) SELECT rowid, " + GramsCall(table) + " FROM " +
                       QByteArray::fromStdString(table.name));
}

constexpr char SqliteDrops[] =
    "SELECT 'DROP ' || type || ' ' || name FROM sqlite_master WHERE name GLOB 'QEL_GRAMS_*'"
    " AND (type = 'trigger' OR sql LIKE 'CREATE VIRTUAL TABLE %') ORDER BY type DESC";
constexpr char PostgresDrops[] =
    "SELECT 'DROP INDEX ' || indexname FROM pg_indexes WHERE schemaname = current_schema()"
    " AND indexname LIKE 'ix\\_%\\_parts'";

} // namespace

QList<SearchObject> SearchObjectsOf(const Sql::Table &table, Dialect dialect)
{
    if (table.searched.empty())
        return {};
    return dialect == Dialect::Sqlite ? GramTable(table) : QList{GramIndex(table)};
}

void CreateSearchIndexes(Connection &connection)
{
    const Dialect dialect = connection.CurrentDialect();
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        const auto objects = SearchObjectsOf(table, dialect);
        for (const SearchObject &object : objects)
            connection.Execute(object.sql);
        if (dialect == Dialect::Sqlite && !objects.isEmpty())
            FillGrams(connection, table);
    }
}

void DropSearchIndexes(Connection &connection)
{
    QStringList drops;
    {
        const auto found = connection.Prepare(
            connection.CurrentDialect() == Dialect::Sqlite ? SqliteDrops : PostgresDrops);
        while (found->Step())
            drops += found->ColumnText(0);
    }
    for (const QString &drop : drops)
        connection.Execute(drop.toUtf8());
}

bool IsSearchIndexInStep(Connection &connection, const Sql::Table &table)
{
    if (table.searched.empty() || connection.CurrentDialect() != Dialect::Sqlite)
        return true; // no write passes by an index of the database's own
    const QByteArray grams = QByteArray::fromStdString(Sql::GramTableOf(table.name));
    connection.Execute("CREATE VIRTUAL TABLE temp.QEL_FOUND USING fts5vocab(main, " + grams +
                       ", instance)");
    const auto is = connection.QueryText("SELECT SUM(QEL_GRAM_SUM(doc, term)) FROM temp.QEL_FOUND");
    connection.Execute("DROP TABLE temp.QEL_FOUND");
    const auto shouldBe =
        connection.QueryText("SELECT NULLIF(SUM(QEL_GRAM_SUM(rowid, " + GramsCall(table) +
                             ")), 0) FROM " + QByteArray::fromStdString(table.name));
    return is == shouldBe;
}

} // namespace Qel::Store
