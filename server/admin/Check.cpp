#include "admin/Check.h"

#include "admin/CheckPostgres.h"
#include "admin/FindingList.h"
#include "admin/Integrity.h"
#include "admin/NextKeys.h"
#include "admin/StoredSchema.h"
#include "store/LargestKey.h"
#include "store/Migrations.h"
#include "store/SearchIndex.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

QString NameOf(const Sql::Column &column)
{
    return QString::fromStdString(column.name);
}

void CheckColumns(Store::Connection &connection, const Sql::Table &table, FindingList &findings)
{
    const QString name = QString::fromStdString(table.name);
    const QList<StoredColumn> stored = StoredColumns(connection, name);
    if (stored.isEmpty()) {
        findings.Add("schema.table", name, u"缺少这个表"_s);
        return;
    }
    for (const Sql::Column &column : table.columns) {
        const QString place = name + u'.' + NameOf(column);
        const auto found = std::find_if(stored.begin(), stored.end(), [&](const StoredColumn &one) {
            return one.name == NameOf(column);
        });
        if (found == stored.end()) {
            findings.Add("schema.column", place, u"缺少这一列"_s);
            continue;
        }
        const QString type =
            QString::fromLatin1(Store::TypeName(column, connection.CurrentDialect()));
        if (found->type != type)
            findings.Add("schema.type", place, u"类型是 %1，应为 %2"_s.arg(found->type, type));
        if (found->notNull != column.notNull)
            findings.Add("schema.type", place,
                         column.notNull ? u"应为 NOT NULL"_s : u"不应为 NOT NULL"_s);
    }
}

void CheckIndexes(Store::Connection &connection, const Sql::Table &table, FindingList &findings)
{
    const QString name = QString::fromStdString(table.name);
    const QString key = KeyColumns(name).join(u", "_s);
    if (StoredKey(connection, name) != key)
        findings.Add("schema.index", name, u"主键应为 %1"_s.arg(key));
    for (const Store::Index &index : Store::IndexesOf(table)) {
        const QString place = QString::fromLatin1(index.name);
        const QString columns =
            QString::fromLatin1(index.columns) + (index.unique ? u" UNIQUE"_s : QString());
        const auto stored = StoredIndex(connection, name, place);
        if (!stored)
            findings.Add("schema.index", place, u"缺少这个索引（%1：%2）"_s.arg(name, columns));
        else if (*stored != columns)
            findings.Add("schema.index", place, u"索引的列是 %1，应为 %2"_s.arg(*stored, columns));
    }
}

/// What belongs to the search index of the table; its content is looked at with the rows.
void CheckSearchObjects(Store::Connection &connection, const Sql::Table &table,
                        FindingList &findings)
{
    for (const Store::SearchObject &object :
         Store::SearchObjectsOf(table, connection.CurrentDialect())) {
        const QString name = QString::fromLatin1(object.name);
        const auto stored = StoredSearchObject(connection, name);
        if (!stored)
            findings.Add("schema.search", name,
                         u"检索索引缺少这一部分，请执行 qel-server reindex"_s);
        else if (*stored != QString::fromLatin1(object.form))
            findings.Add("schema.search", name,
                         u"检索索引的这一部分被改动过，请执行 qel-server reindex"_s);
    }
}

void CheckSearchIndex(Store::Connection &connection, const Sql::Table &table, FindingList &findings)
{
    QString reason;
    try {
        if (Store::IsSearchIndexInStep(connection, table))
            return;
    } catch (const Store::EStoreError &error) {
        reason = u"（%1）"_s.arg(error.Reason());
    }
    findings.Add("data.search", QString::fromStdString(table.name),
                 u"检索索引与表中的行不一致%1，请执行 qel-server reindex"_s.arg(reason));
}

/// Texts that are empty and values that are missing where the tables would refuse them, if they
/// are as they should be.
void CheckValues(Store::Connection &connection, const Sql::Table &table, FindingList &findings)
{
    const QString name = QString::fromStdString(table.name);
    QStringList counts;
    for (const Sql::Column &column : table.columns) {
        const QString of = NameOf(column);
        counts += u"SUM(CASE WHEN %1 IS NULL THEN 1 ELSE 0 END)"_s.arg(of);
        counts += column.type == Sql::ColumnType::Text
                      ? u"SUM(CASE WHEN %1 = '' THEN 1 ELSE 0 END)"_s.arg(of)
                      : u"0"_s;
    }
    const auto row =
        connection.QueryRow(u"SELECT %1 FROM %2"_s.arg(counts.join(u", "_s), name).toUtf8());
    for (std::size_t index = 0; index < table.columns.size(); ++index) {
        const Sql::Column &column = table.columns[index];
        const QString place = name + u'.' + NameOf(column);
        const auto at = static_cast<qsizetype>(index) * 2;
        if (const qint64 nulls = row->at(at).toLongLong(); column.notNull && nulls > 0)
            findings.Add("data.null", place, u"%1 行没有值"_s.arg(nulls));
        if (const qint64 empty = row->at(at + 1).toLongLong(); empty > 0)
            findings.Add("data.empty", place, u"%1 行是空文本，应为 NULL"_s.arg(empty));
    }
}

