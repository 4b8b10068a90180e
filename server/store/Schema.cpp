#include "store/Schema.h"

#include "store/Clock.h"
#include "store/Postgres.h"
#include "store/SearchIndex.h"

#include <QFile>
#include <QRegularExpression>

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

QByteArray TableText(const Sql::Table &table, Dialect dialect)
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

/// The role belongs to all databases of a PostgreSQL server. Where the owner of this one may not
/// make it an administrator has to.
void MakeReaderRole(Connection &connection)
{
    const QByteArray role = PostgresReaderRole;
    try {
        if (!connection.Exists("SELECT 1 FROM pg_roles WHERE rolname = '" + role + "'"))
            connection.Execute("CREATE ROLE " + role + " NOLOGIN");
        if (!connection.Exists("SELECT 1 WHERE pg_has_role('" + role + "', 'MEMBER')"))
            connection.Execute("GRANT " + role + " TO CURRENT_USER");
    } catch (const EStoreError &error) {
        if (error.WhichKind() != EStoreError::Kind::Failure)
            throw;
        throw EQelError(u"数据库中缺少只读角色，请管理员执行：CREATE ROLE %1 NOLOGIN; GRANT %1 TO "
                        "数据库的所有者;（%2）"_s.arg(QString::fromLatin1(role), error.Reason()));
    }
}

/// A collation that maps the case of every character to one other. Which of them there are depends
/// on the system that PostgreSQL runs on; the last is there always and makes ß two characters.
QByteArray CaseCollation(Connection &connection)
{
    for (const char *name : {"pg_c_utf8", "C.utf8", "C.UTF-8", "en_US.utf8"}) {
        if (connection.Exists("SELECT 1 FROM pg_collation WHERE collname = ?1",
                              {QString::fromLatin1(name)}))
            return QByteArray(1, '"') + name + '"';
    }
    return "\"und-x-icu\"";
}

/// What SRV_NEW_KEY counts with, for every table that such a key suits.
void CreateSequences(Connection &connection)
{
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        const bool hasOneKey = table.primaryKey.size() == 1 &&
                               table.columns[static_cast<std::size_t>(table.primaryKey[0])].type ==
                                   Sql::ColumnType::Text;
        if (hasOneKey && !table.name.starts_with("SRV_"))
            connection.Execute("CREATE SEQUENCE SRV_KEY_" + QByteArray::fromStdString(table.name) +
                               " MINVALUE -1000000 START -1000000");
    }
}

void GrantReading(Connection &connection)
{
    const QByteArray role = PostgresReaderRole;
    for (const Sql::Table &table : SchemaCatalog().Tables()) {
        QByteArrayList columns;
        for (const Sql::Column &column : table.columns) {
            if (column.readable)
                columns += QByteArray::fromStdString(column.name);
        }
        const bool whole = columns.size() == std::ssize(table.columns);
        if (!columns.isEmpty())
            connection.Execute("GRANT SELECT" +
                               (whole ? QByteArray() : " (" + columns.join(", ") + ')') + " ON " +
                               QByteArray::fromStdString(table.name) + " TO " + role);
    }
    // No row of a site's: so that readers can tell whether the tables are those they know.
    connection.Execute("GRANT SELECT ON SRV_SCHEMA TO " + role);
}

} // namespace

/// A date is text 'YYYY-MM-DD HH24:MI:SS', which sorts as it should.
QByteArray TypeName(const Sql::Column &column, Dialect dialect)
{
    const bool sqlite = dialect == Dialect::Sqlite;
    switch (column.type) {
    case Sql::ColumnType::Integer:
        return sqlite ? "INTEGER" : "BIGINT";
    case Sql::ColumnType::Real:
        return sqlite ? "REAL" : "DOUBLE PRECISION"; // the same numbers in both
    case Sql::ColumnType::Text:
    case Sql::ColumnType::DateTime:
        break;
    }
    return sqlite ? "TEXT" : "TEXT COLLATE \"C\"";
}

