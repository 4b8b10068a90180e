#include "store/Migrations.h"

#include "store/Clock.h"
#include "store/Statistics.h"

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

/// From the tables that kept no version, which were on SQLite only: several tokens a user, and the
/// version itself.
void KeepVersionsAndManyTokens(Connection &connection)
{
    connection.Execute("ALTER TABLE SRV_TOKEN RENAME TO SRV_TOKEN_1");
    CreateTable(connection, "SRV_TOKEN");
    connection.Execute("INSERT INTO SRV_TOKEN (USER_CODE, TOKEN_ID, TOKEN_HASH, CREATED)"
                       " SELECT USER_CODE, '0', TOKEN_HASH, CREATED FROM SRV_TOKEN_1");
    connection.Execute("DROP TABLE SRV_TOKEN_1");
    CreateTable(connection, "SRV_SCHEMA");
}

/// Tables as before: the search indexes come with all the others.
void FindPartsOfTexts(Connection &) {}

/// Tables as before: on PostgreSQL grams take the place of trigrams, whose extension goes unless
/// it is a superuser's.
void FindShortParts(Connection &connection)
{
    if (connection.CurrentDialect() == Dialect::Sqlite ||
        !connection.Exists("SELECT 1 FROM pg_extension WHERE extname = 'pg_trgm'"
                           " AND extnamespace = to_regnamespace('qel_search')"))
        return;
    try {
        Savepoint savepoint(connection);
        connection.Execute("DROP EXTENSION pg_trgm; DROP SCHEMA qel_search");
        savepoint.Keep();
    } catch (const EStoreError &error) {
        if (error.WhichKind() != EStoreError::Kind::Failure)
            throw;
    }
}

struct Step
{
    int version; ///< that it leads to
    void (*run)(Connection &connection);
};

constexpr Step Steps[] = {
    {2, KeepVersionsAndManyTokens},
    {3, FindPartsOfTexts},
    {4, FindShortParts},
};

void RefuseNewer(int version)
{
    if (version > SchemaVersion)
        throw EQelError(
            u"数据库的表是版本 %1，比本程序的版本 %2 新。请使用新版本的程序。"_s.arg(version).arg(
                SchemaVersion));
}

[[noreturn]] void RefuseOlder(int version)
{
    throw EQelError(u"数据库的表是版本 %1，本程序需要版本 %2。请先备份（qel-server backup），"
                    "再执行 qel-server migrate。"_s.arg(version)
                        .arg(SchemaVersion));
}

/// One step, unless another program has done it in the meantime; nothing: there is none to do.
std::optional<int> RunNextStep(Connection &connection)
{
    const SchemaLock lock(connection);
    Transaction transaction(connection);
    const int version = SchemaVersionOf(connection);
    RefuseNewer(version);
    for (const Step &step : Steps) {
        if (step.version <= version)
            continue;
        DropIndexes(connection); // those of the version before, by whatever names
        step.run(connection);
        CreateFunctions(connection);
        CreateIndexes(connection);
        connection.Run("INSERT INTO SRV_SCHEMA (VERSION, CREATED) VALUES (?1, ?2)",
                       {qint64(step.version), Now()});
        transaction.Commit();
        return step.version;
    }
    return std::nullopt;
}

} // namespace

int SchemaVersionOf(Connection &connection)
{
    if (!HasSchema(connection))
        return 0;
    if (!HasTable(connection, u"SRV_SCHEMA"_s))
        return 1;
    return connection.QueryText("SELECT MAX(VERSION) FROM SRV_SCHEMA").value_or(u"1"_s).toInt();
}

QList<int> MigrateSchema(Connection &connection)
{
    if (SchemaVersionOf(connection) == 0) {
        CreateSchema(connection);
        return {SchemaVersion};
    }
    QList<int> reached;
    while (const auto version = RunNextStep(connection))
        reached += *version;
    if (!reached.isEmpty())
        UpdateStatistics(connection);
    return reached;
}

void PrepareSchema(Connection &connection, OldTables old)
{
    const int version = SchemaVersionOf(connection);
    RefuseNewer(version);
    if (version == 0 || old == OldTables::Migrate)
        MigrateSchema(connection);
    else if (version < SchemaVersion)
        RefuseOlder(version);
}

void RequireSchema(Connection &connection)
{
    const int version = SchemaVersionOf(connection);
    RefuseNewer(version);
    if (version == 0)
        throw EQelError(u"数据库中还没有表。请先启动一次服务器，或执行 qel-server migrate。"_s);
    if (version < SchemaVersion)
        RefuseOlder(version);
}

void RebuildIndexes(Connection &connection)
{
    RequireSchema(connection);
    {
        const SchemaLock lock(connection);
        Transaction transaction(connection);
        DropIndexes(connection);
        CreateIndexes(connection);
        transaction.Commit();
    }
    UpdateStatistics(connection);
}

} // namespace Qel::Store
