#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace Qel {

/// Ends the process if what is made after this is not taken down in time: a thread that waits for a
/// database which does not answer cannot be woken. What was not committed is undone, as after a
/// power cut.
class EndInTime
{
public:
    using Clock = std::chrono::steady_clock;

    void By(Clock::time_point latest); ///< once

private:
    std::mutex lock_;
    std::condition_variable_any wake_;
    std::jthread thread_; ///< last: ends before what it uses
};

} // namespace Qel
