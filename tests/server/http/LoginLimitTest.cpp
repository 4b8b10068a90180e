#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

#include <memory>
#include <vector>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr char Wrong[] = "admin:wrong-wrong-wrong-wrong";

/// The request as a proxy on this machine passes it on.
QByteArray SessionBytes(const QByteArray &credential, const QByteArray &from = {})
{
    QByteArray bytes =
        ToBytes({.method = "GET", .path = "/session", .credential = credential}).chopped(2);
    if (!from.isEmpty())
        bytes += "X-Forwarded-For: " + from + "\r\n";
    return bytes + "\r\n";
}

HttpReply Session(const ServerProcess &server, const QByteArray &credential,
                  const QByteArray &from = {})
{
    RawClient client(server.Port());
    client.Send(SessionBytes(credential, from));
    return client.Receive();
}

QString CodeOf(const HttpReply &reply)
{
    return Wire::DecodeErrorAnswer(reply.body, Wire::Format::Json).code;
}

} // namespace

class LoginLimitTest : public QObject
{
    Q_OBJECT

private slots:
    void SixthFailedLogInIsNotLookedAt()
    {
        TestDatabase site;
        Store::SetToken(site.Connection(), u"zhang"_s, "0123456789abcdef-zhang");
        ServerProcess server(QStringList{u"--database"_s, site.Url()} + WithMetrics);
        QCOMPARE(Session(server, "admin:0123456789abcdef-admin").status, 200);
        for (int attempt = 0; attempt < 5; ++attempt)
            QCOMPARE(CodeOf(Session(server, Wrong)), u"auth.refused"_s);

        const HttpReply blocked = Session(server, Wrong);
        QCOMPARE(blocked.status, 429);
        QCOMPARE(CodeOf(blocked), u"auth.too_many"_s);
        const int wait = blocked.Header("Retry-After").toInt();
        QVERIFY2(wait > 30 && wait <= 60, blocked.head.constData());
        QVERIFY(server.WaitForLog("code=\"auth.too_many\""));
        // Who was at work goes on; who was not there yet waits with the attacker.
        QCOMPARE(Session(server, "admin:0123456789abcdef-admin").status, 200);
        QCOMPARE(Session(server, "zhang:0123456789abcdef-zhang").status, 429);
        QCOMPARE(server.Metric("qel_logins_failed_total"), 5.0);
        QCOMPARE(server.Metric("qel_logins_blocked_total"), 2.0);
    }

    void OfThirtyTwoSentAtOnceFiveAreLookedAt()
    {
        TestDatabase site;
        ServerProcess server(QStringList{u"--database"_s, site.Url()} + WithMetrics);
        std::vector<std::unique_ptr<RawClient>> clients;
        for (int at = 0; at < 32; ++at) {
            clients.push_back(std::make_unique<RawClient>(server.Port()));
            clients.back()->Send(SessionBytes(Wrong).chopped(1));
        }
        for (const auto &client : clients)
            client->Send("\n");
        QMap<int, int> answers;
        for (const auto &client : clients)
            ++answers[client->Receive().status];
        QCOMPARE(answers, (QMap<int, int>{{401, 5}, {429, 27}}));
        QCOMPARE(server.Metric("qel_logins_failed_total"), 5.0);
    }

    /// Those of one office after the server has started, of whom it knows nobody yet.
    void FirstPostsOfThirtyTwoAtOnceAreAnsweredAtOnce_data()
    {
        QTest::addColumn<QByteArray>("credential");
        QTest::addColumn<QMap<int, int>>("expected");
        QTest::newRow("good") << QByteArray("admin:0123456789abcdef-admin")
                              << QMap<int, int>{{200, 32}};
        QTest::newRow("wrong") << QByteArray(Wrong) << QMap<int, int>{{401, 5}, {429, 27}};
    }
    void FirstPostsOfThirtyTwoAtOnceAreAnsweredAtOnce()
    {
        QFETCH(QByteArray, credential);
        TestDatabase site;
        ServerProcess server(QStringList{u"--database"_s, site.Url()} + WithMetrics);
        const Wire::PostRequest nothing{
            u"com.business.admin.UniUnion"_s, u"insert_update_UniOrgType"_s, {}};
        const QByteArray post = ToBytes({.path = "/NorvaneServlet",
                                         .body = Wire::Encode(nothing, Wire::Format::Json),
                                         .credential = credential});
        QElapsedTimer timer;
        timer.start();
        std::vector<std::unique_ptr<RawClient>> clients;
        for (int at = 0; at < 32; ++at) {
            clients.push_back(std::make_unique<RawClient>(server.Port()));
            clients.back()->Send(post.chopped(1));
        }
        {
            const Store::Transaction other(site.Connection());
            for (const auto &client : clients)
                client->Send(post.last(1));
            if (site.Database().SharesTransactions()) // they wait for it, and so for one another
                QTRY_VERIFY(server.Metric("qel_connections_answering") >= 16);
        }
        QMap<int, int> answers;
        for (const auto &client : clients)
            ++answers[client->Receive().status];
        QTEST(answers, "expected");
        QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
    }

    void AMissingCredentialIsNoFailedLogIn()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        for (int attempt = 0; attempt < 10; ++attempt)
            QCOMPARE(CodeOf(Session(server, {})), u"auth.required"_s);
        QCOMPARE(Session(server, "admin:0123456789abcdef-admin").status, 200);
    }

    void BehindATrustedProxyEachClientCounts()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url(), u"--trusted-proxy"_s, u"127.0.0.0/8"_s});
        for (int attempt = 0; attempt < 5; ++attempt)
            Session(server, Wrong, "198.51.100.7");
        QCOMPARE(Session(server, Wrong, "198.51.100.7").status, 429);
        QCOMPARE(Session(server, Wrong, "198.51.100.8").status, 401);
        QCOMPARE(Session(server, "admin:0123456789abcdef-admin", "198.51.100.9").status, 200);
        QVERIFY(server.WaitForLog("address=\"198.51.100.9\""));
    }

    void WithoutATrustedProxyNobodyChoosesAnAddress()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        for (int attempt = 0; attempt < 5; ++attempt)
            Session(server, Wrong, "198.51.100." + QByteArray::number(attempt));
        QCOMPARE(Session(server, Wrong, "198.51.100.77").status, 429);
        QVERIFY(!server.Log().contains("198.51.100."));
    }
};

QTEST_GUILESS_MAIN(LoginLimitTest)
#include "LoginLimitTest.moc"
