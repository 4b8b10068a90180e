#include "faults/Bed.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 6;
constexpr int LongestRun = 250'000; ///< microseconds of load before a stop

} // namespace

/// The database goes away under the running server, in several ways, and comes back. The server is
/// not restarted: it answers again by itself, and every client's journal is held against the
/// database.
Outcome RestartDatabase(const Task &task)
{
    Findings findings;
    Random random(task.seed);
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, ClientCount);
    auto clients = MakeClients(ClientCount, task.seed, findings);
    for (const auto &client : clients)
        client->SetErrors(Errors::UnknownEffect);
    site.StartServer();
    Times back;
    for (int round = 0; round < task.count; ++round) {
        const Stop how = std::array{Stop::Fast, Stop::Immediate, Stop::KillSession}[round % 3];
        Load load(clients, site.Port());
        std::this_thread::sleep_for(std::chrono::microseconds(Between(random, 0, LongestRun)));
        task.bed.Restart(site.Url(), how);
        back.Add(site.TimeToAnswer());
        load.Stop();
        CheckAll(clients, *site.Connect());
    }
    if (back.Quantile(1) > 1'000 * task.patience)
        findings.Add(u"the service was back only after %1 ms"_s.arg(back.Quantile(1)));
    return findings.Result(u"%1 restarts; %2"_s.arg(Counted(task.count), PostsText(clients)),
                           u"service back after the database was: "_s + back.Text());
}

} // namespace Qel::Faults
