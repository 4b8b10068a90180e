#include "admin/CheckPostgres.h"

#include "store/Postgres.h"
#include "store/Schema.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

void CheckFunctions(Store::Connection &connection, FindingList &findings)
{
    QStringList expected = Store::SchemaFunctions();
    QStringList names = expected;
    names.removeDuplicates();
    for (const QString &name : names) {
        const auto count =
            connection.QueryText("SELECT COUNT(*) FROM pg_proc WHERE proname = lower(?1::text)"
                                 " AND pronamespace = current_schema()::regnamespace",
                                 {name});
        if (count->toLongLong() < expected.count(name))
            findings.Add("schema.function", name, u"缺少这个函数，或其中一种参数"_s);
    }
}

bool Holds(Store::Connection &connection, QByteArrayView sql, const QString &first,
           const QString &second = {})
{
    Store::Values values{first};
    if (!second.isEmpty())
        values.append(second);
    return connection.Exists(sql, values);
}

void CheckRole(Store::Connection &connection, FindingList &findings)
{
    const QString role = QString::fromLatin1(Store::PostgresReaderRole);
    const auto attributes =
        connection.QueryRow("SELECT rolsuper::integer, rolcreaterole::integer,"
                            " rolbypassrls::integer FROM pg_roles WHERE rolname = ?1",
                            {role});
    if (!attributes) {
        findings.Add("role.missing", role, u"没有这个角色"_s);
        return;
    }
    if (attributes->contains(u"1"_s))
        findings.Add("role.writes", role, u"角色有管理权限"_s);
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        const QString name = QString::fromStdString(table.name);
        const auto isReadable = [](const Sql::Column &column) { return column.readable; };
        if (!connection.Exists("SELECT 1 WHERE to_regclass(lower(?1::text)) IS NOT NULL", {name}))
            continue; // told already
        if (Holds(connection,
                  "SELECT 1 WHERE has_table_privilege(?1::text, lower(?2::text),"
                  " 'INSERT, UPDATE, DELETE, TRUNCATE, TRIGGER')"
                  " OR has_any_column_privilege(?1::text, lower(?2::text), 'INSERT, UPDATE')",
                  role, name))
            findings.Add("role.writes", name, u"角色 %1 能修改这个表"_s.arg(role));
        const bool reads =
            Holds(connection,
                  "SELECT 1 WHERE has_any_column_privilege(?1::text, lower(?2::text), 'SELECT')",
                  role, name);
        // Readers tell by the version whether the tables are those they know.
        const bool shouldRead = name == "SRV_SCHEMA"_L1 ||
                                std::any_of(table.columns.begin(), table.columns.end(), isReadable);
        if (reads != shouldRead)
            findings.Add("role.reads", name,
                         shouldRead ? u"角色 %1 不能读取这个表"_s.arg(role)
                                    : u"角色 %1 能读取这个表"_s.arg(role));
    }
}

/// What has an effect beside its result is not for queries; a superuser takes it from them.
void CheckRoleFunctions(Store::Connection &connection, FindingList &findings)
{
    const QString role = QString::fromLatin1(Store::PostgresReaderRole);
    const auto found = connection.QueryRow(
        "SELECT COUNT(*), MIN(proname) FROM pg_proc JOIN pg_roles ON rolname = ?1"
        " WHERE provolatile = 'v' AND prokind IN ('f', 'p')"
        " AND prorettype NOT IN ('trigger'::regtype, 'event_trigger'::regtype)"
        " AND proname <> 'pg_last_wal_replay_lsn'"
        " AND has_schema_privilege(pg_roles.oid, pg_proc.pronamespace, 'USAGE')"
        " AND has_function_privilege(pg_roles.oid, pg_proc.oid, 'EXECUTE')",
        {role});
    if (found && found->first() != "0"_L1)
        findings.Add(
            "role.functions", role,
            u"查询能调用 %1 个有副作用的函数，例如 %2；请以超级用户执行 qel-reader.sql"_s.arg(
                found->first(), found->last()));
}

} // namespace

void CheckPostgresSettings(Store::Connection &connection, FindingList &findings)
{
    const auto setting = [&](const char *name) {
        return connection.QueryText("SELECT current_setting(?1)", {QString::fromLatin1(name)})
            .value_or(QString());
    };
    const QString encoding = setting("server_encoding");
    if (encoding != "UTF8"_L1)
        findings.Add("server.encoding", u"server_encoding"_s,
                     u"数据库的编码是 %1，应为 UTF8"_s.arg(encoding));
    // What else matters each of the server's sessions sets for itself.
    for (const char *name : {"fsync", "full_page_writes"})
        if (const QString value = setting(name); value != "on"_L1)
            findings.Add("server.setting", QString::fromLatin1(name),
                         u"设置是 %1，应为 on"_s.arg(value));
    if (const QString value = setting("synchronous_commit"); value == "off"_L1)
        findings.Add("server.setting", u"synchronous_commit"_s,
                     u"设置是 off：已确认的提交可能丢失"_s);
    // The functions fold case by ICU and sort by "C"; without ICU they cannot be there.
    if (!connection.Exists("SELECT 1 FROM pg_collation WHERE collname = 'und-x-icu'"))
        findings.Add("server.collation", u"und-x-icu"_s, u"数据库没有 ICU 排序规则"_s);
}

void CheckPostgresSchema(Store::Connection &connection, FindingList &findings)
{
    CheckFunctions(connection, findings);
    CheckRole(connection, findings);
    CheckRoleFunctions(connection, findings);
}

} // namespace Qel::Admin
