#include "faults/Bed.h"
#include "faults/Scene.h"

#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

/// The database goes away under the running server, in several ways, and comes back. The server is
/// not restarted: it answers again by itself, and every client's journal is held against the
/// database.
Outcome RestartDatabase(const Task &task)
{
    constexpr int clientCount = 6;
    Scene scene(task, clientCount, Errors::UnknownEffect);
    scene.site.StartServer();
    for (int round = 0; round < task.count; ++round) {
        const Stop how = std::array{Stop::Fast, Stop::Immediate, Stop::KillSession}[round % 3];
        Load load(scene.clients, scene.site.Port());
        scene.LetRun();
        task.bed.Restart(scene.site.Url(), how);
        scene.back.Add(scene.site.TimeToAnswer());
        load.Stop();
        scene.Check();
    }
    if (scene.back.Quantile(1) > 1'000 * task.patience)
        scene.findings.Add(u"the service was back only after %1 ms"_s.arg(scene.back.Quantile(1)));
    return scene.Result(u"%1 restarts"_s.arg(Counted(task.count)),
                        u"service back after the database was: "_s + scene.back.Text());
}

} // namespace Qel::Faults
