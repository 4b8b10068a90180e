#include "store/Sqlite.h"

#include "sql/Functions.h"
#include "sql/SqliteFunctions.h"
#include "store/PlainNumber.h"
#include "store/SqliteMemory.h"

#include <QHash>
#include <QScopedValueRollback>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

constexpr auto LockPatience = std::chrono::seconds(10);
constexpr auto LockPause = std::chrono::milliseconds(2);
/// Between two looks at the clock: about 20 microseconds of work for one reading of 25 ns.
constexpr int OperationsPerLook = 1'000;
/// Bytes of a text, or of a row, that a client's statement may come by on its way.
constexpr int LongestValue = 1 << 20;

struct CloseSqlite
{
    void operator()(sqlite3 *handle) const { sqlite3_close_v2(handle); }
};
struct FinalizeSqlite
{
    void operator()(sqlite3_stmt *handle) const { sqlite3_finalize(handle); }
};

/// How messages begin about a statement beyond what SQLite was built for: it has no code for them.
constexpr std::array<std::string_view, 8> BuiltInLimits = {
    "parser stack overflow", "Expression tree is too large",
    "too many columns in",   "too many terms in",
    "too many arguments on", "at most 64 tables in",
    "too many FROM clause",  "LIKE or GLOB pattern too complex",
};

bool IsBuiltInLimit(std::string_view message)
{
    return std::any_of(BuiltInLimits.begin(), BuiltInLimits.end(),
                       [&](std::string_view begin) { return message.starts_with(begin); });
}

[[noreturn]] void Fail(sqlite3 *handle, int result, QByteArrayView sql)
{
    using Kind = EStoreError::Kind;
    const char *message = handle ? sqlite3_errmsg(handle) : sqlite3_errstr(result);
    Kind kind = IsBuiltInLimit(message) ? Kind::TooComplex : Kind::Failure;
    switch (result & 0xff) {
    case SQLITE_INTERRUPT:
        kind = Kind::Stopped;
        break;
    case SQLITE_CONSTRAINT:
        kind = Kind::Constraint;
        break;
    case SQLITE_BUSY: // another process kept the file locked
        kind = Kind::Conflict;
        break;
    case SQLITE_NOMEM: // what SqliteMemory refuses
    case SQLITE_TOOBIG:
        kind = Kind::TooMuch;
        break;
    case SQLITE_MISMATCH: // given by the QEL_ functions
        kind = Kind::BadValue;
        break;
    default:
        break;
    }
    constexpr qsizetype shownText = 2'000;
    const QString reason = QString::fromUtf8(message);
    throw EStoreError(kind,
                      u"数据库错误 %1：%2；语句：%3"_s.arg(result).arg(
                          reason, QString::fromUtf8(sql.first(qMin(sql.size(), shownText)))),
                      reason);
}

/// SQLite's statistics of its memory, which nobody reads, cost a lock around every allocation, and
/// a scan that calls UPPER for each row allocates all the time. Has an effect only before the
/// library is used for the first time.
void ConfigureSqlite()
{
    [[maybe_unused]] static const int configured = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    SqliteMemory::Install();
}

class SqliteStatement : public Statement
{
public:
    /// `memoryLimit` in bytes; 0: none.
    SqliteStatement(sqlite3 *database, sqlite3_stmt *handle, qint64 memoryLimit)
        : database_(database)
        , handle_(handle)
        , memoryLimit_(memoryLimit)
    {
    }

    void Bind(int parameter, QByteArrayView utf8) override
    {
        if (utf8.isEmpty())
            return BindNull(parameter);
        Check(sqlite3_bind_text64(handle_.get(), parameter, utf8.data(),
                                  static_cast<sqlite3_uint64>(utf8.size()), SQLITE_TRANSIENT,
                                  SQLITE_UTF8));
    }

    void BindNull(int parameter) override { Check(sqlite3_bind_null(handle_.get(), parameter)); }

    void BindInt(int parameter, qint64 value) override
    {
        Check(sqlite3_bind_int64(handle_.get(), parameter, value));
    }

    bool Step() override
    {
        const SqliteMemory::Meter meter(memoryUsed_, memoryLimit_);
        const int result = sqlite3_step(handle_.get());
        if (result == SQLITE_ROW)
            return true;
        if (result == SQLITE_DONE)
            return false;
        Check(result);
        return false;
    }

