#include "store/Postgres.h"

#include "store/PlainNumber.h"
#include "store/PostgresSession.h"

#include <QHash>
#include <QScopeGuard>

#include <libpq-fe.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

/// Of the types whose texts are not what the server hands out; the numbers are the system's own,
/// the same in every database.
enum TypeId : Oid { BoolType = 16, Float4Type = 700, Float8Type = 701, NumericType = 1700 };

constexpr std::size_t KeptStatements = 256;
constexpr qsizetype KeptTextBytes = 4 << 10; ///< longer ones hardly come twice
constexpr std::size_t UnneededAtOnce = 32;

/// Short statements on many sessions: neither a compiler nor helpers of their own pay.
constexpr char CommonSetUp[] = "SET standard_conforming_strings = on; SET extra_float_digits = 1;"
                               "SET jit = off; SET max_parallel_workers_per_gather = 0;"
                               "SET client_connection_check_interval = '2s'";

constexpr char CommitCommand[] = "COMMIT";

/// A statement that the server keeps. Told to be dropped when nobody needs it any more.
struct Prepared
{
    Prepared(QByteArray statementName, QByteArray statementText,
             std::shared_ptr<std::vector<QByteArray>> names)
        : name(std::move(statementName))
        , text(std::move(statementText))
        , unneeded(std::move(names))
    {
    }
    ~Prepared() { unneeded->push_back(name); }
    Q_DISABLE_COPY_MOVE(Prepared)

    QByteArray name;
    QByteArray text;
    std::shared_ptr<std::vector<QByteArray>> unneeded; ///< of the session that it is kept in
};

using PreparedPtr = std::shared_ptr<Prepared>;

/// Calls `visit` for every "?1" with the number's place in the text; not in quoted text.
template <typename Visit>
void ForEachParameter(QByteArrayView sql, Visit visit)
{
    char quote = '\0';
    for (qsizetype at = 0; at < sql.size(); ++at) {
        const char c = sql[at];
        if (quote != '\0')
            quote = c == quote ? '\0' : quote; // a doubled one closes and opens again
        else if (c == '\'' || c == '"')
            quote = c;
        else if (c == '?')
            visit(at);
    }
}

/// The largest number of a parameter.
std::size_t ParameterCount(QByteArrayView sql)
{
    std::size_t count = 0;
    ForEachParameter(sql, [&](qsizetype at) {
        std::size_t number = 0;
        while (++at < sql.size() && sql[at] >= '0' && sql[at] <= '9')
            number = number * 10 + static_cast<std::size_t>(sql[at] - '0');
        count = std::max(count, number);
    });
    return count;
}

/// The protocol ends texts with it: the rest would be cut off.
[[noreturn]] void RefuseNul()
{
    throw EStoreError(EStoreError::Kind::BadValue, u"文本含有 NUL 字符。"_s,
                      u"文本含有 NUL 字符"_s);
}

enum class Access { Write, Read };

using OnStop = PostgresSession::OnStop;

/// "1/B374D848"
bool IsLogPosition(QByteArrayView text)
{
    constexpr qsizetype most = 8;
    const qsizetype slash = text.indexOf('/');
    const auto isNumber = [](QByteArrayView digits) {
        return !digits.isEmpty() && digits.size() <= most &&
               std::all_of(digits.begin(), digits.end(),
                           [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); });
    };
    return slash > 0 && isNumber(text.first(slash)) && isNumber(text.sliced(slash + 1));
}

class PostgresStatement;

class PostgresConnection : public Connection
{
public:
    PostgresConnection(const PostgresAddress &address, PostgresCopy copy, Access access,
                       std::chrono::milliseconds time = {})
        : access_(access)
        , hasCopies_(address.NamesSeveralHosts())
        , session_(address, copy, SetUp(access, time))
    {
        Open();
    }

    ~PostgresConnection() override { ForgetPrepared(); }
    Q_DISABLE_COPY_MOVE(PostgresConnection)

    Dialect CurrentDialect() const override { return Dialect::PostgreSql; }
    bool SeesServerTables() const override { return access_ == Access::Write; }

