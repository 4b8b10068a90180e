#include "e2e/Site.h"

#include "demo/Demo.h"
#include "host/Session.h"
#include "store/Schema.h"
#include "store/Statistics.h"
#include "support/ScreenDriver.h"

#include <QDate>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>

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

/// As the server does with --demo.
void FillSample(Store::Connection &connection)
{
    Store::CreateSchema(connection);
    Demo::Fill(connection, QDate::currentDate());
    Store::UpdateStatistics(connection);
}

} // namespace

QString BeforeTheStory()
{
    return u'\'' + QDate::currentDate().addDays(-2).toString(Qt::ISODate) + u'\'';
}

Site::Site()
    : token_(u"0123456789abcdef0123456789abcdef"_s)
{
    qputenv("XDG_CONFIG_HOME", folder_.path().toUtf8());
    qputenv("XDG_DATA_HOME", folder_.path().toUtf8());
    const QString file = folder_.filePath(u"site.sqlite"_s);
    if (TestsRunOnPostgres())
        postgres_ = std::make_unique<TestPostgres>(u"template_site"_s, FillSample);
    else if (!QFile::copy(QStringLiteral(QEL_SITE_SAMPLE), file))
        qFatal("no %s: run e2e_FillSample first", QEL_SITE_SAMPLE);
    url_ = postgres_ ? postgres_->Url() : u"sqlite:"_s + file;
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
    return {u"--database"_s, url_};
}

QStringList Site::Select(const QString &sql) const
{
    const auto connection = Store::Database::Open(url_)->OpenWriter();
    const auto rows = connection->Prepare(sql.toUtf8());
    QStringList lines;
    while (rows->Step()) {
        const QString null = rows->ColumnCount() > 1 ? u"-"_s : QString();
        QStringList values;
        for (int column = 0; column < rows->ColumnCount(); ++column)
            values << (rows->IsNull(column) ? null : rows->ColumnText(column));
        lines << values.join(u'/');
    }
    return lines;
}

void Site::Change(const QString &sql) const
{
    Store::Database::Open(url_)->OpenWriter()->Execute(sql.toUtf8());
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
