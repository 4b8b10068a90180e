#include "MixedLoad.h"

#include "Cases.h"
#include "Rounds.h"

#include "server/HttpLine.h"
#include "server/ServerRun.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace Qel::Bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds SampleTime{2};

/// One client's requests, one after the other.
class Client
{
public:
    Client(quint16 port, int number)
        : line_(port)
        , number_(number)
    {
    }

    void AskNext()
    {
        constexpr int turn = 10;
        constexpr int regions = 1'000;
        switch (const int at = asked_++; at % turn) {
        case 0:
        case 1:
            last_ = PostRequest(Change(number_, stored_++));
            ExpectStored(line_.Ask(last_));
            break;
        case 2: // as after a broken connection
            ExpectStored(line_.Ask(last_));
            break;
        case 3:
            if (at / turn % turn == 0) {
                line_.Ask(PageRequest(ScanningPage().sql));
                break;
            }
            [[fallthrough]];
        default:
            line_.Ask(PageRequest(IndexedPage((at * 7 + number_) % regions).sql));
        }
    }

private:
    HttpLine line_;
    int number_;
    int asked_ = 0;
    int stored_ = 0;
    QByteArray last_;
};

} // namespace

MixedResult RunMixedLoad(const QString &database, int clients, std::chrono::seconds time)
{
    const ServerRun server(database);
    std::vector<std::unique_ptr<Client>> all;
    for (int number = 0; number < clients; ++number)
        all.push_back(std::make_unique<Client>(server.Port(), number));

    MixedResult result;
    std::jthread watch([&](const std::stop_token &stop) {
        std::mutex lock;
        std::condition_variable_any wake;
        std::unique_lock locked(lock);
        const auto begin = Clock::now();
        while (!wake.wait_for(locked, stop, SampleTime, [] { return false; }) &&
               !stop.stop_requested())
            result.memory.push_back(
                {std::chrono::duration<double, std::ratio<60>>(Clock::now() - begin).count(),
                 static_cast<double>(ResidentKiB(server.ProcessId()))});
    });
    result.rate =
        Rate(clients, time, [&](int client) { all[static_cast<std::size_t>(client)]->AskNext(); });
    watch.request_stop();
    watch.join();
    return result;
}

} // namespace Qel::Bench