void CheckSequences(Store::Connection &connection, FindingList &findings)
{
    const QMap<QString, qint64> nextKeys = NextKeys(connection);
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        const QString name = QString::fromStdString(table.name);
        if (!nextKeys.contains(name) || table.primaryKey.size() != 1)
            continue;
        const qint64 next = nextKeys[name];
        const qint64 largest = Store::LargestKey(connection, name, KeyColumns(name).first());
        if (next <= largest)
            findings.Add("data.sequence", name,
                         u"下一个主键 %1 不大于最大的主键 %2"_s.arg(next).arg(largest));
    }
}

/// Whether the connection for queries can change anything: it must not, whatever text it gets.
void CheckReader(Store::Database &database, FindingList &findings)
{
    const auto reader = database.OpenReader();
    try {
        reader->Execute("UPDATE USR_USER SET USER_NAME = USER_NAME WHERE USER_ID = '-'");
    } catch (const Store::EStoreError &) {
        return;
    }
    findings.Add("role.writes", u"USR_USER"_s, u"查询所用的连接能修改数据"_s);
}

void CheckFile(Store::Connection &connection, FindingList &findings)
{
    const auto statement = connection.Prepare("PRAGMA integrity_check");
    while (statement->Step()) {
        const QString line = statement->ColumnText(0);
        if (line != "ok"_L1)
            findings.Add("file.damaged", u"-"_s, line);
    }
}

/// All of it of one state.
void CheckRows(Store::Connection &connection, FindingList &findings)
{
    const Store::Snapshot snapshot(connection);
    for (const Sql::Table &table : Store::SchemaCatalog().Tables())
        CheckValues(connection, table, findings);
    if (!findings.HasAny({"schema.search"}))
        for (const Sql::Table &table : Store::SchemaCatalog().Tables())
            CheckSearchIndex(connection, table, findings);
    CheckSequences(connection, findings);
    FindBadRows(connection, [&](const BadRow &row) {
        findings.Add(row.code.toLatin1(), row.table + u'.' + row.column,
                     row.key.join(u'/') + u"："_s + row.text);
        return true;
    });
}

} // namespace

QList<CheckFinding> CheckDatabase(Store::Database &database, int limit)
{
    FindingList findings(limit);
    const auto connection = database.OpenWriter(); // the owner sees everything
    const bool sqlite = connection->CurrentDialect() == Store::Dialect::Sqlite;
    const int version = Store::SchemaVersionOf(*connection);
    if (version != Store::SchemaVersion) {
        findings.Add("schema.version", u"SRV_SCHEMA"_s,
                     version == 0 ? u"数据库中还没有表"_s
                                  : u"数据库的表是版本 %1，本程序需要版本 %2"_s.arg(version).arg(
                                        Store::SchemaVersion));
        if (!sqlite) // perhaps the reason why there are no tables
            CheckPostgresSettings(*connection, findings);
        return findings.Take();
    }
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        CheckColumns(*connection, table, findings);
        CheckIndexes(*connection, table, findings);
        CheckSearchObjects(*connection, table, findings);
    }
    if (sqlite) {
        CheckFile(*connection, findings);
    } else {
        CheckPostgresSettings(*connection, findings);
        CheckPostgresSchema(*connection, findings);
    }
    if (findings.HasAny({"schema.table", "schema.column"}))
        return findings.Take(); // the rows cannot be read as they should
    if (!findings.HasAny({"role.missing"}))
        CheckReader(database, findings);
    try {
        CheckRows(*connection, findings);
    } catch (const Store::EStoreError &error) {
        if (!findings.HasAny({"file.damaged"}))
            throw;
        findings.Add("file.damaged", u"-"_s, error.Reason());
    }
    return findings.Take();
}

} // namespace Qel::Admin
