#include "http/HttpServer.h"
#include "http/Metrics.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTest>

#include <array>
#include <new>
#include <semaphore>
#include <thread>
#include <utility>

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
    std::vector<Http::Response>
    HandleTogether(std::span<const Http::Request *const> requests) noexcept override
    {
        return std::vector<Http::Response>(requests.size());
    }
    Http::Response Refuse(Http::Broken, const Http::Request &) noexcept override
    {
        return {400, "text/plain", {}};
    }
    void BeginStop(Http::Clock::time_point) noexcept override {}
};

/// Answers with the number of those that were handled together. The first, alone, waits.
class Gathering : public Http::Handler
{
public:
    Http::Lane LaneOf(const Http::Request &) const override { return Http::Lane::Write; }
    Http::Response Handle(const Http::Request &) noexcept override { return {}; }
    std::vector<Http::Response>
    HandleTogether(std::span<const Http::Request *const> requests) noexcept override
    {
        if (!std::exchange(begun_, true))
            go.acquire();
        const QByteArray count = QByteArray::number(static_cast<int>(requests.size()));
        return std::vector<Http::Response>(requests.size(), {200, "text/plain", count});
    }
    Http::Response Refuse(Http::Broken, const Http::Request &) noexcept override { return {}; }
    void BeginStop(Http::Clock::time_point) noexcept override {}

    std::binary_semaphore go{0};

private:
    bool begun_ = false;
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

    void WritesThatWaitAreHandledTogetherAndALargeOneAlone()
    {
        Gathering handler;
        Http::Metrics metrics;
        Http::ServerOptions options;
        options.host = QStringLiteral("127.0.0.1");
        options.gathersWrites = true;
        Http::HttpServer server(options, handler, metrics);
        std::thread network([&] { server.Run(); });
        // In the order in which they come: one, then three, a large one, and two.
        const std::array<qsizetype, 7> bodies{1, 1, 1, 1, 20'000, 1, 1};
        std::array<QTcpSocket, 7> clients;
        for (std::size_t at = 0; at < clients.size(); ++at) {
            clients[at].connectToHost(QStringLiteral("127.0.0.1"), server.Port());
            QVERIFY(clients[at].waitForConnected());
            clients[at].write(
                "POST /x HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(bodies[at]) +
                "\r\n\r\n" + QByteArray(bodies[at], 'x'));
            QVERIFY(clients[at].waitForBytesWritten());
            QTRY_COMPARE(metrics.connectionsAnswering.load(), static_cast<qint64>(at) + 1);
        }
        handler.go.release();
        QByteArrayList counts;
        for (QTcpSocket &client : clients) {
            QByteArray answer;
            while (!answer.contains("\r\n\r\n") && client.waitForReadyRead())
                answer += client.readAll();
            counts += answer.mid(answer.indexOf("\r\n\r\n") + 4);
        }
        QCOMPARE(counts, (QByteArrayList{"1", "3", "3", "3", "1", "2", "2"}));
        server.Stop();
        network.join();
    }
};

QTEST_GUILESS_MAIN(ConnectionFailureTest)
#include "ConnectionFailureTest.moc"
