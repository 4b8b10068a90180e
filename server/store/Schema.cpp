#include "store/Schema.h"

#include <QFile>

using namespace Qt::StringLiterals;

// A static library's resources are linked in by whoever names them; not inside a namespace.
static void InitSchemaResource()
{
    Q_INIT_RESOURCE(schema);
}

namespace Qel::Store {

namespace {

QByteArray ReadResource(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw EQelError(u"程序内缺少资源：%1"_s.arg(path));
    return file.readAll();
}

/// Types by dialect. A date is text 'YYYY-MM-DD HH24:MI:SS', which sorts as it should.
QByteArray TypeName(const Sql::Column &column, Dialect dialect)
{
    const bool sqlite = dialect == Dialect::Sqlite;
    switch (column.type) {
    case Sql::ColumnType::Integer:
        return sqlite ? "INTEGER" : "BIGINT";
    case Sql::ColumnType::Real:
        return sqlite ? "REAL" : "NUMERIC";
    case Sql::ColumnType::Text:
    case Sql::ColumnType::DateTime:
        break;
    }
    return sqlite ? "TEXT" : "TEXT COLLATE \"C\"";
}

QByteArray Quoted(const std::string &text)
{
    QByteArray quoted = QByteArray::fromStdString(text);
    quoted.replace('\'', "''");
    return '\'' + quoted + '\'';
}

QByteArray ColumnNames(const Sql::Table &table, const Sql::ColumnList &positions)
{
    QByteArray names;
    for (const int position : positions) {
        if (!names.isEmpty())
            names += ", ";
        names += table.columns[static_cast<std::size_t>(position)].name;
    }
    return names;
}

QByteArray CreateTable(const Sql::Table &table, Dialect dialect)
{
    QByteArray sql = "CREATE TABLE " + QByteArray::fromStdString(table.name) + " (\n";
    for (const Sql::Column &column : table.columns) {
        sql += "  " + QByteArray::fromStdString(column.name) + ' ' + TypeName(column, dialect);
        if (column.notNull)
            sql += " NOT NULL";
        if (!column.defaultValue.empty())
            sql += " DEFAULT " + Quoted(column.defaultValue);
        // The query language knows no empty text: what is empty is NULL.
        if (column.type == Sql::ColumnType::Text)
            sql += " CHECK (" + QByteArray::fromStdString(column.name) + " <> '')";
        sql += ",\n";
    }
    return sql + "  PRIMARY KEY (" + ColumnNames(table, table.primaryKey) + "))";
}

/// An index of a table and what makes it.
struct Index
{
    QByteArray name;
    QByteArray sql;
};

QList<Index> IndexesOf(const Sql::Table &table)
{
    QList<Index> indexes;
    const auto add = [&](const Sql::ColumnList &columns, const char *kind) {
        const QByteArray tableName = QByteArray::fromStdString(table.name);
        const QByteArray name = "IX_" + tableName + '_' + QByteArray::number(indexes.size() + 1);
        indexes.append({name, QByteArray("CREATE ") + kind + "INDEX " + name + " ON " + tableName +
                                  " (" + ColumnNames(table, columns) + ')'});
    };
    for (const auto &columns : table.uniqueIndexes)
        add(columns, "UNIQUE ");
    for (const auto &columns : table.indexes)
        add(columns, "");
    return indexes;
}

} // namespace

const Sql::Catalog &SchemaCatalog()
{
    static const Sql::Catalog catalog = [] {
        InitSchemaResource();
        return Sql::Catalog::FromCsv(ReadResource(u":/schema/columns.csv"_s),
                                     ReadResource(u":/schema/indexes.csv"_s));
    }();
    return catalog;
}

void CreateSchema(Connection &connection)
{
    Transaction transaction(connection);
    for (const Sql::Table &table : SchemaCatalog().Tables())
        connection.Execute(CreateTable(table, connection.CurrentDialect()));
    CreateIndexes(connection);
    transaction.Commit();
}

void DropIndexes(Connection &connection)
{
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        for (const Index &index : IndexesOf(table))
            connection.Execute("DROP INDEX IF EXISTS " + index.name);
    }
}

void CreateIndexes(Connection &connection)
{
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        for (const Index &index : IndexesOf(table))
            connection.Execute(index.sql);
    }
}

void UpdateStatistics(Connection &connection)
{
    connection.Execute("ANALYZE");
}

bool HasSchema(Connection &connection)
{
    const QByteArrayView sql = connection.CurrentDialect() == Dialect::Sqlite
                                   ? "SELECT 1 FROM sqlite_master WHERE name = 'USR_USER'"
                                   : "SELECT 1 FROM information_schema.tables"
                                     " WHERE table_name = 'usr_user'";
    return connection.Exists(sql);
}

} // namespace Qel::Store
