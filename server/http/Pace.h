#pragma once

#include "http/Message.h"

#include <algorithm>
#include <cstddef>

namespace Qel::Http {

/// How long the server waits for a client that sends a request or takes an answer.
struct Patience
{
    /// Without a byte; also for a request's head as a whole, and for a TLS handshake.
    std::chrono::milliseconds silence{10'000};
    std::size_t leastRate = 1'024; ///< bytes a second, over all of a body
};

/// When the next bytes of one body must have moved: nobody holds a connection by a byte now and
/// then.
class Pace
{
public:
    Pace(const Patience &patience, Clock::time_point deadline)
        : patience_(patience)
        , deadline_(deadline)
    {
    }

    /// `moved`: bytes so far.
    Clock::time_point Due(std::size_t moved) const
    {
        const auto earned = std::chrono::milliseconds(moved * 1'000 / patience_.leastRate);
        return std::min(
            {Clock::now() + patience_.silence, begin_ + patience_.silence + earned, deadline_});
    }

private:
    Patience patience_;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point deadline_;
};

} // namespace Qel::Http
