#include "faults/Bed.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

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
    Findings findings;
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, ClientCount);
    auto clients = MakeClients(ClientCount, task.seed, findings);
    site.StartServer(RequestTime);
    Times queries;
    Times back;
    for (int round = 0; round < task.count; ++round) {
        const auto lockTime = LockTimes[round % 2];
        Load load(clients, site.Port());
        const auto other = site.Connect();
        auto lock = std::make_unique<Store::Transaction>(*other);
        for (const Stopwatch held; held.Elapsed() < lockTime;) {
            const Stopwatch watch;
            if (!site.Answers())
                findings.Add(u"a query was not answered while the file was locked"_s);
            queries.Add(watch.Elapsed());
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // pace, not a wait
        }
        lock.reset();
        back.Add(TimeToNextPost(clients));
        load.Stop();
        CheckAll(clients, *other);
        for (const auto &client : clients)
            if (client->Lost() > 0)
                findings.Add(u"%1 posts were not answered"_s.arg(client->Lost()));
    }
    return findings.Result(
        u"%1 locks; %2"_s.arg(Counted(task.count), PostsText(clients)),
        u"a query meanwhile: %1; a post afterwards: %2"_s.arg(queries.Text(), back.Text()));
}

} // namespace Qel::Faults
