#include "faults/PostgresBed.h"
#include "faults/Scene.h"
#include "faults/SmallDisk.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 4;
constexpr auto TroubleTime = 30s;   ///< in which some client must have met the full disk
constexpr auto FullTime = 1s;       ///< from then on, how long it stays full
constexpr auto AnswerTime = 10s;    ///< in which a query is answered, be it with an error
constexpr int MostLeft = 64 * 1024; ///< bytes that are left free

} // namespace

/// The disk of the write-ahead log is full. PostgreSQL ends all sessions, and if it cannot recover,
/// itself; somebody makes room and starts it. What was acknowledged is there then, and the server
/// goes on without having been touched.
Outcome FillLog(const Task &task)
{
    const QString folder = task.bed.NewFolder();
    SmallDisk disk(folder);
    if (!disk.IsMounted())
        return disk.NotRun();
    PostgresBed bed(folder);
    Scene scene(task, bed.NewDatabase(bed.NewFolder()), ClientCount, Errors::UnknownEffect);
    const auto trouble = [&] { return scene.Refused() + scene.Lost(); };
    scene.site.StartServer();
    for (int round = 0; round < task.count; ++round) {
        Load load(scene.clients, scene.site.Port());
        scene.TimeToNextPost();
        const qint64 before = trouble();
        const Stopwatch full;
        do {
            // Old files of the log go, and make room.
            disk.Fill(Between(scene.random, 0, MostLeft));
            scene.AskMeanwhile(20ms, Scene::Answer::Any);
        } while (trouble() == before && full.Elapsed() < TroubleTime);
        if (trouble() == before)
            scene.findings.Add(u"no post met the full disk"_s);
        scene.AskMeanwhile(FullTime, Scene::Answer::Any);
        disk.Empty();
        bed.Restart(scene.site.Url(), Stop::Immediate);
        scene.back.Add(scene.site.TimeToAnswer());
        load.Stop();
        scene.Check();
    }
    const double longest = scene.queries.Quantile(1);
    if (longest > std::chrono::milliseconds(AnswerTime).count() * task.patience)
        scene.findings.Add(u"a query was answered only after %1"_s.arg(MillisecondsText(longest)));
    return scene.Result(
        u"%1 times full"_s.arg(Counted(task.count)),
        u"an answer or error meanwhile: %1; service back after the database was: %2"_s.arg(
            scene.queries.Text(), scene.back.Text()));
}

} // namespace Qel::Faults