    void Execute(QByteArrayView sql) override
    {
        MakeReady();
        session_.Command(sql.toByteArray(), OnStop::Cancel);
    }

    std::unique_ptr<Statement> Prepare(QByteArrayView sql) override;

    std::unique_ptr<Statement> PrepareQuery(QByteArrayView sql) override
    {
        if (access_ != Access::Read)
            throw EStoreError(EStoreError::Kind::Failure, u"客户端的查询只能在只读连接上执行。"_s);
        // Anybody may put a role off by RESET ROLE, or end a transaction.
        if (!sql.startsWith("SELECT "))
            throw EStoreError(EStoreError::Kind::Failure, u"客户端的查询只能是 SELECT。"_s);
        return Prepare(sql);
    }

    void InsertRows(QByteArrayView table, QByteArrayView columns, const NextRow &next) override;

    qint64 ChangedRows() const override { return session_.ChangedRows(); }

    bool IsAtRest() const override { return !inTransaction_ && !session_.IsBroken(); }

    QByteArray Position() override
    {
        if (!hasCopies_)
            return {};
        // A commit has been flushed when it is acknowledged.
        return QueryText("SELECT pg_current_wal_flush_lsn()::text").value_or(QString()).toLatin1();
    }

    bool Shows(const QByteArray &position) override
    {
        return !IsCopy() || (IsLogPosition(position) &&
                             Exists("SELECT 1 WHERE pg_last_wal_replay_lsn() >= ?1::pg_lsn",
                                    {QString::fromLatin1(position)}));
    }

    bool IsCopy() const override { return hasCopies_ && session_.IsStandby(); }

    void StopWhen(std::function<bool()> condition) override
    {
        session_.StopWhen(std::move(condition));
    }

    void Begin(Scope scope) override
    {
        MakeReady();
        if (scope == Scope::Write) {
            GetPrepared(CommitCommand); // not in the midst of what is sent as one
            Queue("BEGIN ISOLATION LEVEL SERIALIZABLE");
            inTransaction_ = true;
            return;
        }
        const QByteArray sql = "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY";
        try {
            session_.Command(sql, OnStop::GiveUp);
        } catch (const EStoreError &error) {
            if (error.WhichKind() != EStoreError::Kind::Lost)
                throw;
            if (session_.IsToStop())
                throw EStoreError(EStoreError::Kind::Stopped, error.Message());
            Open(); // nothing has been done yet: the same over a new session
            session_.Command(sql, OnStop::GiveUp);
        }
        inTransaction_ = true;
    }

    void Commit() override
    {
        MakeReady();
        session_.ThrowOverlooked(CommitCommand);
        // PostgreSQL answers this one with a quiet ROLLBACK.
        if (session_.IsInFailedTransaction())
            throw EStoreError(EStoreError::Kind::Failure, u"事务中已有语句失败，不能提交。"_s);
        // Of one that failed before its COMMIT the ROLLBACK is still to come.
        const auto settle = qScopeGuard([&] { inTransaction_ = session_.IsInTransaction(); });
        if (!session_.IsInTransaction() && session_.QueuedCount() == 1)
            return session_.DropQueue(); // a BEGIN and nothing else
        Queue(CommitCommand);
        session_.Flush(OnStop::GiveUpLater);
    }

    void Rollback() noexcept override
    {
        try {
            session_.DropQueue();
            if (!session_.IsBroken())
                MakeReady();
            if (session_.IsInTransaction())
                session_.Command("ROLLBACK", OnStop::GiveUp);
        } catch (const EStoreError &) {
            // The session is lost, and the transaction with it.
        }
        inTransaction_ = false;
    }

    // For its statements.