    void Reset() override
    {
        sqlite3_reset(handle_.get());
        memoryUsed_ = 0;
    }

    int ColumnCount() const override { return sqlite3_column_count(handle_.get()); }

    QString ColumnName(int column) const override
    {
        return QString::fromUtf8(sqlite3_column_name(handle_.get(), column));
    }

    bool IsNull(int column) const override
    {
        return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
    }

    QByteArrayView ColumnBytes(int column) override
    {
        if (sqlite3_column_type(handle_.get(), column) == SQLITE_FLOAT) {
            QByteArray &number = numbers_[column];
            number = PlainNumber(sqlite3_column_double(handle_.get(), column));
            return number;
        }
        const auto *text = sqlite3_column_text(handle_.get(), column);
        return {reinterpret_cast<const char *>(text), sqlite3_column_bytes(handle_.get(), column)};
    }

    qint64 ColumnInt(int column) override { return sqlite3_column_int64(handle_.get(), column); }

private:
    void Check(int result)
    {
        if (result != SQLITE_OK)
            Fail(database_, result, sqlite3_sql(handle_.get()));
    }

    sqlite3 *database_;
    std::unique_ptr<sqlite3_stmt, FinalizeSqlite> handle_;
    qint64 memoryLimit_;
    qint64 memoryUsed_ = 0;          ///< since the last Reset
    QHash<int, QByteArray> numbers_; ///< texts of the current row's fractional numbers
};

