#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr int SlowTime = 1'000; ///< milliseconds; what the server is told with --slow-time
/// Longer than the server may take on a busy machine, shorter than its other limits.
constexpr int Closing = 9'000;

QByteArray Query(const QString &sql)
{
    return ToBytes({.path = "/NorvaneSelectServlet",
                    .body = Wire::Encode(Wire::QueryRequest{sql, 0, 0, 1}, Wire::Format::Json)});
}

} // namespace

/// Requests that no good client sends, and clients that never finish.
class HostileRequestTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        site_ = std::make_unique<TestDatabase>();
        server_ = std::make_unique<ServerProcess>(
            QStringList{u"--database"_s, site_->Url(), u"--slow-time"_s, u"1"_s} + WithMetrics);
    }
    void cleanup() { QCOMPARE(server_->Query(u"SELECT ORG_ID FROM BAS_ORG"_s).status, 200); }

    void WhatCouldSmuggleARequestIsRefusedAndTheConnectionClosed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("code");
        const QByteArray smuggled = "GET /healthz HTTP/1.1\r\nHost: x\r\n\r\n";
        const auto row = [&](const char *name, const QByteArray &headers, const QByteArray &body) {
            QTest::newRow(name) << "POST /NorvaneServlet HTTP/1.1\r\nHost: x\r\n" + headers +
                                       "\r\n\r\n" + body + smuggled
                                << 400 << u"http.bad_request"_s;
        };
        row("length and encoding", "Content-Length: 4\r\nTransfer-Encoding: chunked", "0\r\n\r\n");
        row("encoding and length", "Transfer-Encoding: chunked\r\nContent-Length: 4", "0\r\n\r\n");
        row("two lengths", "Content-Length: 0\r\nContent-Length: 35", "");
        row("the same length twice", "Content-Length: 0\r\nContent-Length: 0", "");
        row("list of lengths", "Content-Length: 0, 0", "");
        row("folded header", "X-A: b\r\n Content-Length: 35", "");
        row("blank before the colon", "Content-Length : 35", "");
        row("other encoding", "Transfer-Encoding: xchunked", "");
        row("encoding twice", "Transfer-Encoding: chunked\r\nTransfer-Encoding: identity", "");
        row("size of a chunk in other digits", "Transfer-Encoding: chunked", "xyz\r\n");
        row("negative size of a chunk", "Transfer-Encoding: chunked", "-1\r\n");
        row("size of a chunk beyond all bounds", "Transfer-Encoding: chunked",
            "fffffffffffffffff\r\n");
        row("chunk without an end", "Transfer-Encoding: chunked", "1\r\nabc\r\n0\r\n\r\n");
        row("chunk with a bare line feed", "Transfer-Encoding: chunked", "1\na\n0\n\n");
        QTest::newRow("absolute target")
            << QByteArray("GET http://y/healthz HTTP/1.1\r\nHost: x\r\n\r\n") + smuggled << 400
            << u"http.bad_request"_s;
        QTest::newRow("no host") << QByteArray("GET /healthz HTTP/1.1\r\n\r\n") + smuggled << 400
                                 << u"http.bad_request"_s;
        QTest::newRow("another protocol")
            << QByteArray("\x16\x03\x01\x02\x00\x01\x00", 7) << 400 << u"http.bad_request"_s;
        QTest::newRow("header without an end")
            << "GET /healthz HTTP/1.1\r\nX-A: " + QByteArray(40'000, 'a') << 431
            << u"http.header_too_large"_s;
        QTest::newRow("header that is too long")
            << "GET /healthz HTTP/1.1\r\nHost: x\r\nX-A: " + QByteArray(17'000, 'a') + "\r\n\r\n"
            << 431 << u"http.header_too_large"_s;
        QTest::newRow("chunk line without an end")
            << "POST /NorvaneServlet HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n1;" +
                   QByteArray(200'000, 'a')
            << 400 << u"http.bad_request"_s;
    }
    void WhatCouldSmuggleARequestIsRefusedAndTheConnectionClosed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, status);
        QFETCH(QString, code);
        RawClient client(server_->Port());
        client.Send(bytes);
        const HttpReply reply = client.Receive();
        QCOMPARE(reply.status, status);
        QCOMPARE(reply.Header("Connection"), QByteArray("close"));
        QCOMPARE(Wire::DecodeErrorAnswer(reply.body, Wire::Format::Json).code, code);
        QCOMPARE(client.Receive().status, 0); // what was smuggled is not answered
        QVERIFY(client.WaitForClose(Closing));
    }

    void AChunkedBodyIsTakenAndItsTrailersAreNoHeaders()
    {
        const QByteArray body = Wire::Encode(
            Wire::QueryRequest{u"SELECT ORG_ID FROM BAS_ORG"_s, 0, 0, 1}, Wire::Format::Json);
        RawClient client(server_->Port());
        client.Send("POST /NorvaneSelectServlet HTTP/1.1\r\nHost: x\r\nContent-Type: "
                    "application/json\r\nTransfer-Encoding: chunked\r\n\r\n" +
                    QByteArray::number(body.size(), 16) + ";note=x\r\n" + body +
                    "\r\n0\r\nAuthorization: Basic " +
                    QByteArray("admin:0123456789abcdef-admin").toBase64() + "\r\n\r\n");
        QCOMPARE(client.Receive().status, 401);
    }

    void EveryAnswerSaysWhatBrowsersMustNotDo_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("text") << QByteArray("/healthz");
        QTest::newRow("error") << QByteArray("/nowhere");
        QTest::newRow("data") << QByteArray("/session");
    }
    void EveryAnswerSaysWhatBrowsersMustNotDo()
    {
        QFETCH(QByteArray, path);
        const HttpReply reply = server_->Call({.method = "GET", .path = path});
        QCOMPARE(reply.Header("X-Content-Type-Options"), QByteArray("nosniff"));
        QCOMPARE(reply.Header("Cache-Control"), QByteArray("no-store"));
        QCOMPARE(reply.Header("Content-Security-Policy"),
                 QByteArray("default-src 'none'; frame-ancestors 'none'"));
        QCOMPARE(reply.Header("Server"), QByteArray());
        QCOMPARE(reply.Header("Strict-Transport-Security"), QByteArray()); // there is no TLS
    }

    void SilenceInARequestClosesTheConnection_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray whole = Query(u"SELECT ORG_ID FROM BAS_ORG"_s);
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("half a header") << whole.left(20);
        QTest::newRow("half a body") << whole.chopped(5);
    }
    void SilenceInARequestClosesTheConnection()
    {
        QFETCH(QByteArray, bytes);
        RawClient client(server_->Port());
        client.Send(bytes);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(client.WaitForClose(Closing));
        QVERIFY(timer.elapsed() >= SlowTime / 2);
    }

    void AByteNowAndThenHoldsNoConnection_data()
    {
        QTest::addColumn<QByteArray>("begin");
        QTest::newRow("header") << QByteArray("GET /healthz HTTP/1.1\r\nHost: x\r\nX-A: ");
        QTest::newRow("body") << QByteArray("POST /NorvaneServlet HTTP/1.1\r\nHost: x\r\n"
                                            "Content-Length: 1000000\r\n\r\n");
    }
    void AByteNowAndThenHoldsNoConnection()
    {
        QFETCH(QByteArray, begin);
        const double slow = server_->Metric("qel_connections_slow_total");
        RawClient client(server_->Port());
        client.Send(begin);
        QElapsedTimer timer;
        timer.start();
        while (!client.WaitForClose(100) && timer.elapsed() < Closing)
            client.Send("a");
        QVERIFY(timer.elapsed() < Closing);
        QVERIFY(server_->WaitForMetric("qel_connections_slow_total", slow + 1));
    }

    void LargeBodiesShareTheirRoom()
    {
        // Each a byte short of whole, together more than the 256 MiB that there are.
        ServerProcess patient(QStringList{u"--database"_s, site_->Url()} + WithMetrics);
        constexpr qsizetype size = 8 << 20;
        const QByteArray head =
            "POST /NorvaneServlet HTTP/1.1\r\nHost: x\r\nContent-Type: application/json\r\n"
            "Content-Length: " +
            QByteArray::number(size) + "\r\n\r\n";
        const QByteArray body(size - 1, ' ');
        std::vector<std::unique_ptr<RawClient>> clients;
        const QByteArray refused = "qel_requests_total{route=\"refused\",status=\"5xx\"}";
        const auto sendOne = [&] {
            clients.push_back(std::make_unique<RawClient>(patient.Port()));
            clients.back()->Send(head + body);
        };
        while (patient.Metric(refused) == 0 && clients.size() < 40)
            sendOne();
        QVERIFY(clients.size() > 30);
        sendOne();
        const HttpReply reply = clients.back()->Receive();
        QCOMPARE(reply.status, 503);
        QCOMPARE(Wire::DecodeErrorAnswer(reply.body, Wire::Format::Json).code, u"server.busy"_s);
        QCOMPARE(patient.Query(u"SELECT ORG_ID FROM BAS_ORG"_s).status, 200);
    }

    void AnAnswerThatNobodyTakesIsGivenUp()
    {
        RawClient client(server_->Port());
        client.Socket().setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 16 << 10);
        // More than what the system keeps for a socket: 32,768 rows of ten names.
        QString columns = u"A.ORG_NAME"_s;
        for (int at = 1; at < 10; ++at)
            columns += u", %1.ORG_NAME N%2"_s.arg(QChar(u'A' + at % 5)).arg(at);
        client.Send(Query(u"SELECT "_s + columns +
                          u" FROM BAS_ORG A, BAS_ORG B, BAS_ORG C, BAS_ORG D, BAS_ORG E"_s));
        QVERIFY(server_->WaitForMetric("qel_answers_not_taken_total", 1));
    }

private:
    std::unique_ptr<TestDatabase> site_;
    std::unique_ptr<ServerProcess> server_;
};

QTEST_GUILESS_MAIN(HostileRequestTest)
#include "HostileRequestTest.moc"
