#include "faults/Bed.h"
#include "faults/Scene.h"
#include "faults/SmallDisk.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 4;
constexpr auto RefusalTime = 30s;   ///< in which some post must have met the full disk
constexpr auto FullTime = 1s;       ///< from then on, how long it stays full
constexpr int MostLeft = 64 * 1024; ///< bytes that are left free

} // namespace

/// The disk that the database grows on is full for a while. Posts that need room are answered with
/// an error and have no effect; queries are answered as ever; when there is room, posts are stored
/// again, without anybody starting anything.
Outcome FillDisk(const Task &task)
{
    const QString folder = task.bed.NewFolder();
    SmallDisk disk(folder);
    if (!disk.IsMounted())
        return disk.NotRun();
    Scene scene(task, task.bed.NewDatabase(folder), ClientCount);
    scene.site.StartServer();
    for (int round = 0; round < task.count; ++round) {
        Load load(scene.clients, scene.site.Port());
        scene.TimeToNextPost();
        const qint64 before = scene.Refused();
        disk.Fill(Between(scene.random, 0, MostLeft));
        const Stopwatch full;
        while (scene.Refused() == before && full.Elapsed() < RefusalTime)
            scene.AskMeanwhile(20ms);
        if (scene.Refused() == before)
            scene.findings.Add(u"no post met the full disk"_s);
        scene.AskMeanwhile(FullTime);
        disk.Empty();
        scene.back.Add(scene.TimeToNextPost());
        load.Stop();
        scene.Check();
    }
    return scene.Result(u"%1 times full"_s.arg(Counted(task.count)),
                        u"a query meanwhile: %1; a post once there is room: %2"_s.arg(
                            scene.queries.Text(), scene.back.Text()));
}

} // namespace Qel::Faults
