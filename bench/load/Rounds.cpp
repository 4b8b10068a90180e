#include "Rounds.h"

#include <algorithm>
#include <atomic>
#include <latch>
#include <thread>

namespace Qel::Bench {

double Rate(int clients, std::chrono::milliseconds time, const Work &work)
{
    using Clock = std::chrono::steady_clock;
    std::atomic<long> done = 0;
    std::latch ready(clients + 1);
    Clock::time_point end;
    std::vector<std::jthread> threads;
    for (int client = 0; client < clients; ++client) {
        threads.emplace_back([&, client] {
            ready.arrive_and_wait();
            while (Clock::now() < end) {
                work(client);
                ++done;
            }
        });
    }
    const auto begin = Clock::now();
    end = begin + time;
    ready.arrive_and_wait();
    for (std::jthread &thread : threads)
        thread.join();
    return static_cast<double>(done) / std::chrono::duration<double>(Clock::now() - begin).count();
}

std::vector<double> Rates::Ratios() const
{
    std::vector<double> ratios;
    std::ranges::transform(own, peer, std::back_inserter(ratios), std::divides<>());
    return ratios;
}

Rates MeasureInTurn(int rounds, int clients, std::chrono::milliseconds time, const Work &own,
                    const Work &peer)
{
    Rate(clients, time / 2, own);
    Rate(clients, time / 2, peer);
    Rates rates;
    for (int round = 0; round < rounds; ++round) {
        const auto measureOwn = [&] { rates.own.push_back(Rate(clients, time, own)); };
        const bool ownFirst = round % 2 == 0;
        if (ownFirst)
            measureOwn();
        rates.peer.push_back(Rate(clients, time, peer));
        if (!ownFirst)
            measureOwn();
    }
    return rates;
}

} // namespace Qel::Bench
