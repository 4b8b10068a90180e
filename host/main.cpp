#include "host/Chinese.h"
#include "host/ErrorDialog.h"
#include "host/LocalServer.h"
#include "host/MainWindow.h"
#include "host/Options.h"
#include "host/Plugin.h"
#include "host/Session.h"
#include "host/Tour.h"

#include <QApplication>
#include <QDir>
#include <QInputDialog>
#include <QProgressDialog>
#include <QStandardPaths>

#include <cstdio>
#include <memory>

using namespace Qel::Host;
using namespace Qt::StringLiterals;

namespace {

constexpr char TokenVariable[] = "QEL_OPERATOR_TOKEN";

/// Where the sample database lives between sessions; empty for the tour, which wants a fresh one.
QString SampleDatabase(const Options &options)
{
    if (!options.screenshots.isEmpty())
        return {};
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
    return folder.mkpath(u"."_s) ? folder.filePath(u"demo.sqlite"_s) : QString();
}

QUrl StartServer(LocalServer &server, const Options &options)
{
    QProgressDialog wait(u"正在准备本机服务和示例数据……"_s, {}, 0, 0);
    wait.setWindowTitle(u"药品交易平台 · 营运管理"_s);
    if (options.screenshots.isEmpty())
        wait.show();
    return server.Start(LocalServer::Find());
}

/// The address with a token: its own, the environment's, or what the user types.
QUrl WithToken(QUrl server)
{
    if (!server.password().isEmpty())
        return server;
    QString token = qEnvironmentVariable(TokenVariable);
    if (token.isEmpty())
        token = QInputDialog::getText(nullptr, u"登录"_s,
                                      u"用户 %1 的访问令牌："_s.arg(server.userName()),
                                      QLineEdit::Password);
    server.setPassword(token);
    return server;
}

int Run(QApplication &application, const Options &options)
{
    Plugin plugin(Plugin::Find());

    std::unique_ptr<LocalServer> own;
    QUrl server = options.server;
    if (server.isEmpty()) {
        own = std::make_unique<LocalServer>(options.user.isEmpty() ? u"admin"_s : options.user,
                                            SampleDatabase(options));
        server = StartServer(*own, options);
    } else {
        server = WithToken(server);
    }
    qunsetenv(TokenVariable);
    const Session session = FetchSession(server);

    MainWindow window(plugin);
    plugin.Init(&window, server, RunParamsOf(session));
    window.ShowSession(session.value(u"UserName"_s), session.value(u"UserCode"_s),
                       ShownAddress(server));

    Tour tour(window, options.screenshots);
    if (!options.screenshots.isEmpty()) {
        window.resize(1280, 800);
        QObject::connect(&tour, &Tour::Ended, &application, [](const QString &problem) {
            if (!problem.isEmpty())
                std::fprintf(stderr, "%s\n", qUtf8Printable(problem));
            QApplication::exit(problem.isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE);
        });
        tour.Start();
    }
    window.show();
    return QApplication::exec();
}

void Tell(const QString &problem, bool inWindow)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(problem));
    if (inWindow)
        ErrorDialog(problem).exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"qel-host"_s);
    QApplication::setOrganizationName(u"qel"_s);
    QApplication::setApplicationVersion(QStringLiteral(QEL_VERSION));
    QApplication::setDesktopFileName(u"org.qel.host"_s);
    SetUpChinese(application);

    bool interactive = true;
    try {
        const Options options = ParseOptions(QApplication::arguments());
        interactive = options.screenshots.isEmpty();
        return Run(application, options);
    } catch (const std::exception &error) {
        Tell(QString::fromUtf8(error.what()), interactive);
        return EXIT_FAILURE;
    }
}