    /// Before anything is sent: the rest of a result that is being read is taken in, and a session
    /// that is gone is opened anew, unless a transaction went with it.
    void MakeReady();
    PreparedPtr GetPrepared(const QByteArray &sql);
    void Flush()
    {
        MakeReady();
        session_.Flush();
    }
    void Start(PostgresStatement &statement, const Prepared &prepared,
               const std::vector<PostgresParameter> &parameters);
    void Queue(const QByteArray &sql) { session_.Queue({GetPrepared(sql)->name, {}, sql}); }
    void Finished(const PostgresStatement &statement)
    {
        if (reading_ == &statement)
            reading_ = nullptr;
    }
    PostgresSession &Session() { return session_; }
    bool IsInTransaction() const { return inTransaction_; }
    bool MayCancel() const { return access_ == Access::Read || !inTransaction_; }

private:
    /// A COMMIT has no such limit: ended while it waits for a copy of the database, it is one. What
    /// reads a whole table in a SERIALIZABLE transaction conflicts with whoever writes into it; the
    /// methods look rows up by keys, and shall do so in small tables too.
    static QByteArray SetUp(Access access, std::chrono::milliseconds time)
    {
        QByteArray setUp = CommonSetUp;
        if (access == Access::Read)
            setUp += "; SET statement_timeout = " +
                     QByteArray::number(static_cast<qint64>(time.count())) +
                     "; SET default_transaction_read_only = on; SET ROLE " + PostgresReaderRole;
        else
            setUp += "; SET enable_seqscan = off";
        return setUp;
    }

    void Open()
    {
        prepared_.Clear();
        unneeded_ = std::make_shared<std::vector<QByteArray>>();
        session_.Open();
    }

    void DropUnneeded();

    Access access_;
    bool hasCopies_;
    PostgresSession session_;
    bool inTransaction_ = false;
    PostgresStatement *reading_ = nullptr; ///< its rows are still arriving
    std::shared_ptr<std::vector<QByteArray>> unneeded_ =
        std::make_shared<std::vector<QByteArray>>();
    LruCache<QByteArray, PreparedPtr> prepared_{KeptStatements};
    quint64 names_ = 0;
};

/// The first row's value as the server hands it out. `number()` gives the place for a text of a
/// number that has to be made.
template <typename Number>
QByteArrayView ColumnOf(const pg_result &result, int column, Number number)
{
    const QByteArrayView text(PQgetvalue(&result, 0, column), PQgetlength(&result, 0, column));
    switch (PQftype(&result, column)) {
    case Float4Type:
    case Float8Type:
        return text.isEmpty() ? text : number() = PlainNumber(text.toDouble());
    case NumericType:
        return number() = PlainNumeric(text);
    case BoolType:
        return text.isEmpty() ? text : text == "t" ? "1" : "0";
    default:
        return text;
    }
}

std::optional<QStringList> FirstRowOf(const pg_result &result)
{
    if (PQntuples(&result) == 0)
        return std::nullopt;
    QStringList row;
    const int columns = PQnfields(&result);
    row.reserve(columns);
    QByteArray number;
    for (int column = 0; column < columns; ++column)
        row.append(
            QString::fromUtf8(ColumnOf(result, column, [&]() -> QByteArray & { return number; })));
    return row;
}

class PostgresStatement : public Statement
{
public:
    PostgresStatement(PostgresConnection &connection, QByteArrayView sql)
        : connection_(connection)
        , sql_(NumberedParameters(sql))
        , parameters_(ParameterCount(sql))
    {
        connection_.MakeReady();
        Prepare();
    }

    ~PostgresStatement() override { Reset(); }
    Q_DISABLE_COPY_MOVE(PostgresStatement)

    void Bind(int parameter, QByteArrayView utf8) override
    {
        if (utf8.isEmpty())
            return BindNull(parameter);
        if (utf8.contains('\0'))
            RefuseNul();
        Place(parameter) = utf8.toByteArray();
    }

    void BindNull(int parameter) override { Place(parameter).reset(); }

    void BindInt(int parameter, qint64 value) override
    {
        Place(parameter) = QByteArray::number(value);
    }

    bool Step() override
    {
        if (!running_) {
            Ready();
            connection_.Start(*this, *prepared_, parameters_);
            running_ = true;
            arriving_ = true;
        }
        if (!rest_.empty()) {
            row_ = std::move(rest_.front());
            rest_.pop_front();
        } else if (failure_) {
            running_ = false;
            throw *std::exchange(failure_, std::nullopt);
        } else {
            row_ = arriving_ ? Next() : nullptr;
        }
        if (!row_) {
            running_ = false;
            return false;
        }
        numbers_.clear();
        return true;
    }

