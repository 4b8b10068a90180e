#include "support/HangingDatabase.h"
#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QByteArray Ready = ToBytes({.method = "GET", .path = "/readyz"});

QByteArray Query()
{
    const Wire::QueryRequest query{u"SELECT ORG_ID FROM BAS_ORG"_s, 0, 0, 1};
    return ToBytes(
        {.path = "/NorvaneSelectServlet", .body = Wire::Encode(query, Wire::Format::Json)});
}

QByteArray Post()
{
    const Wire::PostRequest post{
        u"com.notic.NoticManager"_s, u"deleteNotic"_s, {{{u"ID"_s, u"1"_s}}}};
    return ToBytes({.path = "/NorvaneServlet", .body = Wire::Encode(post, Wire::Format::Json)});
}

QString CodeOf(const HttpReply &reply)
{
    return Wire::DecodeErrorAnswer(reply.body, Wire::Format::Json).code;
}

} // namespace

/// A database that neither answers nor breaks its connections, as when its machine is gone.
class HangingDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void RequestsAreAnsweredInTime()
    {
        TestDatabase site;
        HangingDatabase way(site.Url());
        ServerProcess server({u"--database"_s, way.Url(), u"--statement-time"_s, u"1"_s});
        RawClient query(server.Port());
        RawClient post(server.Port());
        query.Send(Query());
        QCOMPARE(query.Receive().status, 200);
        post.Send(Post());
        QCOMPARE(post.Receive().status, 200);

        way.Hang();
        QElapsedTimer timer;
        timer.start();
        query.Send(Query());
        post.Send(Post());
        const HttpReply read = query.Receive();
        QCOMPARE(read.status, 504);
        QCOMPARE(CodeOf(read), u"sql.timeout"_s);
        const HttpReply written = post.Receive();
        QCOMPARE(written.status, 503);
        QCOMPARE(CodeOf(written), u"post.not_done"_s);
        QVERIFY2(timer.elapsed() < 6'000, qPrintable(QString::number(timer.elapsed())));
    }

    void ServerEndsInTime()
    {
        TestDatabase site;
        HangingDatabase way(site.Url());
        ServerProcess server({u"--database"_s, way.Url(), u"--stop-time"_s, u"2"_s});
        RawClient client(server.Port());
        do // a busy machine is not ready at once
            client.Send(Ready);
        while (client.Receive().status == 503);
        way.Hang();
        client.Send(Ready);
        QCOMPARE(client.Receive().status, 503);
        QElapsedTimer timer;
        timer.start();
        server.Process().terminate();
        QVERIFY(server.Process().waitForFinished(20'000));
        QVERIFY2(timer.elapsed() < 2'500, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(server.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.Process().exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(HangingDatabaseTest)
#include "HangingDatabaseTest.moc"