const Sql::Catalog &SchemaCatalog()
{
    static const Sql::Catalog catalog = [] {
        InitSchemaResource();
        return Sql::Catalog::FromCsv(ReadResource(u":/schema/columns.csv"_s),
                                     ReadResource(u":/schema/indexes.csv"_s),
                                     ReadResource(u":/schema/searched.csv"_s));
    }();
    return catalog;
}

QList<Index> IndexesOf(const Sql::Table &table)
{
    QList<Index> indexes;
    const auto add = [&](const Sql::ColumnList &columns, bool unique) {
        const QByteArray tableName = QByteArray::fromStdString(table.name);
        const QByteArray name = "IX_" + tableName + '_' + QByteArray::number(indexes.size() + 1);
        const QByteArray names = ColumnNames(table, columns);
        indexes.append({name, names, unique,
                        QByteArray("CREATE ") + (unique ? "UNIQUE " : "") + "INDEX " + name +
                            " ON " + tableName + " (" + names + ')'});
    };
    for (const auto &columns : table.uniqueIndexes)
        add(columns, true);
    for (const auto &columns : table.indexes)
        add(columns, false);
    return indexes;
}

QStringList SchemaFunctions()
{
    static const QRegularExpression made(u"^CREATE FUNCTION (\\w+)"_s,
                                         QRegularExpression::MultilineOption);
    SchemaCatalog(); // brings the resource in
    const QString text = QString::fromUtf8(ReadResource(u":/schema/postgresql.sql"_s));
    QStringList names;
    for (auto match = made.globalMatch(text); match.hasNext();)
        names += match.next().captured(1).toUpper();
    return names;
}

void CreateSchema(Connection &connection)
{
    const bool postgres = connection.CurrentDialect() == Dialect::PostgreSql;
    const SchemaLock lock(connection);
    Transaction transaction(connection);
    if (HasSchema(connection))
        return; // another server was quicker
    if (postgres)
        MakeReaderRole(connection);
    for (const Sql::Table &table : SchemaCatalog().Tables())
        connection.Execute(TableText(table, connection.CurrentDialect()));
    CreateFunctions(connection);
    if (postgres) {
        CreateSequences(connection);
        GrantReading(connection);
    }
    CreateIndexes(connection);
    connection.Run("INSERT INTO SRV_SCHEMA (VERSION, CREATED) VALUES (?1, ?2)",
                   {qint64(SchemaVersion), Now()});
    transaction.Commit();
}

void CreateTable(Connection &connection, const char *name)
{
    connection.Execute(TableText(*SchemaCatalog().Find(name), connection.CurrentDialect()));
}

void CreateFunctions(Connection &connection)
{
    if (connection.CurrentDialect() == Dialect::Sqlite)
        return;
    const QString schema = connection.QueryText("SELECT quote_ident(current_schema())").value();
    connection.Execute(ReadResource(u":/schema/postgresql.sql"_s)
                           .replace("\nCREATE FUNCTION ", "\nCREATE OR REPLACE FUNCTION ")
                           .replace("@CASE@", CaseCollation(connection))
                           .replace("@SCHEMA@", schema.toUtf8()));
}

SchemaLock::SchemaLock(Connection &connection)
    : connection_(connection)
{
    if (connection_.CurrentDialect() == Dialect::PostgreSql)
        connection_.Run("SELECT pg_advisory_lock(hashtext('qel schema'))");
}

SchemaLock::~SchemaLock()
{
    if (connection_.CurrentDialect() != Dialect::PostgreSql)
        return;
    try {
        connection_.Run("SELECT pg_advisory_unlock(hashtext('qel schema'))");
    } catch (const EStoreError &) {
        // it went with its session
    }
}

void DropIndexes(Connection &connection)
{
    DropSearchIndexes(connection);
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
    CreateSearchIndexes(connection);
}

bool HasSchema(Connection &connection)
{
    return HasTable(connection, u"USR_USER"_s);
}

bool HasTable(Connection &connection, const QString &name)
{
    return connection.Exists(connection.CurrentDialect() == Dialect::Sqlite
                                 ? "SELECT 1 FROM sqlite_master WHERE name = ?1"
                                 : "SELECT 1 WHERE to_regclass(lower(?1::text)) IS NOT NULL",
                             {name});
}

} // namespace Qel::Store
