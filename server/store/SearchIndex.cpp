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

/// QEL_GRAMS of the searched columns, each behind `prefix`.
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
    QList<SearchObject> objects{{grams, "CREATE VIRTUAL TABLE " + grams +
                                            " USING fts5(GRAMS, content='', columnsize=0,"
                                            " detail=none, tokenize='ascii')"}};
    const auto trigger = [&](const char *suffix, const QByteArray &event, const QByteArray &body) {
        const QByteArray triggerName = grams + suffix;
        objects += {triggerName,
                    "CREATE TRIGGER " + triggerName + " AFTER " + event + " BEGIN " + body + "END"};
    };
    trigger("_I", "INSERT ON " + name, add);
    trigger("_D", "DELETE ON " + name, remove);
    trigger("_U",
            "UPDATE OF " + SearchedColumns(table).join(", ") + " ON " + name + " WHEN " +
                Changes(table),
            remove + add);
    return objects;
}

} // namespace

QList<SearchObject> SearchObjectsOf(const Sql::Table &table, Dialect dialect)
{
    if (table.searched.empty() || dialect != Dialect::Sqlite)
        return {};
    return GramTable(table);
}

void CreateSearchIndexes(Connection &connection)
{
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        const auto objects = SearchObjectsOf(table, connection.CurrentDialect());
        for (const SearchObject &object : objects)
            connection.Execute(object.sql);
        if (!objects.isEmpty())
            connection.Execute("INSERT INTO " + objects.first().name +
                               " (rowid, GRAMS) SELECT rowid, " + GramsCall(table) + " FROM " +
                               QByteArray::fromStdString(table.name));
    }
}

void DropSearchIndexes(Connection &connection)
{
    if (connection.CurrentDialect() != Dialect::Sqlite)
        return;
    QStringList drops;
    {
        const auto found = connection.Prepare(
            "SELECT 'DROP ' || type || ' ' || name FROM sqlite_master"
            " WHERE name GLOB 'QEL_GRAMS_*'"
            " AND (type = 'trigger' OR sql LIKE 'CREATE VIRTUAL TABLE %') ORDER BY type DESC");
        while (found->Step())
            drops += found->ColumnText(0);
    }
    for (const QString &drop : drops)
        connection.Execute(drop.toUtf8());
}

bool IsSearchIndexInStep(Connection &connection, const Sql::Table &table)
{
    if (SearchObjectsOf(table, connection.CurrentDialect()).isEmpty())
        return true;
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
