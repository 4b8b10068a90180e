#include "store/ReaderPool.h"

#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace Qel::Store {

namespace {

using Clock = std::chrono::steady_clock;

/// A copy is a few milliseconds behind; one that is further behind is not waited for.
constexpr auto PatienceWithCopy = 50ms;
constexpr auto LookAtCopy = 2ms;
constexpr auto LongestUseOfCopy = 5min;

} // namespace

ReaderPool::ReaderPool(Database &database, const QueryLimits &limits)
    : database_(database)
    , limits_(limits)
{
}

std::unique_ptr<Reader> ReaderPool::Take(Kind kind)
{
    {
        const std::lock_guard lock(lock_);
        auto &atRest = atRest_[kind];
        if (!atRest.empty()) {
            auto reader = std::move(atRest.back());
            atRest.pop_back();
            ++busy_;
            return reader;
        }
    }
    auto reader = std::make_unique<Reader>(
        kind == Primary ? database_.OpenPrimaryReader() : database_.OpenReader(), limits_);
    ++open_;
    ++busy_;
    return reader;
}

void ReaderPool::GiveBack(Kind kind, std::unique_ptr<Reader> reader)
{
    --busy_;
    const bool isOld = database_.HasCopies() && Clock::now() - reader->openedAt > LongestUseOfCopy;
    if (isOld || !reader->connection->IsAtRest()) {
        --open_;
        return;
    }
    const std::lock_guard lock(lock_);
    atRest_[kind].push_back(std::move(reader));
}

ReaderPool::Lease::Lease(ReaderPool &pool)
    : pool_(pool)
    , reader_(pool.Take(kind_))
{
}

ReaderPool::Lease::~Lease()
{
    if (reader_)
        pool_.GiveBack(kind_, std::move(reader_));
}

bool ReaderPool::Lease::Shows(const QByteArray &position) const
{
    Connection &connection = *reader_->connection;
    if (position.isEmpty() || !connection.IsCopy())
        return true;
    if (position == Latest)
        return false;
    for (const auto end = Clock::now() + PatienceWithCopy;;) {
        if (connection.Shows(position))
            return true;
        if (Clock::now() >= end)
            return false;
        std::this_thread::sleep_for(LookAtCopy);
    }
}

void ReaderPool::Lease::MoveToPrimary()
{
    pool_.GiveBack(std::exchange(kind_, Primary), std::move(reader_));
    reader_ = pool_.Take(kind_);
}

} // namespace Qel::Store
