#include "e2e/Site.h"

#include "host/Session.h"
#include "support/ScreenDriver.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>

#include <sqlite3.h>

#include <csignal>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

const QString TheColleague =
    u"FROM USR_USER WHERE USER_ID = (SELECT MIN(USER_ID) FROM USR_USER WHERE USER_CODE <> 'admin'"
    " AND ENABLE_FLAG = '1' AND LAST_OPERATE <> 'D')"_s;

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
    if (!QFile::copy(QStringLiteral(QEL_SITE_SAMPLE), folder_.filePath(u"site.sqlite"_s)))
        qFatal("no %s: run e2e_FillSample first", QEL_SITE_SAMPLE);
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
                   DatabaseArguments() + QStringList{u"--listen"_s, u"127.0.0.1:%1"_s.arg(port_),
                                                     u"--operator"_s, u"admin"_s,
                                                     u"--exit-with-parent"_s});
    QTRY_VERIFY_WITH_TIMEOUT(server_->canReadLine(), 60'000);
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

QStringList Site::DatabaseArguments() const
{
    return {u"--database"_s, u"sqlite:"_s + folder_.filePath(u"site.sqlite"_s)};
}

QStringList Site::Select(const QString &sql) const
{
    return Run(sql, SQLITE_OPEN_READONLY);
}

void Site::Change(const QString &sql) const
{
    Run(sql, SQLITE_OPEN_READWRITE);
}

QStringList Site::Run(const QString &sql, int mode) const
{
    sqlite3 *database = nullptr;
    const QByteArray file = folder_.filePath(u"site.sqlite"_s).toUtf8();
    if (sqlite3_open_v2(file.constData(), &database, mode, nullptr) != SQLITE_OK)
        FailTest(u"cannot open the site's database"_s);
    sqlite3_busy_timeout(database, 10'000);
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

// --- The other operator
// ----------------------------------------------------------------------------

QString Site::Colleague() const
{
    return Select(u"SELECT USER_NAME "_s + TheColleague).value(0);
}

void Site::SignColleagueIn()
{
    if (!colleagueCode_.isEmpty())
        return;
    colleagueCode_ = Select(u"SELECT USER_CODE "_s + TheColleague).value(0);
    QProcess program;
    program.start(QStringLiteral(QEL_SERVER_PROGRAM),
                  DatabaseArguments() + QStringList{u"--set-token"_s, colleagueCode_});
    program.write(token_.toLatin1() + '\n');
    program.closeWriteChannel();
    program.waitForFinished();
    if (program.exitCode() != 0)
        FailTest(QString::fromUtf8(program.readAllStandardError()));
}

QString Site::PostAsColleague(const QString &manager, const QString &method,
                              const Wire::NamedValues &row)
{
    SignColleagueIn();
    QNetworkRequest request(QUrl(u"http://127.0.0.1:%1/NorvaneServlet"_s.arg(port_)));
    request.setRawHeader("Content-Type", Wire::JsonType);
    request.setRawHeader("Authorization",
                         "Basic " + (colleagueCode_ + u':' + token_).toUtf8().toBase64());
    QNetworkAccessManager network;
    const std::unique_ptr<QNetworkReply> reply(network.post(
        request, Wire::Encode(Wire::PostRequest{manager, method, {row}}, Wire::Format::Json)));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    if (!finished.wait(10'000) || reply->error() != QNetworkReply::NoError)
        FailTest(reply->errorString());
    return Wire::DecodePostAnswer(reply->readAll(), Wire::Format::Json).rows.value(0).code;
}

} // namespace Qel::Test
