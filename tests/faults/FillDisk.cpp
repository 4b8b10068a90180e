#include "faults/Bed.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"
#include "faults/SmallDisk.h"

#include <QDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 4;
constexpr auto RefusalTime = 30s;   ///< in which some post must have met the full disk
constexpr auto FullTime = 1s;       ///< from then on, how long it stays full
constexpr int MostLeft = 64 * 1024; ///< bytes that are left free

/// Holds good queries against the server for this long.
void AskMeanwhile(const Site &site, std::chrono::nanoseconds time, Times &queries,
                  Findings &findings)
{
    for (const Stopwatch held; held.Elapsed() < time;) {
        const Stopwatch watch;
        if (!site.Answers())
            findings.Add(u"a query was not answered while the disk was full"_s);
        queries.Add(watch.Elapsed());
        std::this_thread::sleep_for(20ms); // pace, not a wait
    }
}

qint64 RefusedBy(const std::vector<std::unique_ptr<Client>> &clients)
{
    qint64 refused = 0;
    for (const auto &client : clients)
        refused += client->Refused();
    return refused;
}

} // namespace

/// The disk that the database grows on is full for a while. Posts that need room are answered with
/// an error and have no effect; queries are answered as ever; when there is room, posts are stored
/// again, without anybody starting anything.
Outcome FillDisk(const Task &task)
{
    Findings findings;
    Random random(task.seed);
    const QString folder = task.bed.NewFolder();
    const QString diskFolder = folder + u"/disk"_s;
    QDir().mkdir(diskFolder);
    SmallDisk disk(diskFolder);
    if (!disk.IsMounted())
        return findings.Result(u"not run: only root can mount a small disk"_s, {});
    Site site(task.bed.NewDatabase(diskFolder), folder, false, ClientCount);
    auto clients = MakeClients(ClientCount, task.seed, findings);
    site.StartServer();
    Times queries;
    Times back;
    for (int round = 0; round < task.count; ++round) {
        Load load(clients, site.Port());
        TimeToNextPost(clients);
        const qint64 before = RefusedBy(clients);
        disk.Fill(Between(random, 0, MostLeft));
        const Stopwatch full;
        while (RefusedBy(clients) == before && full.Elapsed() < RefusalTime)
            AskMeanwhile(site, 20ms, queries, findings);
        if (RefusedBy(clients) == before)
            findings.Add(u"no post met the full disk"_s);
        AskMeanwhile(site, FullTime, queries, findings);
        disk.Empty();
        back.Add(TimeToNextPost(clients));
        load.Stop();
        CheckAll(clients, *site.Connect());
    }
    return findings.Result(
        u"%1 times full; %2"_s.arg(Counted(task.count), PostsText(clients)),
        u"a query meanwhile: %1; a post once there is room: %2"_s.arg(queries.Text(), back.Text()));
}

} // namespace Qel::Faults
