#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// Counts so many combinations of eight rows: each `factors` more takes eight times as long.
QByteArray SlowQuery(int factors)
{
    QStringList tables;
    for (int at = 0; at < factors; ++at)
        tables += u"BAS_ORG T%1"_s.arg(at);
    const QString sql = u"SELECT COUNT(*) N FROM "_s + tables.join(u", ");
    return ToBytes({.path = "/NorvaneSelectServlet",
                    .body = Wire::Encode(Wire::QueryRequest{sql, 0, 0, 1}, Wire::Format::Json)});
}

QByteArray DeleteMember()
{
    const Wire::PostRequest post{u"com.business.admin.UniUnionOrg"_s,
                                 u"delete_UniOrg"_s,
                                 {{{u"UNION_ID"_s, u"300002"_s},
                                   {u"ORG_ID"_s, u"200007"_s},
                                   {u"LOG_USER_ID"_s, u"600001"_s},
                                   {u"LOG_USER_NAME"_s, u"系统管理员"_s}}}};
    return ToBytes({.path = "/NorvaneServlet", .body = Wire::Encode(post, Wire::Format::Json)});
}

const QByteArray Health = ToBytes({.method = "GET", .path = "/healthz"});

/// A server in which one request runs and another connection is kept, then told to stop.
struct Stopping
{
    explicit Stopping(const QByteArray &request, int stopTime = 10)
        : server(QStringList{u"--database"_s, site.Url(), u"--stop-time"_s,
                             QString::number(stopTime)} +
                 WithMetrics)
        , busy(server.Port())
        , kept(server.Port())
        , readiness(server.Port())
    {
        kept.Send(Health);
        keptBefore = kept.Receive();
        readiness.Send(Health);
        readiness.Receive();
        if (request == DeleteMember()) { // which has to wait for another one's change of the row
            writing = std::make_unique<Store::Transaction>(site.Connection());
            site.Connection().Execute("UPDATE UNI_ORG SET LAST_OPERATE = LAST_OPERATE");
        }
        busy.Send(request);
        running = server.WaitForMetric("qel_requests_handling", 1);
        timer.start();
        server.Process().terminate();
    }

    /// The first that the kept connection hears of it.
    HttpReply Refusal()
    {
        HttpReply reply;
        do {
            kept.Send(Health);
            reply = kept.Receive();
        } while (reply.status == 200);
        return reply;
    }

    bool Ends() { return server.Process().waitForFinished(20'000); }

    TestDatabase site;
    ServerProcess server;
    RawClient busy;
    RawClient kept;
    RawClient readiness;
    HttpReply keptBefore;
    std::unique_ptr<Store::Transaction> writing;
    bool running = false;
    QElapsedTimer timer;
};

} // namespace

/// A server that is told to end finishes what runs and refuses what comes.
class StopTest : public QObject
{
    Q_OBJECT

private slots:
    void ARunningStatementIsFinishedAndNewRequestsAreRefused()
    {
        Stopping stop(SlowQuery(8));
        QCOMPARE(stop.keptBefore.status, 200);
        QVERIFY(stop.running);
        const HttpReply refusal = stop.Refusal();
        QCOMPARE(refusal.status, 503);
        QCOMPARE(refusal.Header("Connection"), QByteArray("close"));
        QCOMPARE(refusal.Header("Retry-After"), QByteArray("2"));
        const auto error = Wire::DecodeErrorAnswer(refusal.body, Wire::Format::Json);
        QCOMPARE(error.code, u"server.stopping"_s);
        QCOMPARE(error.message, u"服务器正在停止，请稍后再试。"_s);
        stop.readiness.Send(ToBytes({.method = "GET", .path = "/readyz"}));
        QCOMPARE(stop.readiness.Receive().status, 503);
        RawClient late(stop.server.Port());
        QCOMPARE(late.Socket().state(), QAbstractSocket::UnconnectedState);

        const HttpReply answer = stop.busy.Receive();
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.Header("Connection"), QByteArray("close"));
        const auto rows = Wire::DecodeQueryAnswer(answer.body, Wire::Format::Json).rows;
        QCOMPARE(rows.Text(0, 0), u"16777216"_s);
        QVERIFY(stop.Ends());
        QCOMPARE(stop.server.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(stop.server.Process().exitCode(), 0);
    }

    void ARunningPostIsFinished()
    {
        Stopping stop(DeleteMember());
        QVERIFY(stop.running);
        QCOMPARE(stop.Refusal().status, 503);
        stop.writing.reset(); // now the post gets its turn
        const HttpReply answer = stop.busy.Receive();
        QCOMPARE(answer.status, 200);
        QCOMPARE(Wire::DecodePostAnswer(answer.body, Wire::Format::Json).rows.value(0).code,
                 u"1"_s);
        QVERIFY(stop.Ends());
        QCOMPARE(stop.server.Process().exitCode(), 0);
        QCOMPARE(stop.site.Text("SELECT LAST_OPERATE FROM UNI_ORG"), u"D"_s);
    }

    void AStatementWithoutEndIsCutOffInTime()
    {
        Stopping stop(SlowQuery(15), 3);
        QVERIFY(stop.running);
        const HttpReply answer = stop.busy.Receive();
        QCOMPARE(answer.status, 503);
        QCOMPARE(Wire::DecodeErrorAnswer(answer.body, Wire::Format::Json).code,
                 u"server.stopping"_s);
        QVERIFY(stop.Ends());
        QVERIFY2(stop.timer.elapsed() < 3'500, qPrintable(QString::number(stop.timer.elapsed())));
        QCOMPARE(stop.server.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(stop.server.Process().exitCode(), 0);
    }

    void APostWithoutEndIsUndoneInTime()
    {
        Stopping stop(DeleteMember(), 3);
        QVERIFY(stop.running);
        const HttpReply answer = stop.busy.Receive();
        QCOMPARE(answer.status, 503);
        QCOMPARE(Wire::DecodeErrorAnswer(answer.body, Wire::Format::Json).code, u"post.not_done"_s);
        QVERIFY(stop.Ends());
        QVERIFY2(stop.timer.elapsed() < 3'500, qPrintable(QString::number(stop.timer.elapsed())));
        QCOMPARE(stop.server.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(stop.server.Process().exitCode(), 0);
        stop.writing.reset();
        QCOMPARE(stop.site.Text("SELECT LAST_OPERATE FROM UNI_ORG"), u"1"_s);
        QCOMPARE(stop.site.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 0);
    }
};

QTEST_GUILESS_MAIN(StopTest)
#include "StopTest.moc"
