#include "EndInTime.h"
#include "Options.h"
#include "admin/Command.h"
#include "demo/Demo.h"
#include "http/HttpServer.h"
#include "http/Metrics.h"
#include "http/RequestLog.h"
#include "http/Service.h"
#include "store/Credentials.h"
#include "store/Database.h"
#include "store/Migrations.h"
#include "store/NowAndThen.h"
#include "store/Statistics.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int StatementGrace = 5; ///< seconds that the database gives the server to end a statement
/// How often goes back to the system what large lists left free between small blocks. It takes some
/// milliseconds at the most, for which threads that allocate may have to wait.
constexpr auto TrimTime = std::chrono::seconds(10);

/// Makes the tables of an empty database and fills them if the sample data is wanted; older tables
/// are brought up to date for that alone, as a site's own wait for their administrator. A database
/// whose filling was cut short has tables and no users: it is filled again.
void Prepare(Store::Database &database, const Options &options)
{
    const auto connection = database.OpenWriter();
    Store::PrepareSchema(*connection,
                         options.demo ? Store::OldTables::Migrate : Store::OldTables::Refuse);
    if (options.demo && !connection->Exists("SELECT 1 FROM USR_USER")) {
        Demo::Fill(*connection, QDate::currentDate());
        Store::UpdateStatistics(*connection);
    }
}

QByteArray FirstInputLine()
{
    QByteArray line(4096, '\0');
    line.truncate(std::fgets(line.data(), static_cast<int>(line.size()), stdin)
                      ? static_cast<qsizetype>(qstrlen(line.constData()))
                      : 0);
    return line.trimmed();
}

void SetToken(Store::Database &database, const QString &userCode, const QByteArray &token)
{
    Store::SetToken(*database.OpenWriter(), userCode, token);
}

/// A host that starts a server of its own holds the other end of its standard input: when the
/// host ends, however it does, so does the server.
void StopWhenInputCloses(Http::HttpServer &server)
{
    std::thread([&server] {
        char scrap[256];
        while (read(STDIN_FILENO, scrap, sizeof scrap) > 0) {
        }
        server.Stop();
    }).detach(); // cannot be woken from its read; ends with the process
}

QList<Http::AddressBlock> TrustedProxies(const Options &options)
{
    QList<Http::AddressBlock> blocks;
    for (const QString &text : options.trustedProxies)
        blocks += Http::ParseAddressBlock(text);
    return blocks;
}

QString Authority(const QString &host, quint16 port)
{
    return (host.contains(u':') ? u"[%1]:%2"_s : u"%1:%2"_s).arg(host).arg(port);
}

/// Where it listens, for people and programs that wait for it, and what to worry about.
void Announce(const Http::HttpServer &server, const Options &options)
{
    const bool secure = !options.certificate.isEmpty();
    if (!secure && !options.host.startsWith("127."_L1) && options.host != "::1"_L1)
        Http::WriteEvent(
            "warning", u"没有 TLS 而在 %1 上监听：用户凭据会以明文经过网络。"_s.arg(options.host));
    if (server.MetricsPort() != 0)
        Http::WriteEvent("metrics", u"http://%1/metrics"_s.arg(
                                        Authority(options.metricsHost, server.MetricsPort())));
    std::printf("listening on %s://%s%s\n", secure ? "https" : "http",
                qUtf8Printable(Authority(options.host, server.Port())),
                qUtf8Printable(options.basePath));
    std::fflush(stdout);
}

/// What one post frees the next one needs again: given back to the system and fetched each time it
/// costs a tenth of a post. Larger pieces, of long answers, go back at once.
void KeepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, 4 << 20);
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
}

int Serve(Store::Database &database, const Options &options)
{
    KeepFreedMemory();
    Http::SetLogFormat(options.jsonLog ? Http::LogFormat::Json : Http::LogFormat::Text);
    EndInTime end;
    Http::Metrics metrics;
    Http::Service service(
        database,
        {.basePath = options.basePath.toUtf8(),
         .serverName = QCoreApplication::applicationName(),
         .statementTime = std::chrono::seconds(options.statementSeconds),
         .limits = {.rows = options.answerRows, .bytes = qint64(options.answerMegabytes) << 20},
         .trustedProxies = TrustedProxies(options)},
        metrics);
    const int processors = static_cast<int>(std::thread::hardware_concurrency());
    Http::HttpServer server({.host = options.host,
                             .port = options.port,
                             .certificate = options.certificate,
                             .key = options.key,
                             .metricsHost = options.metricsHost,
                             .metricsPort = options.metricsPort,
                             .connectionLimit = options.connectionLimit,
                             .requestTime = std::chrono::seconds(options.requestSeconds),
                             .patience = {.silence = std::chrono::seconds(options.slowSeconds)},
                             .drainTime = std::chrono::seconds(options.stopSeconds),
                             .readers = std::max(2, processors),
                             .writers = database.Writers(),
                             .gathersWrites = database.SharesTransactions()},
                            service, metrics);
    if (options.exitWithParent)
        StopWhenInputCloses(server);
    Announce(server, options);
    const Store::StatisticsKeeper statistics(database);
    const Store::NowAndThen trim(TrimTime, Store::NowAndThen::First::AfterOneInterval,
                                 [](const std::stop_token &) { malloc_trim(0); });
    server.Run();
    end.By(server.DrainEnd());
    return 0;
}

int Run(const Options &options)
{
    QTemporaryDir scratch(QDir::tempPath() + u"/qel-server-XXXXXX"_s);
    const QString url = options.database.isEmpty()
                            ? u"sqlite:"_s + scratch.filePath(u"qel.sqlite"_s)
                            : options.database;
    const auto database = Store::Database::Open(url);
    database->LimitReading(std::chrono::seconds(options.statementSeconds + StatementGrace));
    Prepare(*database, options);
    if (!options.setTokenOf.isEmpty()) {
        SetToken(*database, options.setTokenOf, FirstInputLine());
        return 0;
    }
    if (!options.operatorCode.isEmpty())
        SetToken(*database, options.operatorCode, qgetenv("QEL_OPERATOR_TOKEN"));
    for (const char *secret : {"QEL_OPERATOR_TOKEN", "QEL_DATABASE"})
        qunsetenv(secret);
    return Serve(*database, options);
}

} // namespace

} // namespace Qel

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"qel-server"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(QEL_VERSION));
    try {
        QStringList arguments = QCoreApplication::arguments();
        if (const auto status = Qel::Admin::RunCommand(arguments))
            return *status;
        return Qel::Run(Qel::ParseOptions(arguments));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "qel-server: %s\n", error.what());
        return 1;
    }
}
