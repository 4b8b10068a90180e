#include "store/PostgresSession.h"

#include <QScopeGuard>
#include <QTimeZone>

#include <libpq-fe.h>
#include <poll.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <thread>

using namespace Qt::StringLiterals;

namespace Qel::Store {

namespace {

using Clock = std::chrono::steady_clock;
using Kind = EStoreError::Kind;

constexpr int LookMilliseconds = 50; ///< between two looks at StopWhen while nothing arrives
constexpr int ResultsPerLook = 256;  ///< and while rows arrive
constexpr auto CancelPatience = std::chrono::seconds(2);
/// Before a COMMIT is given up: longer than a change waits for a lock (WriterPool).
constexpr auto CommitPatience = std::chrono::milliseconds(500);
constexpr std::size_t MostQueued = 256;
constexpr int RestWorthReading = 1'000; ///< rows; fewer than a request to cancel costs
/// What the functions of the query language raise (schema/postgresql.sql).
constexpr std::string_view RefusedValue = "QE001";

struct StateKind
{
    std::string_view state; ///< or how it begins
    Kind kind;
};

// The first that fits.
constexpr std::array<StateKind, 16> stateKinds = {{
    {"57014", Kind::Stopped},
    {"40001", Kind::Conflict}, // serialization_failure
    {"40P01", Kind::Conflict}, // deadlock_detected
    {"55P03", Kind::Conflict}, // lock_timeout
    {"23", Kind::Constraint},
    {"54", Kind::TooComplex},
    {"42803", Kind::TooComplex}, // sub-selects in what rows are grouped by
    {RefusedValue, Kind::BadValue},
    {"22", Kind::BadValue},
    {"21", Kind::BadValue}, // a sub-select that is a value has several rows
    {"08", Kind::Lost},
    {"57P01", Kind::Lost}, // the server is being shut down
    {"57P02", Kind::Lost}, // crashed
    {"57P03", Kind::Lost}, // starting up
    {"57P05", Kind::Lost}, // idle for too long
    {"53300", Kind::Lost}, // too many connections
}};

Kind KindOf(std::string_view state)
{
    for (const StateKind &one : stateKinds) {
        if (state.starts_with(one.state))
            return one.kind;
    }
    return Kind::Failure;
}

/// The zone of the server process: both databases tell the same local time.
QByteArray ZoneCommand()
{
    const QByteArray zone = QTimeZone::systemTimeZoneId();
    return "SET TIME ZONE '" + QByteArray(zone).replace('\'', "''") + "'";
}

QString TextOf(const char *utf8)
{
    return QString::fromUtf8(utf8).trimmed();
}

[[noreturn]] void Throw(Kind kind, const QString &state, const QString &message, QByteArrayView sql,
                        const QString &reason)
{
    constexpr qsizetype shownText = 2'000;
    throw EStoreError(
        kind,
        u"数据库错误 %1：%2；语句：%3"_s.arg(
            state, message, QString::fromUtf8(sql.first(qMin(sql.size(), shownText)))),
        reason);
}

} // namespace

void ClearPostgresResult::operator()(pg_result *result) const
{
    PQclear(result);
}

void PostgresSession::Finish::operator()(pg_conn *connection) const
{
    PQfinish(connection);
}

PostgresSession::PostgresSession(const PostgresAddress &address, PostgresCopy copy,
                                 QByteArray setUp)
    : address_(address)
    , copy_(copy)
    , setUp_(std::move(setUp))
{
}

PostgresSession::~PostgresSession() = default;

void PostgresSession::Open()
{
    Close();
    ++generation_;
    const auto parameters = address_.Parameters(copy_);
    std::vector<const char *> names;
    std::vector<const char *> values;
    for (const auto &[name, value] : parameters) {
        names.push_back(name.constData());
        values.push_back(value.constData());
    }
    names.push_back(nullptr);
    values.push_back(nullptr);
    connection_.reset(PQconnectdbParams(names.data(), values.data(), 0));
    if (!connection_ || PQstatus(connection_.get()) != CONNECTION_OK) {
        const QString reason =
            connection_ ? TextOf(PQerrorMessage(connection_.get())) : u"out of memory"_s;
        Close();
        throw EStoreError(Kind::Lost, u"无法连接数据库：%1"_s.arg(reason), reason);
    }
    PQsetNoticeProcessor(
        connection_.get(), [](void *, const char *) {}, nullptr);
    try {
        Command(ZoneCommand() + ';' + setUp_, OnStop::GiveUp);
    } catch (const EStoreError &) {
        Close(); // one that is half set up serves nobody
        throw;
    }
}

void PostgresSession::OpenIfGone()
{
    // What the server said last, and that it hung up, stands in the socket.
    for (int look = 0; look < 3 && !IsBroken(); ++look) {
        pollfd socket{PQsocket(connection_.get()), POLLIN, 0};
        if (poll(&socket, 1, 0) <= 0)
            return;
        PQconsumeInput(connection_.get());
    }
    if (IsBroken())
        Open();
}

bool PostgresSession::IsBroken() const
{
    return !connection_ || PQstatus(connection_.get()) != CONNECTION_OK;
}

bool PostgresSession::IsInTransaction() const
{
    return !IsBroken() && PQtransactionStatus(connection_.get()) != PQTRANS_IDLE;
}

bool PostgresSession::IsInFailedTransaction() const
{
    return connection_ && PQtransactionStatus(connection_.get()) == PQTRANS_INERROR;
}

bool PostgresSession::Says(const char *parameter) const
{
    const char *said = connection_ ? PQparameterStatus(connection_.get(), parameter) : nullptr;
    return said && QByteArrayView(said) == "on";
}

bool PostgresSession::IsStandby() const
{
    return Says("in_hot_standby");
}

bool PostgresSession::IsReadOnly() const
{
    return Says("default_transaction_read_only");
}

void PostgresSession::Command(const QByteArray &sql, OnStop onStop)
{
    Flush();
    onStop_ = onStop;
    Sent(connection_ ? PQsendQuery(connection_.get(), sql.constData()) : 0);
    while (Next(sql)) {
    }
}

void PostgresSession::Prepare(const QByteArray &name, const QByteArray &sql)
{
    Flush();
    ThrowOverlooked(sql);
    onStop_ = OnStop::Cancel;
    Sent(connection_
             ? PQsendPrepare(connection_.get(), name.constData(), sql.constData(), 0, nullptr)
             : 0);
    while (Next(sql)) {
    }
}

PostgresResult PostgresSession::Describe(const QByteArray &name, const QByteArray &sql)
{
    Flush();
    Sent(connection_ ? PQsendDescribePrepared(connection_.get(), name.constData()) : 0);
    PostgresResult description = Wait();
    if (!description || PQresultStatus(description.get()) != PGRES_COMMAND_OK)
        Fail(std::move(description), sql);
    while (Wait()) {
    }
    return description;
}

void PostgresSession::Start(const QByteArray &name,
                            const std::vector<PostgresParameter> &parameters)
{
    ThrowOverlooked({});
    onStop_ = OnStop::Cancel;
    const std::vector<Queued> before = SendQueued();
    Send(name, parameters);
    if (!before.empty()) {
        Sync(static_cast<int>(before.size()) + 1);
        Take(before);
    }
    PQsetSingleRowMode(connection_.get());
}

void PostgresSession::Send(const QByteArray &name, const std::vector<PostgresParameter> &parameters)
{
    std::vector<const char *> values;
    values.reserve(parameters.size());
    for (const PostgresParameter &parameter : parameters)
        values.push_back(parameter ? parameter->constData() : nullptr);
    Sent(connection_ ? PQsendQueryPrepared(connection_.get(), name.constData(),
                                           static_cast<int>(values.size()), values.data(), nullptr,
                                           nullptr, 0)
                     : 0);
}

void PostgresSession::Queue(Queued statement)
{
    if (queue_.size() >= MostQueued)
        Flush(); // what went before a COMMIT, never the COMMIT itself
    queue_.push_back(std::move(statement));
}

void PostgresSession::Flush(OnStop onStop)
{
    if (queue_.empty())
        return;
    ThrowOverlooked(queue_.front().sql);
    onStop_ = onStop;
    const std::vector<Queued> sent = SendQueued();
    Sync(static_cast<int>(sent.size()));
    Take(sent);
}

std::vector<PostgresSession::Queued> PostgresSession::SendQueued()
{
    std::vector<Queued> sent = std::exchange(queue_, {});
    if (!sent.empty())
        Sent(connection_ ? PQenterPipelineMode(connection_.get()) : 0);
    for (const Queued &statement : sent)
        Send(statement.name, statement.parameters);
    return sent;
}

/// What was sent up to here ends: after a failure the server leaves out the rest.
void PostgresSession::Sync(int statements)
{
    if (PQpipelineSync(connection_.get()) != 1)
        FailLost({});
    pipelined_ = statements;
}

void PostgresSession::Take(const std::vector<Queued> &sent)
{
    for (const Queued &statement : sent) {
        while (PostgresResult result = Wait()) {
            switch (PQresultStatus(result.get())) {
            case PGRES_SINGLE_TUPLE: // libpq keeps to it for the first one of a pipeline
            case PGRES_TUPLES_OK:
            case PGRES_COMMAND_OK:
                if (statement.result && !*statement.result)
                    *statement.result = std::move(result);
                break;
            default:
                Fail(std::move(result), statement.sql);
            }
        }
        if (IsBroken())
            FailLost(statement.sql);
    }
}

void PostgresSession::LeavePipeline()
{
    while (PQisBusy(connection_.get()) && WaitForInput()) {
    }
    const PostgresResult sync(PQgetResult(connection_.get()));
    if (!sync || PQresultStatus(sync.get()) != PGRES_PIPELINE_SYNC ||
        PQexitPipelineMode(connection_.get()) != 1)
        FailLost({});
}

PostgresResult PostgresSession::Next(QByteArrayView sql)
{
    while (PostgresResult result = Wait()) {
        switch (PQresultStatus(result.get())) {
        case PGRES_SINGLE_TUPLE:
            return result;
        case PGRES_TUPLES_OK: // the end of the rows; whole only where no single rows were wanted
        case PGRES_COMMAND_OK:
            changedRows_ = QByteArrayView(PQcmdTuples(result.get())).toLongLong();
            break;
        case PGRES_EMPTY_QUERY:
            break;
        default:
            Fail(std::move(result), sql);
        }
    }
    return nullptr;
}

void PostgresSession::Copy(const QByteArray &sql,
                           const std::function<bool(QByteArray &buffer)> &next)
{
    Flush();
    Sent(connection_ ? PQsendQuery(connection_.get(), sql.constData()) : 0);
    PostgresResult ready = Wait();
    if (!ready || PQresultStatus(ready.get()) != PGRES_COPY_IN)
        Fail(std::move(ready), sql);
    auto giveUp = qScopeGuard([&] {
        PQputCopyEnd(connection_.get(), "given up");
        Abandon(false);
    });
    constexpr qsizetype piece = 64 << 10;
    QByteArray buffer;
    for (bool more = true; more;) {
        more = next(buffer);
        if (more && buffer.size() < piece)
            continue;
        if (PQputCopyData(connection_.get(), buffer.constData(), static_cast<int>(buffer.size())) <
            0)
            break; // the result says why
        buffer.resize(0);
    }
    giveUp.dismiss();
    PQputCopyEnd(connection_.get(), nullptr);
    while (Next(sql)) {
    }
}

void PostgresSession::Abandon(bool mayCancel) noexcept
{
    try {
        PostgresResult result = Wait();
        for (int rest = 0; result; ++rest, result = Wait()) {
            if (PQresultStatus(result.get()) == PGRES_FATAL_ERROR && !cancelled_)
                overlooked_ = std::move(result);
            if (rest == RestWorthReading && mayCancel && !cancelled_)
                Cancel();
        }
    } catch (const EStoreError &) {
        // Broken or closed: whoever uses the session next finds out.
    }
}

/// The next result of any kind; null when the command has ended.
PostgresResult PostgresSession::Wait()
{
    if (!connection_)
        FailLost({});
    if (++resultsSinceLook_ >= ResultsPerLook) {
        resultsSinceLook_ = 0;
        if (onStop_ == OnStop::Cancel && !cancelled_ && IsToStop())
            Cancel();
    }
    while (PQisBusy(connection_.get()) && WaitForInput()) {
    }
    PostgresResult result(PQgetResult(connection_.get()));
    if (result && cancelled_) {
        const char *state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
        cancelArrived_ = cancelArrived_ || (state && KindOf(state) == Kind::Stopped);
    }
    if (result || (pipelined_ > 0 && --pipelined_ > 0))
        return result;
    if (!IsBroken() && PQpipelineStatus(connection_.get()) != PQ_PIPELINE_OFF)
        LeavePipeline();
    SettleCancel();
    return nullptr;
}

/// A cancellation on its way would hit the session's next statement.
void PostgresSession::SettleCancel()
{
    if (!cancelled_)
        return;
    const bool arrived = std::exchange(cancelArrived_, false);
    cancelled_.reset();
    if (arrived)
        return;
    Close();
    Throw(Kind::Stopped, u"57014"_s, u"语句已被终止"_s, {}, {});
}

/// Whether it is worth going on: not when the session is broken.
bool PostgresSession::WaitForInput()
{
    pollfd socket{PQsocket(connection_.get()), POLLIN, 0};
    const int ready = poll(&socket, 1, stop_ || cancelled_ ? LookMilliseconds : -1);
    if (ready < 0 && errno != EINTR)
        return false;
    if (ready > 0)
        return PQconsumeInput(connection_.get()) != 0;
    if (!cancelled_ && IsToStop()) {
        stopSeen_ = stopSeen_.value_or(Clock::now());
        const bool isLate = Clock::now() - *stopSeen_ > CommitPatience;
        if (onStop_ == OnStop::GiveUp || (onStop_ == OnStop::GiveUpLater && isLate))
            FailLost({});
        if (onStop_ == OnStop::Cancel)
            Cancel();
    }
    if (cancelled_ && Clock::now() - *cancelled_ > CancelPatience) {
        cancelled_.reset();
        Close();
        Throw(Kind::Stopped, u"57014"_s, u"语句已被终止，连接没有应答"_s, {}, {});
    }
    return true;
}

/// Over a connection of its own, which libpq makes and waits for without a limit: on a thread that
/// nobody waits for. A request that comes too late does no harm, see Wait.
void PostgresSession::Cancel()
{
    cancelled_ = Clock::now();
    using CancelPtr = std::unique_ptr<PGcancel, decltype(&PQfreeCancel)>;
    try {
        std::thread([cancel = CancelPtr(PQgetCancel(connection_.get()), &PQfreeCancel)] {
            std::array<char, 256> reason;
            if (cancel)
                PQcancel(cancel.get(), reason.data(), static_cast<int>(reason.size()));
        }).detach();
    } catch (const std::system_error &) {
        // No thread to be had: the session is closed when the patience with it is over.
    }
}

void PostgresSession::Sent(int result)
{
    cancelled_.reset();
    cancelArrived_ = false;
    stopSeen_.reset();
    resultsSinceLook_ = 0;
    changedRows_ = 0;
    if (result == 1)
        return;
    if (IsBroken() || PQpipelineStatus(connection_.get()) != PQ_PIPELINE_OFF)
        FailLost({}); // what is half sent cannot be taken back
    Throw(Kind::Failure, u"-"_s, TextOf(PQerrorMessage(connection_.get())), {}, {});
}

void PostgresSession::ThrowOverlooked(QByteArrayView sql)
{
    if (overlooked_ && IsInFailedTransaction())
        Fail(std::exchange(overlooked_, nullptr), sql);
    overlooked_.reset();
}

void PostgresSession::Fail(PostgresResult result, QByteArrayView sql)
{
    const auto field = [&](int code) {
        const char *text = result ? PQresultErrorField(result.get(), code) : nullptr;
        return QByteArray(text ? text : "");
    };
    const QByteArray state = field(PG_DIAG_SQLSTATE);
    const QString message = QString::fromUtf8(field(PG_DIAG_MESSAGE_PRIMARY));
    Kind kind = KindOf({state.constData(), static_cast<std::size_t>(state.size())});
    // A primary that has become a standby: another one takes writes now. What only reads was told
    // so.
    if (state == "25006" && !IsReadOnly())
        kind = Kind::Lost;
    do {
        while (!IsBroken() && Wait()) {
        }
    } while (!IsBroken() && pipelined_ > 0);
    if (IsBroken()) {
        if (kind == Kind::Failure)
            FailLost(sql);
        kind = Kind::Lost;
    }
    const bool ownWords = kind != Kind::BadValue || state == RefusedValue.data();
    Throw(kind, QString::fromLatin1(state), message, sql,
          ownWords                 ? message
          : state.startsWith("21") ? u"子查询作为一个值，却有多行"_s
                                   : u"数值超出范围，或不能这样转换"_s);
}

void PostgresSession::FailLost(QByteArrayView sql)
{
    const QString message = connection_ ? TextOf(PQerrorMessage(connection_.get())) : QString();
    Close();
    Throw(Kind::Lost, u"08006"_s, u"与数据库的连接已断开 %1"_s.arg(message).trimmed(), sql,
          message);
}

void PostgresSession::Close()
{
    queue_.clear();
    pipelined_ = 0;
    connection_.reset();
}

} // namespace Qel::Store