    void Send() override
    {
        if (connection_.IsInTransaction())
            Queue(nullptr);
        else
            Statement::Send();
    }

    RowLater AskRow() override
    {
        if (!connection_.IsInTransaction())
            return Statement::AskRow();
        const auto later = std::make_shared<PostgresResult>();
        Queue(later);
        return [later, &connection = connection_] {
            if (!*later)
                connection.Flush();
            if (!*later) // the transaction was undone before it was sent
                throw EStoreError(EStoreError::Kind::Failure, u"语句没有执行。"_s);
            return FirstRowOf(**later);
        };
    }

    void Reset() override
    {
        if (arriving_) {
            connection_.Session().Abandon(connection_.MayCancel());
            Arrived();
        }
        running_ = false;
        rest_.clear();
        failure_.reset();
        row_.reset();
    }

    int ColumnCount() const override { return PQnfields(Described()); }

    QString ColumnName(int column) const override
    {
        return QString::fromUtf8(PQfname(Described(), column));
    }

    bool IsNull(int column) const override { return PQgetisnull(row_.get(), 0, column) != 0; }

    QByteArrayView ColumnBytes(int column) override
    {
        return ColumnOf(*row_, column, [&]() -> QByteArray & { return numbers_[column]; });
    }

    qint64 ColumnInt(int column) override
    {
        const QByteArrayView text = ColumnBytes(column);
        return text.first(text.contains('.') ? text.indexOf('.') : text.size()).toLongLong();
    }

    /// Takes in the rows that are still to come: somebody else needs the session. A failure among
    /// them is for whoever reads them.
    void TakeRest() noexcept
    {
        try {
            while (PostgresResult row = Next())
                rest_.push_back(std::move(row));
        } catch (const EStoreError &error) {
            failure_ = error;
        }
    }

private:
    void Ready()
    {
        connection_.MakeReady();
        if (generation_ != connection_.Session().Generation())
            Prepare();
    }

    void Queue(std::shared_ptr<PostgresResult> result)
    {
        Ready();
        connection_.Session().Queue({prepared_->name, parameters_, sql_, std::move(result)});
    }

    void Prepare()
    {
        prepared_ = connection_.GetPrepared(sql_);
        generation_ = connection_.Session().Generation();
        description_.reset();
    }

    PostgresResult Next()
    {
        try {
            PostgresResult row = connection_.Session().Next(sql_);
            if (!row)
                Arrived();
            return row;
        } catch (const EStoreError &) {
            Arrived();
            running_ = false;
            throw;
        }
    }

    void Arrived()
    {
        arriving_ = false;
        connection_.Finished(*this);
    }

    const pg_result *Described() const
    {
        if (row_)
            return row_.get();
        if (!description_) {
            connection_.MakeReady();
            description_ = connection_.Session().Describe(prepared_->name, sql_);
        }
        return description_.get();
    }

    PostgresParameter &Place(int parameter)
    {
        return parameters_.at(static_cast<std::size_t>(parameter - 1));
    }

    PostgresConnection &connection_;
    QByteArray sql_;
    PreparedPtr prepared_;
    int generation_ = 0;
    std::vector<PostgresParameter> parameters_;
    bool running_ = false;  ///< begun, and its end not yet reported
    bool arriving_ = false; ///< the session is in the middle of its rows
    PostgresResult row_;
    std::deque<PostgresResult> rest_;
    std::optional<EStoreError> failure_; ///< behind the rest
    mutable PostgresResult description_;
    QHash<int, QByteArray> numbers_; ///< texts of the current row's numbers
};

std::unique_ptr<Statement> PostgresConnection::Prepare(QByteArrayView sql)
{
    return std::make_unique<PostgresStatement>(*this, sql);
}

