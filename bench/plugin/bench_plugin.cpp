// What an operator waits for when the host takes the plug-in in: from the loading of the module to
// the first screen on the display. The host's own window is up before, with its fonts and style.

#include "PaintWatch.h"

#include "host/LocalServer.h"
#include "host/Plugin.h"
#include "host/Session.h"
#include "support/Timing.h"

#include <QApplication>
#include <QMainWindow>
#include <QProcess>
#include <QTabWidget>
#include <QToolBar>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Rounds = 11;
struct Phase
{
    const char *name;
    bool counts; ///< towards what the operator waits for at first
};

constexpr std::array Phases{
    Phase{"load the module, find its functions", true},
    Phase{"LibInit", true},
    Phase{"LibGetFormInfo", true},
    Phase{"LibOpenForm: ADMIN01 is made", true},
    Phase{"shown and painted", true},
    Phase{"a second one is made", false}, // what the first one loads for all is not in these
    Phase{"shown and painted", false},
};
constexpr char ServerVariable[] = "QEL_BENCH_SERVER";
constexpr char ParamsVariable[] = "QEL_BENCH_PARAMS";

/// One life of a host in this process; prints the milliseconds of each phase.
void RunOnce()
{
    const QUrl server(qEnvironmentVariable(ServerVariable));
    const QByteArray params = qgetenv(ParamsVariable);

    QMainWindow window;
    auto *tabs = new QTabWidget(&window);
    window.setCentralWidget(tabs);
    window.addToolBar(u"营运管理"_s)->addAction(u"集团管理"_s);
    window.resize(1280, 800);
    window.show();
    WaitForPaint(&window);

    std::unique_ptr<Host::Plugin> plugin;
    QList<Host::FormInfo> forms;
    QWidget *screen = nullptr;
    const auto open = [&] { screen = plugin->OpenForm(forms.front().name); };
    const auto show = [&] {
        tabs->setCurrentIndex(tabs->addTab(screen, forms.front().Title()));
        WaitForPaint(screen);
    };
    const std::array times{
        Milliseconds([&] { plugin = std::make_unique<Host::Plugin>(QStringLiteral(QEL_MODULE)); }),
        Milliseconds([&] { plugin->Init(&window, server, params); }),
        Milliseconds([&] { forms = plugin->Forms(); }),
        Milliseconds(open),
        Milliseconds(show),
        Milliseconds(open),
        Milliseconds(show),
    };
    for (const double time : times)
        std::printf("%f ", time);
    std::fflush(stdout);
}

/// The same in a process of its own.
std::array<double, Phases.size()> RunChild(const QString &program)
{
    QProcess child;
    child.start(program, {u"--once"_s});
    child.waitForFinished();
    const QByteArrayList words = child.readAllStandardOutput().simplified().split(' ');
    if (child.exitCode() != 0 || words.size() != std::ssize(Phases))
        qFatal("a round failed: %s", child.readAllStandardError().constData());
    std::array<double, Phases.size()> times{};
    for (std::size_t phase = 0; phase < times.size(); ++phase)
        times[phase] = words[static_cast<qsizetype>(phase)].toDouble();
    return times;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (QApplication::arguments().contains(u"--once"_s)) {
        RunOnce();
        return EXIT_SUCCESS;
    }

    Host::LocalServer server(u"admin"_s, QString());
    const QUrl address = server.Start(QStringLiteral(QEL_SERVER_PROGRAM));
    qputenv(ServerVariable, address.toEncoded());
    qputenv(ParamsVariable, Host::RunParamsOf(Host::FetchSession(address)));

    std::array<std::vector<double>, Phases.size()> times;
    std::vector<double> sums;
    for (int round = 0; round < Rounds; ++round) {
        double sum = 0;
        const auto phases = RunChild(QApplication::applicationFilePath());
        for (std::size_t phase = 0; phase < Phases.size(); ++phase) {
            times[phase].push_back(phases[phase]);
            sum += Phases[phase].counts ? phases[phase] : 0;
        }
        sums.push_back(sum);
    }
    const double whole = Median(sums);
    std::printf("the plug-in in a fresh process; medians of %d\n", Rounds);
    for (std::size_t phase = 0; phase < Phases.size(); ++phase) {
        const double median = Median(times[phase]);
        std::printf("%-38s %9.2f ms %6.0f %%\n", Phases[phase].name, median, 100 * median / whole);
    }
    std::printf("%-38s %9.2f ms\n", "together, without the second one", whole);
    return EXIT_SUCCESS;
}
