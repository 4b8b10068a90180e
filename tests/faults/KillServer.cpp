#include "faults/Bed.h"
#include "faults/Scene.h"

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 6;
constexpr int LongestStart = 60'000; ///< microseconds
constexpr int EarlyKills = 8;        ///< one kill in so many comes while the server starts, too
constexpr double ReadyTime = 1'000;  ///< milliseconds

} // namespace

/// The server is killed at random instants while clients post. After each kill it starts again on
/// the same database and every client's journal is held against that.
Outcome KillServer(const Task &task)
{
    Scene scene(task, ClientCount);
    Times ran;
    std::chrono::nanoseconds longest{};
    QString inLongest;
    scene.site.StartServer();
    for (int kill = 0; kill < task.count; ++kill) {
        Load load(scene.clients, scene.site.Port());
        scene.LetRun();
        scene.site.KillServer();
        load.Stop();
        task.bed.WaitUntilQuiet(scene.site.Url());
        if (Between(scene.random, 1, EarlyKills) == 1)
            scene.site.KillStarting(
                std::chrono::microseconds(Between(scene.random, 0, LongestStart)));
        const auto time = scene.site.StartServer();
        const Site::Effort effort = scene.site.ServerEffort();
        scene.back.Add(time);
        ran.Add(effort.ran);
        if (time > longest) {
            longest = time;
            inLongest = u"%1 at work, %2 waiting for a processor"_s.arg(
                MillisecondsText(effort.ran), MillisecondsText(effort.waited));
        }
        scene.Check();
    }
    if (scene.back.Quantile(1) > ReadyTime * task.patience)
        scene.findings.Add(
            u"ready again after %1 (%2)"_s.arg(MillisecondsText(longest), inLongest));
    return scene.Result(u"%1 kills"_s.arg(Counted(task.count)),
                        u"ready again: %1 (%2); at work for that: %3"_s.arg(scene.back.Text(),
                                                                            inLongest, ran.Text()));
}

} // namespace Qel::Faults
