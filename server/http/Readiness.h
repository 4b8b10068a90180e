#pragma once

#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace Qel::Http {

/// Whether the database answers, found out on a thread of its own, so that whoever asks is told
/// within a second even if it hangs.
class Readiness
{
public:
    /// Throws if the database cannot be used. It should give up by itself after Patience; until it
    /// does, everyone who asks is told so at once.
    using Check = std::function<void()>;

    explicit Readiness(Check check);
    ~Readiness(); ///< waits for a check that runs
    Q_DISABLE_COPY_MOVE(Readiness)

    /// Why the database cannot be used; nothing: it can. From any thread.
    std::optional<QString> Trouble();

    static constexpr std::chrono::milliseconds Patience{800};

private:
    using Clock = std::chrono::steady_clock;

    void Work();

    Check check_;
    std::mutex lock_;
    std::condition_variable changed_;
    bool wanted_ = false; ///< a check is to be begun, or runs
    bool ending_ = false;
    qint64 finished_ = 0;            ///< checks so far
    Clock::time_point begun_;        ///< when the one that is wanted was asked for
    std::optional<QString> trouble_; ///< what the last one found
    std::thread thread_;
};

} // namespace Qel::Http
