#include "faults/PostgresBed.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"
#include "faults/SmallDisk.h"

#include <QDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 4;
constexpr auto TroubleTime = 30s;   ///< in which some client must have met the full disk
constexpr auto FullTime = 1s;       ///< from then on, how long it stays full
constexpr auto AnswerTime = 10s;    ///< in which a query is answered, be it with an error
constexpr int MostLeft = 64 * 1024; ///< bytes that are left free

/// Posts whose clients have seen that something is wrong.
qint64 TroubleOf(const std::vector<std::unique_ptr<Client>> &clients)
{
    qint64 trouble = 0;
    for (const auto &client : clients)
        trouble += client->Refused() + client->Lost();
    return trouble;
}

/// Queries are answered in time, with their row or with an error.
void AskMeanwhile(const Site &site, std::chrono::nanoseconds time, Times &answers,
                  Findings &findings)
{
    for (const Stopwatch held; held.Elapsed() < time;) {
        const Stopwatch watch;
        if (Line(site.Port()).Ask(GoodQuery()).status == 0)
            findings.Add(u"a query had no answer while the disk of the log was full"_s);
        answers.Add(watch.Elapsed());
        std::this_thread::sleep_for(20ms); // pace, not a wait
    }
}

} // namespace

/// The disk of the write-ahead log is full. PostgreSQL ends all sessions, and if it cannot recover,
/// itself; somebody makes room and starts it. What was acknowledged is there then, and the server
/// goes on without having been touched.
Outcome FillLog(const Task &task)
{
    Findings findings;
    Random random(task.seed);
    const QString diskFolder = task.bed.NewFolder();
    SmallDisk disk(diskFolder);
    if (!disk.IsMounted())
        return findings.Result(u"not run: only root can mount a small disk"_s, {});
    PostgresBed bed(diskFolder);
    const QString folder = bed.NewFolder();
    Site site(bed.NewDatabase(folder), folder, false, ClientCount);
    auto clients = MakeClients(ClientCount, task.seed, findings);
    for (const auto &client : clients)
        client->SetErrors(Errors::UnknownEffect);
    site.StartServer();
    Times answers;
    Times back;
    for (int round = 0; round < task.count; ++round) {
        Load load(clients, site.Port());
        TimeToNextPost(clients);
        const qint64 before = TroubleOf(clients);
        const Stopwatch full;
        do {
            disk.Fill(Between(random, 0, MostLeft)); // old files of the log go, and make room
            AskMeanwhile(site, 20ms, answers, findings);
        } while (TroubleOf(clients) == before && full.Elapsed() < TroubleTime);
        if (TroubleOf(clients) == before)
            findings.Add(u"no post met the full disk"_s);
        AskMeanwhile(site, FullTime, answers, findings);
        disk.Empty();
        bed.Restart(site.Url(), Stop::Immediate);
        back.Add(site.TimeToAnswer());
        load.Stop();
        CheckAll(clients, *site.Connect());
    }
    if (answers.Quantile(1) > std::chrono::milliseconds(AnswerTime).count() * task.patience)
        findings.Add(
            u"a query was answered only after %1"_s.arg(MillisecondsText(answers.Quantile(1))));
    return findings.Result(
        u"%1 times full; %2"_s.arg(Counted(task.count), PostsText(clients)),
        u"an answer or error meanwhile: %1; service back after the database was: %2"_s.arg(
            answers.Text(), back.Text()));
}

} // namespace Qel::Faults
