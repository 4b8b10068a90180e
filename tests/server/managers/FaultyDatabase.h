#pragma once

#include "store/Database.h"

#include <atomic>

namespace Qel {

/// A real database, on the way to which connections break when a test says so.
class FaultyDatabase : public Store::Database
{
public:
    enum class Break {
        Never,
        InStatement,  ///< the next statement never arrives
        BeforeCommit, ///< the next COMMIT never arrives
        AfterCommit,  ///< the next COMMIT is carried out, its answer never arrives
    };

    explicit FaultyDatabase(Store::Database &real)
        : real_(real)
    {
    }

    /// Of the next connection that gets there.
    void BreakOnce(Break where) { next_ = where; }
    int Opened() const { return opened_; }
    int Committed() const { return committed_; } ///< transactions, whole ones
    void CountCommit() { ++committed_; }

    std::unique_ptr<Store::Connection> OpenWriter() override;
    int Writers() const override { return real_.Writers(); }
    bool SharesTransactions() const override { return real_.SharesTransactions(); }
    std::unique_ptr<Store::Connection> OpenReader() override { return real_.OpenReader(); }

    /// Whether it is now; it is not a second time.
    bool Breaks(Break where) { return next_.compare_exchange_strong(where, Break::Never); }

private:
    Store::Database &real_;
    std::atomic<Break> next_ = Break::Never;
    std::atomic<int> opened_ = 0;
    std::atomic<int> committed_ = 0;
};

} // namespace Qel
