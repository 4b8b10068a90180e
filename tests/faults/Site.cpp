#include "faults/Site.h"

#include "demo/Demo.h"
#include "faults/Domain.h"
#include "faults/Report.h"
#include "store/Schema.h"

#include <QDate>
#include <QDir>
#include <QFile>

#include <QProcess>

#include <thread>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr std::chrono::seconds StartTime{20}; ///< after which a server is not expected any more
constexpr std::chrono::seconds Patience{30};

} // namespace

Site::Site(const QString &url, const QString &folder, bool withSampleData, int domains)
    : url_(url)
    , log_(folder + u"/server.log"_s)
    , database_(Store::Database::Open(url))
{
    const auto connection = Connect();
    Store::CreateSchema(*connection);
    if (withSampleData)
        Demo::Fill(*connection, QDate::currentDate());
    Store::Transaction transaction(*connection);
    for (int number = 0; number < domains; ++number)
        AddDomain(*connection, Domain(number));
    transaction.Commit();
}

Site::~Site()
{
    if (server_)
        KillServer();
}

std::unique_ptr<Store::Connection> Site::Connect()
{
    return database_->OpenWriter();
}

std::chrono::nanoseconds Site::StartServer(const QStringList &more)
{
    const Stopwatch watch;
    LaunchServer(more);
    while (!Answers()) {
        if (watch.Elapsed() > StartTime)
            throw EQelError(u"服务器没有应答查询。"_s);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return watch.Elapsed();
}

void Site::LaunchServer(const QStringList &more)
{
    server_.reset();
    server_ = std::make_unique<ServerProcess>(QStringList{u"--database"_s, url_} + more, log_);
}

void Site::KillServer()
{
    server_->Process().kill();
    server_->Process().waitForFinished();
}

void Site::KillStarting(std::chrono::microseconds after)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral(QEL_SERVER_PROGRAM),
                  {u"--database"_s, url_, u"--listen"_s, u"127.0.0.1:0"_s});
    process.waitForStarted();
    std::this_thread::sleep_for(after); // the instant is what the scenario is about
    process.kill();
    process.waitForFinished();
}

bool Site::Answers() const
{
    const HttpReply reply = Line(server_->Port()).Ask(GoodQuery());
    return reply.status == 200 &&
           Wire::DecodeQueryAnswer(reply.body, Wire::Format::Cbor).rows.RowCount() == 1;
}

std::chrono::nanoseconds Site::TimeToAnswer() const
{
    const Stopwatch watch;
    while (!Answers() && watch.Elapsed() < Patience)
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // a client that tries again
    return watch.Elapsed();
}

Site::Effort Site::ServerEffort() const
{
    Effort effort;
    const QDir threads(u"/proc/%1/task"_s.arg(server_->Process().processId()));
    for (const QString &thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(threads.filePath(thread + u"/schedstat"_s)); // nanoseconds run and waited
        const QByteArrayList numbers =
            file.open(QIODevice::ReadOnly) ? file.readAll().split(' ') : QByteArrayList();
        effort.ran += std::chrono::nanoseconds(numbers.value(0).toLongLong());
        effort.waited += std::chrono::nanoseconds(numbers.value(1).toLongLong());
    }
    return effort;
}

QByteArray GoodQuery()
{
    const Domain domain(0);
    const Wire::QueryRequest request{
        u"SELECT ORG_ID, ORG_NAME FROM BAS_ORG WHERE ORG_ID='%1'"_s.arg(domain.orgId), 0, 0, 1};
    return ToBytes({.path = "/NorvaneSelectServlet",
                    .body = Wire::Encode(request, Wire::Format::Cbor),
                    .format = Wire::Format::Cbor,
                    .credential = domain.credential});
}

} // namespace Qel::Faults
