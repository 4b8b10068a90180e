#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace Qel::Bench {

/// One client's next request; `client` counts from 0. Called on a thread of that client's own.
using Work = std::function<void(int client)>;

/// How often `work` was done a second by so many clients at once, each beginning again as soon as
/// it has ended. What has begun when the time is up is waited for and counts.
double Rate(int clients, std::chrono::milliseconds time, const Work &work);

/// Own rate and peer's of several rounds.
struct Rates
{
    std::vector<double> own;
    std::vector<double> peer;

    std::vector<double> Ratios() const; ///< own / peer, round by round
};

/// The two take turns (own, peer, peer, own, ...), so that what else the machine does falls on
/// both. A first round of each, which fills caches, does not count.
Rates MeasureInTurn(int rounds, int clients, std::chrono::milliseconds time, const Work &own,
                    const Work &peer);

} // namespace Qel::Bench
