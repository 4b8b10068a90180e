#include "e2e/Site.h"

#include "host/Session.h"
#include "support/ScreenDriver.h"

#include <QTest>

#include <sqlite3.h>

#include <csignal>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

/// The library stays loaded until the process ends, as in a host.
Host::Plugin &Library()
{
    static Host::Plugin plugin(QStringLiteral(QEL_MODULE));
    return plugin;
}

} // namespace

Site::Site()
    : token_(u"0123456789abcdef0123456789abcdef"_s)
{
    qputenv("XDG_CONFIG_HOME", folder_.path().toUtf8());
    qputenv("XDG_DATA_HOME", folder_.path().toUtf8());
    StartServer();
    QUrl url(u"http://127.0.0.1:%1"_s.arg(port_));
    url.setUserName(u"admin"_s);
    url.setPassword(token_);
    const Host::Session session = Host::FetchSession(url);
    window_ = std::make_unique<Host::MainWindow>(Library());
    Library().Init(window_.get(), url, Host::RunParamsOf(session));
    window_->show();
}

Site::~Site()
{
    window_.reset();
    KillServer();
}

void Site::StartServer()
{
    server_ = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QEL_OPERATOR_TOKEN"_s, token_);
    server_->setProcessEnvironment(environment);
    server_->setStandardErrorFile(folder_.filePath(u"server.log"_s), QIODevice::Append);
    server_->start(QStringLiteral(QEL_SERVER_PROGRAM),
                   {u"--database"_s, u"sqlite:"_s + folder_.filePath(u"site.sqlite"_s), u"--demo"_s,
                    u"--listen"_s, u"127.0.0.1:%1"_s.arg(port_), u"--operator"_s, u"admin"_s,
                    u"--exit-with-parent"_s});
    QTRY_VERIFY_WITH_TIMEOUT(server_->canReadLine(), 30'000);
    port_ = QUrl(QString::fromLatin1(server_->readLine().trimmed()).section(u' ', -1)).port();
}

void Site::KillServer()
{
    if (!server_)
        return;
    server_->kill();
    server_->waitForFinished();
    server_.reset();
}

void Site::FreezeServer()
{
    ::kill(pid_t(server_->processId()), SIGSTOP);
}

QWidget *Site::OpenScreen(const QString &code)
{
    QWidget *screen = window_->OpenScreen(code);
    if (!screen)
        FailTest(u"no screen "_s + code);
    QCoreApplication::processEvents();
    return screen;
}

QStringList Site::Select(const QString &sql) const
{
    sqlite3 *database = nullptr;
    const QByteArray file = folder_.filePath(u"site.sqlite"_s).toUtf8();
    if (sqlite3_open_v2(file.constData(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
        FailTest(u"cannot open the site's database"_s);
    QStringList values;
    const auto collect = [](void *list, int, char **columns, char **) {
        static_cast<QStringList *>(list)->append(QString::fromUtf8(columns[0]));
        return 0;
    };
    char *problem = nullptr;
    sqlite3_exec(database, sql.toUtf8().constData(), collect, &values, &problem);
    const QString said = QString::fromUtf8(problem);
    sqlite3_free(problem);
    sqlite3_close(database);
    if (!said.isEmpty())
        FailTest(said);
    return values;
}

} // namespace Qel::Test
