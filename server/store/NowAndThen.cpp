#include "store/NowAndThen.h"

#include "dataset/QelError.h"

#include <utility>

namespace Qel::Store {

NowAndThen::NowAndThen(std::chrono::milliseconds interval, First first, Work work)
    : interval_(interval)
    , first_(first)
    , work_(std::move(work))
    , thread_([this](const std::stop_token &stop) { Run(stop); })
{
}

void NowAndThen::Run(const std::stop_token &stop)
{
    std::unique_lock lock(lock_);
    for (bool isDue = first_ == First::AtOnce; !stop.stop_requested(); isDue = true) {
        if (isDue) {
            try {
                work_(stop);
            } catch (const EQelError &) {
                // the next call
            }
        }
        wake_.wait_for(lock, stop, interval_, [] { return false; });
    }
}

} // namespace Qel::Store
