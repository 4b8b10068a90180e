#include "faults/Bed.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 6;
constexpr int LongestRun = 250'000; ///< microseconds of load before a kill
constexpr int LongestStart = 60'000;
constexpr int EarlyKills = 8;       ///< one kill in so many comes while the server starts, too
constexpr double ReadyTime = 1'000; ///< milliseconds

} // namespace

/// The server is killed at random instants while clients post. After each kill it starts again on
/// the same database and every client's journal is held against that.
Outcome KillServer(const Task &task)
{
    Findings findings;
    Random random(task.seed);
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, ClientCount);
    auto clients = MakeClients(ClientCount, task.seed, findings);
    Times ready;
    Times ran;
    std::chrono::nanoseconds longest{};
    QString inLongest;
    site.StartServer();
    for (int kill = 0; kill < task.count; ++kill) {
        Load load(clients, site.Port());
        std::this_thread::sleep_for(std::chrono::microseconds(Between(random, 0, LongestRun)));
        site.KillServer();
        load.Stop();
        task.bed.WaitUntilQuiet(site.Url());
        if (Between(random, 1, EarlyKills) == 1)
            site.KillStarting(std::chrono::microseconds(Between(random, 0, LongestStart)));
        const auto time = site.StartServer();
        const Site::Effort effort = site.ServerEffort();
        ready.Add(time);
        ran.Add(effort.ran);
        if (time > longest) {
            longest = time;
            inLongest = u"%1 at work, %2 waiting for a processor"_s.arg(
                MillisecondsText(effort.ran), MillisecondsText(effort.waited));
        }
        CheckAll(clients, *site.Connect());
    }
    if (ready.Quantile(1) > ReadyTime * task.patience)
        findings.Add(u"ready again after %1 (%2)"_s.arg(MillisecondsText(longest), inLongest));
    return findings.Result(
        u"%1 kills; %2"_s.arg(Counted(task.count), PostsText(clients)),
        u"ready again: %1 (%2); at work for that: %3"_s.arg(ready.Text(), inLongest, ran.Text()));
}

} // namespace Qel::Faults
