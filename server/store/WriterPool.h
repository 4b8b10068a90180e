#pragma once

#include "store/Database.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace Qel::Store {

/// The connections that may change rows: as many as the database has use for, opened when they are
/// needed, kept, and thrown away when they break. Threads share it.
class WriterPool
{
public:
    using Clock = std::chrono::steady_clock;

    /// `database` must outlive the pool.
    explicit WriterPool(Database &database);

    int Size() const { return size_; }
    qint64 Repeats() const { return repeats_; } ///< how often work was called again, so far

    /// Calls `work` with a connection of its own. After Kind::Conflict, and after Kind::Lost for a
    /// few seconds, it is called again with growing pauses, for as long as there is time; then the
    /// error is thrown. So `work` starts afresh each time and writes in one Transaction at most.
    /// From its second conflict on it waits for its turn among those of whom that is true.
    /// Other errors are thrown at once. At the deadline a statement that still runs, or the wait
    /// for a connection, ends in Kind::Stopped.
    void Run(Clock::time_point deadline, const std::function<void(Connection &)> &work);

    /// No deadline, also of what runs already, is later than this from now on.
    void EndBy(Clock::time_point latest);

private:
    class Lease;
    class Turn;

    std::unique_ptr<Connection> Take(Clock::time_point deadline);
    Clock::time_point EndOf(Clock::time_point deadline) const;
    void GiveBack(std::unique_ptr<Connection> connection);

    Database &database_;
    const int size_;
    std::mutex lock_;
    std::condition_variable freed_;
    std::vector<std::unique_ptr<Connection>> atRest_; ///< the last used on top
    int taken_ = 0;
    std::atomic<Clock::time_point> latest_ = Clock::time_point::max();
    std::deque<const Turn *> turns_; ///< the first one's work runs
    std::condition_variable turned_;
    std::atomic<qint64> repeats_ = 0;
};

} // namespace Qel::Store
