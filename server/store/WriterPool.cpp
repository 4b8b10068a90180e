#include "store/WriterPool.h"

#include <QRandomGenerator>

#include <algorithm>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Store {

namespace {

constexpr auto FirstPause = 2ms; // about what a short transaction takes
constexpr auto LongestPause = 200ms;
/// Who waits for a row has nearly always lost it, and of two who wait for each other the database
/// tells only after a second. Not for who makes tables or waits for a command's lock.
constexpr char LimitWaits[] = "SET lock_timeout = '200ms'";
/// For a database that is being started again. Longer would only pile up requests.
constexpr auto PatienceWithLoss = 5s;

/// Random, so that those that met do not meet again; up to twice as long each time.
WriterPool::Clock::duration Pause(int tries)
{
    const auto longest =
        std::min<std::chrono::microseconds>(FirstPause * (1 << std::min(tries, 8)), LongestPause);
    return std::chrono::microseconds(
        QRandomGenerator::global()->bounded(static_cast<int>(longest.count())));
}

} // namespace

/// A connection for a scope, whose statements end at the deadline.
class WriterPool::Lease
{
public:
    Lease(WriterPool &pool, Clock::time_point deadline)
        : pool_(pool)
        , connection_(pool.Take(deadline))
    {
        connection_->StopWhen([&pool, deadline] { return Clock::now() > pool.EndOf(deadline); });
    }
    ~Lease()
    {
        connection_->StopWhen({});
        pool_.GiveBack(std::move(connection_));
    }
    Q_DISABLE_COPY_MOVE(Lease)

    Connection &operator*() const { return *connection_; }

private:
    WriterPool &pool_;
    std::unique_ptr<Connection> connection_;
};

/// A place in the row of those who go one by one, in the order in which they came, until the end of
/// the scope. Posts to one record would otherwise disturb each other again and again, and the
/// pauses between their tries grow while others come and take the record.
class WriterPool::Turn
{
public:
    explicit Turn(WriterPool &pool)
        : pool_(pool)
    {
        const std::lock_guard lock(pool_.lock_);
        pool_.turns_.push_back(this);
    }
    ~Turn()
    {
        {
            const std::lock_guard lock(pool_.lock_);
            std::erase(pool_.turns_, this);
        }
        pool_.turned_.notify_all();
    }
    Q_DISABLE_COPY_MOVE(Turn)

    /// False: it did not come by the deadline.
    bool Wait(Clock::time_point deadline)
    {
        std::unique_lock lock(pool_.lock_);
        while (pool_.turns_.front() != this) {
            if (Clock::now() >= pool_.EndOf(deadline))
                return false;
            pool_.turned_.wait_until(lock, pool_.EndOf(deadline));
        }
        return true;
    }

private:
    WriterPool &pool_;
};

WriterPool::WriterPool(Database &database)
    : database_(database)
    , size_(database.Writers())
{
}

std::unique_ptr<Connection> WriterPool::Take(Clock::time_point deadline)
{
    std::unique_lock lock(lock_);
    while (taken_ >= size_) {
        if (Clock::now() >= EndOf(deadline))
            throw EStoreError(EStoreError::Kind::Stopped, u"等待数据库写连接超时"_s);
        freed_.wait_until(lock, EndOf(deadline));
    }
    ++taken_;
    if (!atRest_.empty()) {
        auto connection = std::move(atRest_.back());
        atRest_.pop_back();
        return connection;
    }
    lock.unlock();
    try {
        auto connection = database_.OpenWriter();
        if (connection->CurrentDialect() == Dialect::PostgreSql)
            connection->Execute(LimitWaits);
        return connection;
    } catch (...) {
        GiveBack(nullptr);
        throw;
    }
}

void WriterPool::GiveBack(std::unique_ptr<Connection> connection)
{
    {
        const std::lock_guard lock(lock_);
        --taken_;
        if (connection && connection->IsAtRest())
            atRest_.push_back(std::move(connection));
    }
    freed_.notify_one();
}

WriterPool::Clock::time_point WriterPool::EndOf(Clock::time_point deadline) const
{
    return std::min(deadline, latest_.load());
}

void WriterPool::EndBy(Clock::time_point latest)
{
    {
        const std::lock_guard lock(lock_); // nobody misses it between a look and the wait
        latest_ = latest;
    }
    freed_.notify_all();
    turned_.notify_all();
}

void WriterPool::Run(Clock::time_point deadline, const std::function<void(Connection &)> &work)
{
    using Kind = EStoreError::Kind;
    auto lossDeadline = deadline;
    std::optional<Turn> turn;
    for (int tries = 0;; ++tries) {
        Clock::time_point again;
        try {
            const Lease lease(*this, deadline);
            work(*lease);
            return;
        } catch (const EStoreError &error) {
            const bool isLoss = error.WhichKind() == Kind::Lost;
            if (!isLoss && error.WhichKind() != Kind::Conflict)
                throw;
            const bool queues = !isLoss && !turn && tries > 0;
            if (isLoss) {
                turn.reset(); // nobody gets on now
                lossDeadline = std::min(lossDeadline, Clock::now() + PatienceWithLoss);
            }
            if (queues) {
                turn.emplace(*this);
                if (!turn->Wait(deadline))
                    throw;
                tries = 0;
            }
            again = Clock::now() + (queues ? 0ms : Pause(tries));
            if (again >= EndOf(isLoss ? lossDeadline : deadline))
                throw;
        }
        ++repeats_;
        std::this_thread::sleep_until(again);
    }
}

} // namespace Qel::Store