class SqliteConnection : public Connection
{
public:
    SqliteConnection(const QByteArray &path, bool writes)
    {
        sqlite3 *opened = nullptr;
        const int mode = writes ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
        const int result = sqlite3_open_v2(
            path.constData(), &opened, mode | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
        handle_.reset(opened);
        if (result != SQLITE_OK)
            Fail(opened, result, path);
        sqlite3_busy_handler(opened, &SqliteConnection::WaitForLock, this);
        sqlite3_progress_handler(opened, OperationsPerLook, &SqliteConnection::ShouldStop, this);
        sqlite3_set_authorizer(opened, &SqliteConnection::Authorize, this);
        sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        Sql::PrepareSqliteConnection(opened);
        if (!writes)
            LimitSteps(opened);
        Execute(writes ? "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                         "PRAGMA foreign_keys = ON;"
                         // REPLACE then fires the triggers of what it deletes, too
                         "PRAGMA recursive_triggers = ON"
                       : "PRAGMA query_only = ON; PRAGMA mmap_size = 268435456;"
                         "PRAGMA cache_size = -32768; PRAGMA temp_store = MEMORY");
    }

    ~SqliteConnection() override { ForgetPrepared(); }
    Q_DISABLE_COPY_MOVE(SqliteConnection)

    Dialect CurrentDialect() const override { return Dialect::Sqlite; }

    void Execute(QByteArrayView sql) override
    {
        const QByteArray text = sql.toByteArray(); // sqlite3_exec wants a terminating zero
        const int result = sqlite3_exec(handle_.get(), text.constData(), nullptr, nullptr, nullptr);
        if (result != SQLITE_OK)
            Fail(handle_.get(), result, sql);
    }

    std::unique_ptr<Statement> Prepare(QByteArrayView sql) override { return Prepare(sql, 0); }

    std::unique_ptr<Statement> PrepareQuery(QByteArrayView sql) override
    {
        try {
            return PrepareClientText(sql);
        } catch (const EStoreError &error) {
            if (error.WhichKind() != EStoreError::Kind::Failure ||
                !sql.contains(QByteArrayView("QEL_GRAMS_")))
                throw;
        }
        // A session that meets a gram table for the first time, or for the first time since the
        // tables were changed, declares it to itself, which a client's statement may not do.
        Prepare(sql, memoryLimit_);
        return PrepareClientText(sql);
    }

    qint64 ChangedRows() const override { return sqlite3_changes64(handle_.get()); }

    bool IsAtRest() const override { return sqlite3_get_autocommit(handle_.get()) != 0; }

    void StopWhen(std::function<bool()> condition) override { stop_ = std::move(condition); }
    void LimitMemory(qint64 bytes) override { memoryLimit_ = bytes; }

    void Begin(Scope scope) override
    {
        if (IsAtRest()) {
            parts_ = 0; // the database may have rolled back by itself
            Run(scope == Scope::Write ? "BEGIN IMMEDIATE" : "BEGIN");
        } else {
            Run("SAVEPOINT shared");
            ++parts_;
        }
    }

    void Commit() override
    {
        Run(parts_ > 0 ? "RELEASE shared" : "COMMIT");
        parts_ -= parts_ > 0 ? 1 : 0;
    }

    void Rollback() noexcept override
    {
        // It fails where the database has already rolled back by itself (full disk).
        sqlite3_exec(handle_.get(), parts_ > 0 ? "ROLLBACK TO shared; RELEASE shared" : "ROLLBACK",
                     nullptr, nullptr, nullptr);
        parts_ -= parts_ > 0 ? 1 : 0;
    }

private:
    std::unique_ptr<Statement> Prepare(QByteArrayView sql, qint64 memoryLimit)
    {
        sqlite3_stmt *statement = nullptr;
        const char *rest = nullptr;
        const int result =
            sqlite3_prepare_v3(handle_.get(), sql.data(), static_cast<int>(sql.size()),
                               SQLITE_PREPARE_PERSISTENT, &statement, &rest);
        if (result != SQLITE_OK)
            Fail(handle_.get(), result, sql);
        if (rest != sql.data() + sql.size()) { // SQLite reads the first of several and no more
            sqlite3_finalize(statement);
            throw EStoreError(EStoreError::Kind::Failure, u"只接受一条语句。"_s);
        }
        return std::make_unique<SqliteStatement>(handle_.get(), statement, memoryLimit);
    }

    std::unique_ptr<Statement> PrepareClientText(QByteArrayView sql)
    {
        const QScopedValueRollback<bool> guard(clientText_, true);
        return Prepare(sql, memoryLimit_);
    }

    /// Nobody looks at the clock inside of one function or comparison: no value may be so long
    /// that it takes seconds.
    static void LimitSteps(sqlite3 *opened)
    {
        sqlite3_limit(opened, SQLITE_LIMIT_LENGTH, LongestValue);
        sqlite3_limit(opened, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, Sql::MaxPatternBytes);
    }

    static int ShouldStop(void *self)
    {
        const auto &stop = static_cast<SqliteConnection *>(self)->stop_;
        return stop && stop() ? 1 : 0;
    }

    /// Asked while another process has the file locked; `times` counts from 0 for each wait.
    static int WaitForLock(void *self, int times)
    {
        const auto &stop = static_cast<SqliteConnection *>(self)->stop_;
        if (times * LockPause > LockPatience || (stop && stop()))
            return 0;
        std::this_thread::sleep_for(LockPause);
        return 1;
    }

    /// Asked while a statement is prepared, once for everything that it would touch.
    static int Authorize(void *self, int action, const char *first, const char *second,
                         const char *, const char *)
    {
        if (!static_cast<SqliteConnection *>(self)->clientText_)
            return SQLITE_OK;
        switch (action) {
        case SQLITE_SELECT:
            return SQLITE_OK;
        case SQLITE_FUNCTION:
            return Sql::IsPrintedFunction(second ? second : "", Dialect::Sqlite) ? SQLITE_OK
                                                                                 : SQLITE_DENY;
        case SQLITE_READ: {
            const std::string_view table = first ? first : "";
            return table.starts_with("SRV_") || table.starts_with("sqlite_") ? SQLITE_DENY
                                                                             : SQLITE_OK;
        }
        default:
            return SQLITE_DENY;
        }
    }

    std::unique_ptr<sqlite3, CloseSqlite> handle_;
    std::function<bool()> stop_;
    bool clientText_ = false;
    int parts_ = 0; ///< begun within the transaction and not ended
    qint64 memoryLimit_ = 0;
};

} // namespace

SqliteDatabase::SqliteDatabase(const QString &path)
    : path_(path.toUtf8())
{
    ConfigureSqlite();
}

std::unique_ptr<Connection> SqliteDatabase::OpenWriter()
{
    return std::make_unique<SqliteConnection>(path_, true);
}

std::unique_ptr<Connection> SqliteDatabase::OpenReader()
{
    return std::make_unique<SqliteConnection>(path_, false);
}

} // namespace Qel::Store
