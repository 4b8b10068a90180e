#include "EndInTime.h"

#include "http/RequestLog.h"

#include <cstdlib>

namespace Qel {

void EndInTime::By(Clock::time_point latest)
{
    thread_ = std::jthread([this, latest](const std::stop_token &stop) {
        std::unique_lock lock(lock_);
        wake_.wait_until(lock, stop, latest, [] { return false; });
        if (stop.stop_requested())
            return;
        Http::WriteEvent("stopped without the database", QString());
        std::_Exit(EXIT_SUCCESS);
    });
}

} // namespace Qel
