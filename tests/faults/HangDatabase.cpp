#include "faults/Bed.h"
#include "faults/Scene.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace Qel::Faults {

namespace {

constexpr int ClientCount = 6;
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
    Scene scene(task, ClientCount, Errors::UnknownEffect);
    scene.site.StartServer();
    Times answers;
    const auto ask = [&](const QByteArray &path, int expected) {
        const Stopwatch watch;
        if (const int status = StatusOf(scene.site, path); status != expected)
            scene.findings.Add(
                u"%1 is answered with %2 and not with %3"_s.arg(QString::fromLatin1(path))
                    .arg(status)
                    .arg(expected));
        answers.Add(watch.Elapsed());
    };
    for (int round = 0; round < task.count; ++round) {
        ask("/readyz", 200);
        Load load(scene.clients, scene.site.Port());
        scene.LetRun();
        task.bed.Freeze();
        for (const Stopwatch frozen; frozen.Elapsed() < HangTime;) {
            ask("/readyz", 503);
            ask("/healthz", 200);
            std::this_thread::sleep_for(50ms); // pace, not a wait
        }
        task.bed.Thaw();
        const Stopwatch watch;
        while (StatusOf(scene.site, "/readyz") != 200 && watch.Elapsed() < 30s)
            std::this_thread::sleep_for(5ms); // a load balancer that asks again
        scene.back.Add(watch.Elapsed());
        load.Stop();
        scene.Check();
    }
    if (answers.Quantile(1) > AnswerTime * task.patience)
        scene.findings.Add(
            u"/readyz or /healthz took %1"_s.arg(MillisecondsText(answers.Quantile(1))));
    if (scene.back.Quantile(1) > AnswerTime * task.patience)
        scene.findings.Add(
            u"ready again only after %1"_s.arg(MillisecondsText(scene.back.Quantile(1))));
    return scene.Result(u"hung %1 times"_s.arg(Counted(task.count)),
                        u"`/readyz` and `/healthz`: %1; ready again after it went on: %2"_s.arg(
                            answers.Text(), scene.back.Text()));
}

} // namespace Qel::Faults
