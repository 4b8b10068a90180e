#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace Qel::Store {

/// Calls something now and then, on a thread of its own, from its making until its end, which waits
/// for a call that runs. A call that ends in EQelError is made up for by the next one: the database
/// is busy or away.
class NowAndThen
{
public:
    using Work = std::function<void(const std::stop_token &)>;
    enum class First { AtOnce, AfterOneInterval };

    NowAndThen(std::chrono::milliseconds interval, First first, Work work);

private:
    void Run(const std::stop_token &stop);

    const std::chrono::milliseconds interval_;
    const First first_;
    const Work work_;
    std::mutex lock_;
    std::condition_variable_any wake_;
    std::jthread thread_; ///< last: ends before what it uses
};

} // namespace Qel::Store
