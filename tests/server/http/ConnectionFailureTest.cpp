#include "http/HttpServer.h"
#include "http/Metrics.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTest>

#include <new>
#include <thread>

using namespace Qel;

namespace {

/// There is no memory for a request to /none.
class ShortOfMemory : public Http::Handler
{
public:
    Http::Lane LaneOf(const Http::Request &request) const override
    {
        if (request.path == "/none")
            throw std::bad_alloc();
        return Http::Lane::Inline;
    }
    Http::Response Handle(const Http::Request &) noexcept override
    {
        return {200, "text/plain", "ok"};
    }
    Http::Response Refuse(Http::Broken, const Http::Request &) noexcept override
    {
        return {400, "text/plain", {}};
    }
    void BeginStop(Http::Clock::time_point) noexcept override {}
};

QByteArray AnswerTo(quint16 port, const QByteArray &path)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    if (!socket.waitForConnected())
        return "not connected";
    socket.write("GET " + path + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    while (socket.state() == QAbstractSocket::ConnectedState && socket.waitForReadyRead(10'000)) {
    }
    return socket.readAll();
}

} // namespace

class ConnectionFailureTest : public QObject
{
    Q_OBJECT

private slots:
    void OneConnectionWithoutMemoryEndsAndOthersAreServed()
    {
        ShortOfMemory handler;
        Http::Metrics metrics;
        Http::ServerOptions options;
        options.host = QStringLiteral("127.0.0.1");
        Http::HttpServer server(options, handler, metrics);
        std::thread network([&] { server.Run(); });
        QCOMPARE(AnswerTo(server.Port(), "/none"), QByteArray());
        QVERIFY(AnswerTo(server.Port(), "/some").endsWith("\r\n\r\nok"));
        QTRY_COMPARE(metrics.connectionsAnswering.load(), 0);
        QTRY_COMPARE(metrics.connectionsWaiting.load(), 0);
        QElapsedTimer timer;
        timer.start();
        server.Stop();
        network.join();
        QVERIFY2(timer.elapsed() < 5'000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(ConnectionFailureTest)
#include "ConnectionFailureTest.moc"