/// One value as COPY reads it.
void AppendCopied(QByteArray &buffer, QByteArrayView value)
{
    if (value.isEmpty()) {
        buffer += "\\N";
        return;
    }
    for (const char c : value) {
        switch (c) {
        case '\0':
            RefuseNul();
        case '\\':
            buffer += "\\\\";
            break;
        case '\n':
            buffer += "\\n";
            break;
        case '\r':
            buffer += "\\r";
            break;
        case '\t':
            buffer += "\\t";
            break;
        default:
            buffer += c;
        }
    }
}

void PostgresConnection::InsertRows(QByteArrayView table, QByteArrayView columns,
                                    const NextRow &next)
{
    MakeReady();
    QList<QByteArrayView> row(columns.count(',') + 1);
    session_.Copy("COPY " + table.toByteArray() + " (" + columns.toByteArray() + ") FROM STDIN",
                  [&](QByteArray &buffer) {
                      if (!next(row))
                          return false;
                      for (qsizetype column = 0; column < row.size(); ++column) {
                          if (column > 0)
                              buffer += '\t';
                          AppendCopied(buffer, row[column]);
                      }
                      buffer += '\n';
                      return true;
                  });
}

void PostgresConnection::MakeReady()
{
    if (reading_)
        reading_->TakeRest();
    if (inTransaction_)
        return; // what is broken says so
    const int before = session_.Generation();
    session_.OpenIfGone();
    if (session_.Generation() != before) {
        prepared_.Clear();
        unneeded_ = std::make_shared<std::vector<QByteArray>>();
    }
}

PreparedPtr PostgresConnection::GetPrepared(const QByteArray &sql)
{
    DropUnneeded();
    const auto make = [&] {
        const QByteArray name = 'q' + QByteArray::number(++names_);
        session_.Prepare(name, sql);
        return std::make_shared<Prepared>(name, sql, unneeded_);
    };
    return sql.size() > KeptTextBytes ? make() : prepared_.Get(sql, make);
}

/// In a few commands rather than one for each.
void PostgresConnection::DropUnneeded()
{
    if (unneeded_->size() < UnneededAtOnce || session_.IsInFailedTransaction())
        return;
    QByteArray sql;
    for (const QByteArray &name : std::exchange(*unneeded_, {}))
        sql += "DEALLOCATE " + name + ';';
    session_.Command(sql, OnStop::GiveUp);
}

void PostgresConnection::Start(PostgresStatement &statement, const Prepared &prepared,
                               const std::vector<PostgresParameter> &parameters)
{
    session_.Start(prepared.name, parameters);
    reading_ = &statement;
}

} // namespace

PostgresDatabase::PostgresDatabase(const QString &url)
    : address_(url.toUtf8())
{
}

std::unique_ptr<Connection> PostgresDatabase::OpenWriter()
{
    return std::make_unique<PostgresConnection>(address_, PostgresCopy::Primary, Access::Write);
}

int PostgresDatabase::Writers() const
{
    constexpr int writers = 8; // each waits for the log to be flushed most of its time
    return writers;
}

std::unique_ptr<Connection> PostgresDatabase::OpenReader()
{
    return std::make_unique<PostgresConnection>(address_, PostgresCopy::Any, Access::Read,
                                                readingTime_);
}

std::unique_ptr<Connection> PostgresDatabase::OpenPrimaryReader()
{
    return std::make_unique<PostgresConnection>(address_, PostgresCopy::Primary, Access::Read,
                                                readingTime_);
}

QByteArray NumberedParameters(QByteArrayView sql)
{
    QByteArray numbered = sql.toByteArray();
    ForEachParameter(sql, [&](qsizetype at) { numbered[at] = '$'; });
    return numbered;
}

QByteArray PlainNumeric(QByteArrayView text)
{
    const qsizetype point = text.indexOf('.');
    if (point < 0)
        return text.toByteArray();
    const auto digits =
        std::count_if(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    constexpr qsizetype exactDigits = 15;
    if (digits > exactDigits)
        return PlainNumber(text.toDouble());
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text.toByteArray();
}

} // namespace Qel::Store
