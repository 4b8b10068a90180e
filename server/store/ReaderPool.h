#pragma once

#include "store/Database.h"
#include "store/QueryRunner.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

namespace Qel::Store {

/// A connection that reads, with what it keeps prepared.
struct Reader
{
    Reader(std::unique_ptr<Connection> opened, const QueryLimits &limits)
        : connection(std::move(opened))
        , queries(*connection, limits)
    {
    }

    std::unique_ptr<Connection> connection;
    QueryRunner queries;
    std::chrono::steady_clock::time_point openedAt = std::chrono::steady_clock::now();
};

/// The connections that read: opened when they are needed, kept, and thrown away when they break.
/// Those to copies of the database are opened anew now and then, so that they spread over the
/// copies there are. Threads share it.
class ReaderPool
{
public:
    class Lease;

    /// `database` must outlive the pool.
    ReaderPool(Database &database, const QueryLimits &limits);

    int Open() const { return open_; }
    int Busy() const { return busy_; }

private:
    enum Kind { Any, Primary };

    std::unique_ptr<Reader> Take(Kind kind);
    void GiveBack(Kind kind, std::unique_ptr<Reader> reader);

    Database &database_;
    QueryLimits limits_;
    std::atomic<int> open_ = 0;
    std::atomic<int> busy_ = 0;
    std::mutex lock_;
    std::vector<std::unique_ptr<Reader>> atRest_[2]; ///< of each kind; the last used on top
};

/// A reader for a scope.
class ReaderPool::Lease
{
public:
    /// Asks for a state of the database that has all that this names, or for the last commit.
    static constexpr char Latest[] = "latest";

    /// One of a copy, if there are copies.
    explicit Lease(ReaderPool &pool);
    ~Lease();
    Q_DISABLE_COPY_MOVE(Lease)

    Reader &operator*() const { return *reader_; }
    Reader *operator->() const { return reader_.get(); }

    /// Whether the reader sees `position`; waits for it for a moment. Empty: any state will do.
    bool Shows(const QByteArray &position) const;
    /// Another one, which sees the last commit.
    void MoveToPrimary();

private:
    ReaderPool &pool_;
    Kind kind_ = Any;
    std::unique_ptr<Reader> reader_;
};

} // namespace Qel::Store
