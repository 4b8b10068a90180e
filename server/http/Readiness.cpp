#include "http/Readiness.h"

#include "dataset/QelError.h"

using namespace Qt::StringLiterals;

namespace Qel::Http {

Readiness::Readiness(Check check)
    : check_(std::move(check))
    , thread_([this] { Work(); })
{
}

Readiness::~Readiness()
{
    {
        const std::lock_guard lock(lock_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

std::optional<QString> Readiness::Trouble()
{
    std::unique_lock lock(lock_);
    if (!wanted_) {
        wanted_ = true;
        begun_ = Clock::now();
        changed_.notify_all();
    }
    const qint64 mine = finished_ + 1;
    if (!changed_.wait_until(lock, begun_ + Patience, [&] { return finished_ >= mine; }))
        return u"数据库没有回应"_s;
    return trouble_;
}

void Readiness::Work()
{
    std::unique_lock lock(lock_);
    for (;;) {
        changed_.wait(lock, [this] { return wanted_ || ending_; });
        if (ending_)
            return;
        lock.unlock();
        std::optional<QString> found;
        try {
            check_();
        } catch (const EQelError &error) {
            found = error.Message();
        } catch (const std::exception &error) {
            found = QString::fromUtf8(error.what());
        }
        lock.lock();
        trouble_ = std::move(found);
        ++finished_;
        wanted_ = false;
        changed_.notify_all();
    }
}

} // namespace Qel::Http
