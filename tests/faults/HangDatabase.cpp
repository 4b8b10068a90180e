#include "faults/Bed.h"
#include "faults/Scenarios.h"
#include "faults/Site.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 6;
constexpr int LongestRun = 250'000; ///< microseconds of load before the database hangs
constexpr auto HangTime = 2s;
constexpr double AnswerTime = 1'000; ///< milliseconds in which a load balancer is answered

/// Status of the answer to a question of a load balancer; 0: none.
int StatusOf(const Site &site, const QByteArray &path)
{
    return Line(site.Port()).Ask("GET " + path + " HTTP/1.1\r\nHost: localhost\r\n\r\n").status;
}

} // namespace

/// The database hangs under load: connections stand, and nothing comes over them. The server says
/// in time that it is not ready, that it lives, and goes on as soon as the database does; each post
/// is there whole or not at all.
Outcome HangDatabase(const Task &task)
{
    Findings findings;
    Random random(task.seed);
    const QString folder = task.bed.NewFolder();
    Site site(task.bed.NewDatabase(folder), folder, task.withSampleData, ClientCount);
    auto clients = MakeClients(ClientCount, task.seed, findings);
    for (const auto &client : clients)
        client->SetErrors(Errors::UnknownEffect);
    site.StartServer();
    Times answers;
    Times back;
    const auto ask = [&](const QByteArray &path, int expected) {
        const Stopwatch watch;
        if (const int status = StatusOf(site, path); status != expected)
            findings.Add(u"%1 is answered with %2 and not with %3"_s.arg(QString::fromLatin1(path))
                             .arg(status)
                             .arg(expected));
        answers.Add(watch.Elapsed());
    };
    for (int round = 0; round < task.count; ++round) {
        ask("/readyz", 200);
        Load load(clients, site.Port());
        std::this_thread::sleep_for(std::chrono::microseconds(Between(random, 0, LongestRun)));
        task.bed.Freeze();
        for (const Stopwatch frozen; frozen.Elapsed() < HangTime;) {
            ask("/readyz", 503);
            ask("/healthz", 200);
            std::this_thread::sleep_for(50ms); // pace, not a wait
        }
        task.bed.Thaw();
        const Stopwatch watch;
        while (StatusOf(site, "/readyz") != 200 && watch.Elapsed() < 30s)
            std::this_thread::sleep_for(5ms); // a load balancer that asks again
        back.Add(watch.Elapsed());
        load.Stop();
        CheckAll(clients, *site.Connect());
    }
    if (answers.Quantile(1) > AnswerTime * task.patience)
        findings.Add(u"/readyz or /healthz took %1"_s.arg(MillisecondsText(answers.Quantile(1))));
    if (back.Quantile(1) > AnswerTime * task.patience)
        findings.Add(u"ready again only after %1"_s.arg(MillisecondsText(back.Quantile(1))));
    return findings.Result(u"hung %1 times; %2"_s.arg(Counted(task.count), PostsText(clients)),
                           u"`/readyz` and `/healthz`: %1; ready again after it went on: %2"_s.arg(
                               answers.Text(), back.Text()));
}

} // namespace Qel::Faults
