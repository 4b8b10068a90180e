#include "Options.h"
#include "admin/Command.h"
#include "demo/Demo.h"
#include "http/HttpServer.h"
#include "http/Service.h"
#include "store/Credentials.h"
#include "store/Database.h"
#include "store/Schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// Makes the tables of an empty database and fills them if the sample data is wanted. A database
/// whose filling was cut short has tables and no users: it is filled again. What the database
/// knows of its contents is brought up to date.
void Prepare(Store::Database &database, const Options &options)
{
    const auto connection = database.OpenWriter();
    if (!Store::HasSchema(*connection))
        Store::CreateSchema(*connection);
    if (options.demo && !connection->Exists("SELECT 1 FROM USR_USER"))
        Demo::Fill(*connection, QDate::currentDate());
    Store::UpdateStatistics(*connection);
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

int Serve(Store::Database &database, const Options &options)
{
    Http::Service service(database,
                          {.basePath = options.basePath.toUtf8(),
                           .serverName = QCoreApplication::applicationName(),
                           .statementTime = std::chrono::seconds(options.statementSeconds),
                           .limits = {}});
    const int processors = static_cast<int>(std::thread::hardware_concurrency());
    Http::HttpServer server({.host = options.host,
                             .port = options.port,
                             .connectionLimit = options.connectionLimit,
                             .requestTime = std::chrono::seconds(options.requestSeconds),
                             .readers = std::max(2, processors),
                             .writers = database.Writers()},
                            service);
    if (options.exitWithParent)
        StopWhenInputCloses(server);
    const QString host = options.host.contains(u':') ? u'[' + options.host + u']' : options.host;
    std::printf("listening on http://%s:%d%s\n", qUtf8Printable(host), server.Port(),
                qUtf8Printable(options.basePath));
    std::fflush(stdout);
    server.Run();
    return 0;
}

int Run(const Options &options)
{
    QTemporaryDir scratch(QDir::tempPath() + u"/qel-server-XXXXXX"_s);
    const QString url = options.database.isEmpty()
                            ? u"sqlite:"_s + scratch.filePath(u"qel.sqlite"_s)
                            : options.database;
    const auto database = Store::Database::Open(url);
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
