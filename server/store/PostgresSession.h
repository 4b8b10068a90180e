#pragma once

#include "store/Connection.h"
#include "store/PostgresAddress.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

struct pg_conn;
struct pg_result;

namespace Qel::Store {

struct ClearPostgresResult
{
    void operator()(pg_result *result) const;
};
using PostgresResult = std::unique_ptr<pg_result, ClearPostgresResult>;

/// A parameter as it is sent; nullopt is NULL.
using PostgresParameter = std::optional<QByteArray>;

/// One session with a PostgreSQL server: connects, sends, waits, cancels, and tells what went
/// wrong. Everything throws EStoreError: a session that is broken says Kind::Lost until it is
/// opened again.
class PostgresSession
{
public:
    /// `setUp` is run on every new session.
    PostgresSession(const PostgresAddress &address, PostgresCopy copy, QByteArray setUp);
    ~PostgresSession();
    Q_DISABLE_COPY_MOVE(PostgresSession)

    /// Connects, or connects anew: what was prepared before is gone.
    void Open();
    /// Open if there is none, or if the server has ended the session while it was idle.
    void OpenIfGone();
    bool IsBroken() const;
    int Generation() const { return generation_; } ///< grows with every Open
    bool IsInTransaction() const;                  ///< in a failed one, too
    bool IsInFailedTransaction() const;
    /// If the transaction failed behind the rows that somebody wanted of a statement, as it does
    /// when a conflict is found at its end: throws that failure. The next statement does it too.
    void ThrowOverlooked(QByteArrayView sql);
    bool IsStandby() const; ///< as the server last said

    void StopWhen(std::function<bool()> condition) { stop_ = std::move(condition); }
    bool IsToStop() const { return stop_ && stop_(); }

    /// What is done when StopWhen says so: the server is told to end the statement, or the session
    /// is given up. That is for the ends of a transaction: a COMMIT that waits for a copy of the
    /// database would take effect here alone if it were told to stop. With changes before the
    /// COMMIT it is given up a little later: one that waits for a lock has ended by then.
    enum class OnStop { Cancel, GiveUp, GiveUpLater };

    /// One or several statements without parameters, to the end.
    void Command(const QByteArray &sql, OnStop onStop);
    void Prepare(const QByteArray &name, const QByteArray &sql);
    /// The description of a prepared statement's columns.
    PostgresResult Describe(const QByteArray &name, const QByteArray &sql);
    /// Starts a prepared statement. Its rows are then taken by Next, one each.
    void Start(const QByteArray &name, const std::vector<PostgresParameter> &parameters);
    /// A prepared statement for Queue.
    struct Queued
    {
        QByteArray name;
        std::vector<PostgresParameter> parameters;
        QByteArray sql;                                   ///< named in errors
        std::shared_ptr<PostgresResult> result = nullptr; ///< filled when it has arrived
    };
    /// Has it sent together with the next statement of any kind, and before it: all of them take
    /// one way to the server and back. A failure is thrown by that statement, which has not been
    /// carried out then, nor has what is queued in between.
    void Queue(Queued statement);
    std::size_t QueuedCount() const { return queue_.size(); }
    void DropQueue() { queue_.clear(); } ///< what was not sent yet
    /// Sends what is queued and waits for it.
    void Flush(OnStop onStop = OnStop::Cancel);
    /// The next row of what was started; null when it has ended. `sql` is named in errors.
    PostgresResult Next(QByteArrayView sql);
    /// Ends what was started: a short rest is read, of a long one the server is told to stop.
    /// In a transaction that writes the server is not, for that would end the transaction.
    void Abandon(bool mayCancel) noexcept;

    /// COPY ... FROM STDIN: `next` appends text to the buffer that it is given, or says false.
    void Copy(const QByteArray &sql, const std::function<bool(QByteArray &buffer)> &next);

    qint64 ChangedRows() const { return changedRows_; }

private:
    struct Finish
    {
        void operator()(pg_conn *connection) const;
    };

    PostgresResult Wait();
    bool WaitForInput();
    bool Says(const char *parameter) const; ///< that it is on
    bool IsReadOnly() const;                ///< by the set-up of the session
    void Cancel();
    void SettleCancel();
    void Sent(int result);
    void Send(const QByteArray &name, const std::vector<PostgresParameter> &parameters);
    std::vector<Queued> SendQueued();
    void Sync(int statements);
    void Take(const std::vector<Queued> &sent);
    void LeavePipeline();
    [[noreturn]] void Fail(PostgresResult result, QByteArrayView sql);
    [[noreturn]] void FailLost(QByteArrayView sql);
    void Close();

    PostgresAddress address_;
    PostgresCopy copy_;
    QByteArray setUp_;
    std::unique_ptr<pg_conn, Finish> connection_;
    int generation_ = 0;
    std::function<bool()> stop_;
    OnStop onStop_ = OnStop::Cancel;
    std::optional<std::chrono::steady_clock::time_point> stopSeen_;
    int resultsSinceLook_ = 0;
    std::optional<std::chrono::steady_clock::time_point> cancelled_; ///< the running statement
    bool cancelArrived_ = false;
    qint64 changedRows_ = 0;
    PostgresResult overlooked_; ///< see ThrowOverlooked
    std::vector<Queued> queue_; ///< not sent yet
    int pipelined_ = 0;         ///< statements sent as one whose end has not arrived; 0: none were
};

} // namespace Qel::Store
