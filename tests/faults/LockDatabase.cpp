#include "faults/Scene.h"

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 4;
const QStringList RequestTime{u"--request-time"_s, u"6"_s};
/// One time shorter than a post has, one time longer.
constexpr std::chrono::seconds LockTimes[] = {std::chrono::seconds(2), std::chrono::seconds(13)};

} // namespace

/// Another process holds the write lock of the database file. Queries are answered meanwhile;
/// posts wait, or, when that takes too long, are answered with an error and have no effect.
Outcome LockDatabase(const Task &task)
{
    Scene scene(task, ClientCount);
    scene.site.StartServer(RequestTime);
    for (int round = 0; round < task.count; ++round) {
        Load load(scene.clients, scene.site.Port());
        const auto other = scene.site.Connect();
        auto lock = std::make_unique<Store::Transaction>(*other);
        scene.AskMeanwhile(LockTimes[round % 2]);
        lock.reset();
        scene.back.Add(scene.TimeToNextPost());
        load.Stop();
        scene.Check();
    }
    if (scene.Lost() > 0)
        scene.findings.Add(u"%1 posts were not answered"_s.arg(scene.Lost()));
    return scene.Result(u"%1 locks"_s.arg(Counted(task.count)),
                        u"a query meanwhile: %1; a post afterwards: %2"_s.arg(scene.queries.Text(),
                                                                              scene.back.Text()));
}

} // namespace Qel::Faults
