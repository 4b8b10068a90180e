#include "copies/PostLoad.h"
#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

#include <array>
#include <memory>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

quint16 FreePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// HAProxy with the configuration that is given to administrators, at other ports.
class Balancer
{
public:
    Balancer(quint16 first, quint16 second)
        : port_(FreePort())
    {
        QFile given(QStringLiteral(QEL_HAPROXY_CONFIGURATION));
        QFile used(directory_.filePath(u"haproxy.cfg"_s));
        if (!given.open(QIODevice::ReadOnly) || !used.open(QIODevice::WriteOnly))
            qFatal("no configuration of HAProxy");
        QByteArray text = given.readAll();
        const auto replace = [&text](const char *address, quint16 port) {
            if (!text.contains(address))
                qFatal("the configuration has no %s", address);
            text.replace(address, "127.0.0.1:" + QByteArray::number(port));
        };
        replace("127.0.0.1:8480", port_);
        replace("127.0.0.1:8481", first);
        replace("127.0.0.1:8482", second);
        if (geteuid() != 0) // who cannot become another user anyway
            text.replace("    user haproxy\n    group haproxy\n", "");
        used.write(text);
        used.close();
        const QString program = QStandardPaths::findExecutable(
            u"haproxy"_s, {u"/usr/sbin"_s, u"/usr/bin"_s, u"/usr/local/sbin"_s});
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(program, {u"-db"_s, u"-q"_s, u"-f"_s, used.fileName()});
        if (!process_.waitForStarted())
            qFatal("HAProxy does not start");
    }
    ~Balancer()
    {
        process_.terminate();
        process_.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Balancer)

    quint16 Port() const { return port_; }

private:
    quint16 port_;
    QTemporaryDir directory_;
    QProcess process_;
};

} // namespace

/// Two servers on one database behind a load balancer.
class BalancerTest : public QObject
{
    Q_OBJECT

private slots:
    void ServerThatIsKilledLosesNothingAndStopsNobody()
    {
        TestDatabase database;
        const QStringList arguments{u"--database"_s, database.Url(), u"--trusted-proxy"_s,
                                    u"127.0.0.1"_s};
        std::array servers{std::make_unique<ServerProcess>(arguments),
                           std::make_unique<ServerProcess>(arguments)};
        const Balancer balancer(servers[0]->Port(), servers[1]->Port());
        PostLoad load({balancer.Port()}, 4);
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > 100, 20'000);
        for (const auto &server : servers)
            QVERIFY(server->WaitForLog("com.business.admin.UniUnion")); // both have work
        const int failedBefore = load.failedPosts + load.failedQueries;

        servers[0]->Process().kill();
        servers[0]->Process().waitForFinished();
        const int before = load.acknowledged;
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > before + 100, 20'000);
        load.End();

        // What ran on it broke; what came after was sent to the other one.
        QVERIFY(load.failedPosts + load.failedQueries - failedBefore <= 4);
        QCOMPARE(load.unseen.load(), 0);
        QCOMPARE(database.Number("SELECT COUNT(*) FROM UNI_ORG_TYPE"
                                 " WHERE ORG_TYPE_NAME LIKE 'T%'"),
                 load.acknowledged.load());
    }

    void ClientsAddressIsTheOneThatTheBalancerSaw()
    {
        TestDatabase database;
        ServerProcess server(
            {u"--database"_s, database.Url(), u"--trusted-proxy"_s, u"127.0.0.1"_s});
        const Balancer balancer(server.Port(), server.Port());
        QByteArray request = ToBytes(Query(TypeQuery(u"无"_s)));
        request.replace("Host: localhost\r\n", "Host: localhost\r\nX-Forwarded-For: 192.0.2.7\r\n"
                                               "Forwarded: for=192.0.2.8\r\n");
        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                RawClient client(balancer.Port());
                client.Send(request);
                return client.Receive().status == 200;
            }(),
            10'000);
        QVERIFY(server.WaitForLog("NorvaneSelectServlet"));
        QVERIFY(server.Log().contains("address=\"127.0.0.1\""));
        QVERIFY(!server.Log().contains("192.0.2."));
    }
};

QTEST_GUILESS_MAIN(BalancerTest)
#include "BalancerTest.moc"
