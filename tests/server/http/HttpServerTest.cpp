#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <csignal>
#include <memory>
#include <vector>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr char QueryPath[] = "/NorvaneSelectServlet";
constexpr char PostPath[] = "/NorvaneServlet";

/// The built server over the test database, as a process.
class Server : public TestDatabase
{
public:
    explicit Server(const QStringList &more = {})
        : process(QStringList{u"--database"_s, Url()} + more)
    {
    }
    ServerProcess process;
};

Wire::PostRequest DeleteMember()
{
    return {u"com.business.admin.UniUnionOrg"_s,
            u"delete_UniOrg"_s,
            {{{u"UNION_ID"_s, u"300002"_s},
              {u"ORG_ID"_s, u"200007"_s},
              {u"LOG_USER_ID"_s, u"600001"_s},
              {u"LOG_USER_NAME"_s, u"系统管理员"_s}}}};
}

HttpCall QueryCall(const QString &sql)
{
    const Wire::QueryRequest request{sql, 0, 0, 1};
    return {.path = QueryPath, .body = Wire::Encode(request, Wire::Format::Json)};
}

} // namespace

class HttpServerTest : public QObject
{
    Q_OBJECT

private slots:
    void QueryInBothFormatsKeepsNullApartFromText_data()
    {
        QTest::addColumn<bool>("cbor");
        QTest::newRow("CBOR") << true;
        QTest::newRow("JSON") << false;
    }
    void QueryInBothFormatsKeepsNullApartFromText()
    {
        QFETCH(bool, cbor);
        const Wire::Format format = cbor ? Wire::Format::Cbor : Wire::Format::Json;
        Server server;
        const HttpReply reply = server.process.Query(
            u"SELECT UNION_CODE, PARENT_ID FROM UNI_UNION ORDER BY UNION_CODE"_s, 1, 2, format);
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.contentType, QByteArray(cbor ? Wire::CborType : Wire::JsonType));
        const Wire::QueryAnswer answer = Wire::DecodeQueryAnswer(reply.body, format);
        QCOMPARE(answer.total, 5);
        QCOMPARE(answer.rows.RowCount(), 2);
        QCOMPARE(answer.rows.Text(0, 0), u"0001"_s);
        QVERIFY(answer.rows.IsNull(0, 1));
        QCOMPARE(answer.rows.Text(1, 1), u"300001"_s);
    }

    void PostTakesEffectOnceUnderItsKey()
    {
        Server server;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        for (const auto format : {Wire::Format::Cbor, Wire::Format::Cbor})
            QCOMPARE(server.process.Post(DeleteMember(), key, format).rows.value(0).code, u"1"_s);
        QCOMPARE(server.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 1);
        Wire::PostRequest other = DeleteMember();
        other.rows[0][1].second = u"200001"_s;
        const HttpReply reply = server.process.Call(
            {.path = PostPath, .body = Wire::Encode(other, Wire::Format::Json), .key = key});
        QCOMPARE(reply.status, 409);
        QCOMPARE(Wire::DecodeErrorAnswer(reply.body, Wire::Format::Json).code,
                 u"post.key_reused"_s);
    }

    void MistakesAreAnsweredWithCodeAndReference_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("code");
        const auto sql = [](const QString &text) { return QueryCall(text).body; };
        QTest::newRow("syntax") << QByteArray("POST") << QByteArray(QueryPath)
                                << sql(u"SELECT FROM"_s) << 400 << u"sql.syntax"_s;
        QTest::newRow("not a SELECT")
            << QByteArray("POST") << QByteArray(QueryPath) << sql(u"DELETE FROM BAS_ORG"_s) << 400
            << u"sql.not_select"_s;
        QTest::newRow("the server's own table")
            << QByteArray("POST") << QByteArray(QueryPath) << sql(u"SELECT * FROM SRV_TOKEN"_s)
            << 400 << u"sql.unknown_table"_s;
        QTest::newRow("deeper than the database takes")
            << QByteArray("POST") << QByteArray(QueryPath)
            << sql(u"SELECT * FROM ("_s.repeated(50) + u"SELECT * FROM BAS_ORG"_s +
                   u")"_s.repeated(50))
            << 400 << u"sql.limit"_s;
        QTest::newRow("no message") << QByteArray("POST") << QByteArray(QueryPath)
                                    << QByteArray("{\"sql\":1}") << 400 << u"http.bad_request"_s;
        QTest::newRow("no such place") << QByteArray("POST") << QByteArray("/elsewhere")
                                       << QByteArray("{}") << 404 << u"http.not_found"_s;
        QTest::newRow("wrong method") << QByteArray("GET") << QByteArray(QueryPath) << QByteArray()
                                      << 405 << u"http.method"_s;
    }
    void MistakesAreAnsweredWithCodeAndReference()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, code);
        Server server;
        const HttpReply reply = server.process.Call({.method = method, .path = path, .body = body});
        QCOMPARE(reply.status, status);
        const auto error = Wire::DecodeErrorAnswer(reply.body, Wire::Format::Json);
        QCOMPARE(error.code, code);
        QVERIFY(!error.message.isEmpty());
        QVERIFY(!error.reference.isEmpty());
        QVERIFY(server.process.WaitForLog(error.reference.toUtf8()));
    }

    void WrongMethodIsToldTheRightOne()
    {
        Server server;
        const HttpReply query = server.process.Call({.method = "GET", .path = QueryPath});
        QCOMPARE(query.status, 405);
        QCOMPARE(query.Header("Allow"), QByteArray("POST"));
        const HttpReply session = server.process.Call({.method = "POST", .path = "/session"});
        QCOMPARE(session.status, 405);
        QCOMPARE(session.Header("Allow"), QByteArray("GET"));
    }

    void WrongCredentialIsRefusedAndNeverWrittenDown()
    {
        Server server;
        HttpCall call = QueryCall(u"SELECT 1 FROM BAS_ORG"_s);
        call.credential = "admin:a-token-that-nobody-has";
        const HttpReply refused = server.process.Call(call);
        QCOMPARE(refused.status, 401);
        QCOMPARE(Wire::DecodeErrorAnswer(refused.body, Wire::Format::Json).code, u"auth.refused"_s);
        call.credential.clear();
        const HttpReply missing = server.process.Call(call);
        QCOMPARE(missing.status, 401);
        QCOMPARE(Wire::DecodeErrorAnswer(missing.body, Wire::Format::Json).code,
                 u"auth.required"_s);
        server.process.Query(u"SELECT ORG_ID FROM BAS_ORG"_s);
        QVERIFY(server.process.WaitForLog(QueryPath));
        for (const QByteArray &secret :
             {QByteArray("a-token-that-nobody-has"), QByteArray(TestDatabase::AdminToken)}) {
            QVERIFY(!server.process.Log().contains(secret));
            QVERIFY(!server.process.Log().contains(("admin:" + secret).toBase64()));
            QVERIFY(!refused.body.contains(secret));
        }
    }

    void SessionNamesTheOperator()
    {
        Server server;
        const HttpReply reply = server.process.Call({.method = "GET", .path = "/session"});
        QCOMPARE(reply.status, 200);
        const auto session = Wire::DecodeSessionAnswer(reply.body, Wire::Format::Json);
        QCOMPARE(session.userCode, u"admin"_s);
        QCOMPARE(session.userName, u"系统管理员"_s);
    }

    void ManyRequestsGoOverOneConnection()
    {
        Server server;
        RawClient client(server.process.Port());
        HttpCall call = QueryCall(u"SELECT ORG_ID FROM BAS_ORG"_s);
        for (int request = 0; request < 50; ++request) {
            client.Send(ToBytes(call));
            QCOMPARE(client.Receive().status, 200);
        }
    }

    void HalfSentRequestIsClosedAtTheDeadline()
    {
        Server server({u"--request-time"_s, u"1"_s});
        RawClient client(server.process.Port());
        const QByteArray bytes = ToBytes(QueryCall(u"SELECT ORG_ID FROM BAS_ORG"_s));
        client.Send(bytes.left(bytes.size() / 2));
        QVERIFY(client.WaitForClose(10'000));
        QCOMPARE(server.process.Query(u"SELECT ORG_ID FROM BAS_ORG"_s).status, 200);
    }

    void HundredIdleConnectionsLockNobodyOut()
    {
        Server server({u"--connections"_s, u"60"_s});
        std::vector<std::unique_ptr<RawClient>> idle;
        for (int at = 0; at < 100; ++at)
            idle.push_back(std::make_unique<RawClient>(server.process.Port()));
        QCOMPARE(server.process.Query(u"SELECT ORG_ID FROM BAS_ORG"_s).status, 200);
    }

    void BodyOverTheLimitIsRefused()
    {
        Server server;
        RawClient client(server.process.Port());
        client.Send("POST /NorvaneSelectServlet HTTP/1.1\r\nHost: x\r\nContent-Type: "
                    "application/json\r\nContent-Length: 99999999\r\n\r\n");
        QCOMPARE(client.Receive().status, 413);
    }

    void KilledServerKeepsWhatItAcknowledged()
    {
        TestDatabase site;
        {
            ServerProcess server({u"--database"_s, site.Url()});
            QCOMPARE(server.Post(DeleteMember()).rows.value(0).code, u"1"_s);
            server.Process().kill();
            server.Process().waitForFinished();
        }
        ServerProcess server({u"--database"_s, site.Url()});
        QCOMPARE(site.Text("SELECT LAST_OPERATE FROM UNI_ORG"), u"D"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), 1);
        QCOMPARE(server.Post(DeleteMember()).rows.value(0).code, u"0"_s);
    }

    void KilledInTheMiddleOfPostsItIsConsistent()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        // Posts are under way on several connections when the process dies.
        std::vector<std::unique_ptr<RawClient>> clients;
        const QByteArray bytes =
            ToBytes({.path = PostPath, .body = Wire::Encode(DeleteMember(), Wire::Format::Json)});
        for (int at = 0; at < 8; ++at) {
            clients.push_back(std::make_unique<RawClient>(server.Port()));
            clients.back()->Send(bytes);
        }
        server.Process().kill();
        server.Process().waitForFinished();
        ServerProcess again({u"--database"_s, site.Url()});
        const bool deleted = site.Text("SELECT LAST_OPERATE FROM UNI_ORG") == u"D";
        QCOMPARE(site.Number("SELECT count(*) FROM SYS_UPDATE_LOG"), deleted ? 1 : 0);
        QCOMPARE(again.Post(DeleteMember()).rows.value(0).code, deleted ? u"0"_s : u"1"_s);
    }

    void TerminatedServerEndsCleanly()
    {
        Server server;
        QCOMPARE(server.process.Query(u"SELECT ORG_ID FROM BAS_ORG"_s).status, 200);
        server.process.Process().terminate();
        QVERIFY(server.process.Process().waitForFinished(10'000));
        QCOMPARE(server.process.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.process.Process().exitCode(), 0);
    }

    void ClosingItsInputEndsAServerThatFollowsItsParent()
    {
        Server server({u"--exit-with-parent"_s});
        server.process.Process().closeWriteChannel();
        QVERIFY(server.process.Process().waitForFinished(10'000));
    }
};

QTEST_GUILESS_MAIN(HttpServerTest)
#include "HttpServerTest.moc"
