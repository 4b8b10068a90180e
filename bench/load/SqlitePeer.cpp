#include "Peer.h"

#include "sql/SqliteFunctions.h"

#include <sqlite3.h>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

namespace {

class SqlitePeer : public Peer
{
public:
    explicit SqlitePeer(const QString &path)
    {
        if (sqlite3_open_v2(path.toUtf8().constData(), &database_,
                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK)
            Fail();
        sqlite3_busy_timeout(database_, 60'000);
        Sql::PrepareSqliteConnection(database_);
        Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;"
                "PRAGMA mmap_size = 268435456; PRAGMA cache_size = -32768;"
                "PRAGMA temp_store = MEMORY");
    }
    ~SqlitePeer() override
    {
        for (sqlite3_stmt *statement : {page_, count_, rule_, log_, key_})
            sqlite3_finalize(statement);
        sqlite3_close(database_);
    }
    Q_DISABLE_COPY_MOVE(SqlitePeer)

    void Prepare(const QByteArray &page, const QByteArray &count) override
    {
        Prepare(page_, page);
        Prepare(count_, count);
    }

    void Read() override
    {
        Read(page_);
        Read(count_);
    }

    void Store(const StoredRule &rule) override
    {
        if (!rule_) {
            Prepare(rule_, StoreRule);
            Prepare(log_, "INSERT INTO SYS_UPDATE_LOG (LOG_ID, TABLE_NAME, KEY_ID1, KEY_ID2,"
                          " OPTION_TYPE, USER_ID, USER_NAME, OPTION_DATE, LAST_OPERATE) VALUES"
                          " ($1, 'UNI_ORG_RULE', $2, 'ORG_HPTX', '2', '600001', '测量员',"
                          " '2026-11-21 08:00:00', '1')");
            Prepare(key_, StoreKey);
        }
        Execute("BEGIN IMMEDIATE");
        Run(rule_, {rule.orgId, rule.value});
        Run(log_, {rule.logId, rule.orgId});
        Run(key_, {rule.key, rule.bodyHash, rule.answer});
        Execute("COMMIT");
    }

private:
    [[noreturn]] void Fail() { qFatal("%s", sqlite3_errmsg(database_)); }

    void Execute(const char *sql)
    {
        if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            Fail();
    }

    void Prepare(sqlite3_stmt *&statement, const QByteArray &sql)
    {
        sqlite3_finalize(statement);
        if (sqlite3_prepare_v3(database_, sql.constData(), -1, SQLITE_PREPARE_PERSISTENT,
                               &statement, nullptr) != SQLITE_OK)
            Fail();
    }

    void Read(sqlite3_stmt *statement)
    {
        int step = sqlite3_step(statement);
        for (; step == SQLITE_ROW; step = sqlite3_step(statement)) {
            for (int column = 0; column < sqlite3_column_count(statement); ++column)
                sqlite3_column_text(statement, column);
        }
        if (step != SQLITE_DONE)
            Fail();
        sqlite3_reset(statement);
    }

    void Run(sqlite3_stmt *statement, std::initializer_list<QByteArray> values)
    {
        int parameter = 0;
        for (const QByteArray &value : values)
            sqlite3_bind_text(statement, ++parameter, value.constData(), int(value.size()),
                              SQLITE_STATIC);
        if (sqlite3_step(statement) != SQLITE_DONE)
            Fail();
        sqlite3_reset(statement);
    }

    sqlite3 *database_ = nullptr;
    sqlite3_stmt *page_ = nullptr;
    sqlite3_stmt *count_ = nullptr;
    sqlite3_stmt *rule_ = nullptr;
    sqlite3_stmt *log_ = nullptr;
    sqlite3_stmt *key_ = nullptr;
};

} // namespace

std::unique_ptr<Peer> OpenPeer(const QString &url)
{
    const QString sqlite = u"sqlite:"_s;
    return url.startsWith(sqlite) ? OpenSqlitePeer(url.mid(sqlite.size())) : OpenPostgresPeer(url);
}

std::unique_ptr<Peer> OpenSqlitePeer(const QString &path)
{
    return std::make_unique<SqlitePeer>(path);
}

} // namespace Qel::Bench
