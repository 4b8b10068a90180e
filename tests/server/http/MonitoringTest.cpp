#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr char QueryPath[] = "/NorvaneSelectServlet";

HttpCall QueryCall(const QString &sql)
{
    return {.path = QueryPath,
            .body = Wire::Encode(Wire::QueryRequest{sql, 0, 0, 1}, Wire::Format::Json)};
}

Wire::PostRequest NewGroup(const QString &name)
{
    return {u"com.business.admin.UniUnion"_s,
            u"insert_update_UniUnion"_s,
            {{{u"UNION_ID"_s, QString()},
              {u"PARENT_ID"_s, QString()},
              {u"UNION_CODE"_s, u"0009"_s},
              {u"UNION_NAME"_s, name},
              {u"UNION_TYPE"_s, u"1"_s},
              {u"REGION_ID"_s, u"100001"_s},
              {u"MASTER_ORGID"_s, u"200007"_s},
              {u"REMARK"_s, name}}}};
}

/// The page read by the rules of the format: type by name, and value by sample.
struct Figures
{
    QMap<QString, QString> types;
    QMap<QString, double> samples;
    QString mistake; ///< the first line that breaks a rule

    explicit Figures(const QString &page)
    {
        static const QRegularExpression head(u"^# (HELP|TYPE) ([a-z_][a-z0-9_]*) ([^\\\\]+)$"_s);
        static const QRegularExpression sample(
            u"^([a-z_][a-z0-9_]*)(\\{[a-z]+=\"[^\"\\\\]*\"(,[a-z]+=\"[^\"\\\\]*\")*\\})? "
            "([0-9.e+-]+)$"_s);
        for (const QString &line : page.chopped(1).split(u'\n')) {
            if (const auto match = head.match(line); match.hasMatch()) {
                if (match.captured(1) == "TYPE"_L1)
                    types[match.captured(2)] = match.captured(3);
                continue;
            }
            const auto match = sample.match(line);
            static const QRegularExpression part(u"_(bucket|sum|count)$"_s);
            const QString name = match.captured(1);
            const bool known =
                types.contains(name) || types.value(QString(name).remove(part)) == "histogram"_L1;
            const QString key = name + match.captured(2);
            if ((!match.hasMatch() || !known || samples.contains(key)) && mistake.isEmpty())
                mistake = line;
            samples[key] = match.captured(4).toDouble();
        }
        if (!page.endsWith(u'\n'))
            mistake = u"no line feed at the end"_s;
    }
};

} // namespace

/// What the monitoring of a site is told, and what it must never be.
class MonitoringTest : public QObject
{
    Q_OBJECT

private slots:
    void FiguresAreWellFormedAndCount()
    {
        TestDatabase site;
        ServerProcess server(QStringList{u"--database"_s, site.Url()} + WithMetrics);
        for (int at = 0; at < 3; ++at)
            server.Query(u"SELECT ORG_ID FROM BAS_ORG"_s);
        server.Call(QueryCall(u"SELECT FROM"_s));
        server.Post(NewGroup(u"新采购小组"_s));
        const Figures figures(QString::fromUtf8(server.MetricsPage()));
        QCOMPARE(figures.mistake, QString());
        const auto value = [&](const QString &sample) { return figures.samples.value(sample, -1); };
        QCOMPARE(value(u"qel_requests_total{route=\"query\",status=\"2xx\"}"_s), 3.0);
        QCOMPARE(value(u"qel_requests_total{route=\"query\",status=\"4xx\"}"_s), 1.0);
        QCOMPARE(value(u"qel_answer_rows_total{route=\"query\"}"_s), 24.0);
        QVERIFY(value(u"qel_answer_bytes_total{route=\"query\"}"_s) > 100);
        QCOMPARE(figures.types.value(u"qel_request_seconds"_s), u"histogram"_s);
        QCOMPARE(value(u"qel_request_seconds_count{route=\"query\"}"_s), 4.0);
        QCOMPARE(value(u"qel_connections_accepted_total"_s), 6.0);
        QVERIFY(value(u"qel_own_memory_bytes"_s) > 1e6);
        QVERIFY(value(u"process_resident_memory_bytes"_s) > value(u"qel_own_memory_bytes"_s));
        QVERIFY(std::abs(value(u"process_start_time_seconds"_s) -
                         double(QDateTime::currentSecsSinceEpoch())) < 120);
        QCOMPARE(value(u"qel_posts_total{code=\"1\"}"_s), 1.0);
    }

    void BucketsOfTimesGrow()
    {
        TestDatabase site;
        ServerProcess server(QStringList{u"--database"_s, site.Url()} + WithMetrics);
        server.Query(u"SELECT ORG_ID FROM BAS_ORG"_s);
        double last = 0;
        int buckets = 0;
        for (const QByteArray &line : server.MetricsPage().split('\n')) {
            if (!line.startsWith("qel_request_seconds_bucket{route=\"query\""))
                continue;
            const double count = line.mid(line.lastIndexOf(' ') + 1).toDouble();
            QVERIFY(count >= last);
            last = count;
            ++buckets;
        }
        QCOMPARE(buckets, 13);
        QCOMPARE(last, 1.0);
    }

    void FiguresAreNotForClientsAndDataIsNotForTheMonitoring()
    {
        TestDatabase site;
        ServerProcess server(QStringList{u"--database"_s, site.Url()} + WithMetrics);
        QCOMPARE(server.Call({.method = "GET", .path = "/metrics"}).status, 404);
        RawClient monitor(server.MetricsPort());
        for (const auto &[path, status] : {std::pair<QByteArray, int>{"/session", 404},
                                           {"/healthz", 200},
                                           {"/readyz", 200},
                                           {"/metrics", 200}}) {
            monitor.Send(ToBytes({.method = "GET", .path = path}));
            QCOMPARE(monitor.Receive().status, status);
        }
    }

    void NotReadyWithTheTablesOfAnotherVersion()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        const auto status = [&] {
            return server.Call({.method = "GET", .path = "/readyz"}).status;
        };
        QCOMPARE(status(), 200);
        site.Connection().Execute("UPDATE SRV_SCHEMA SET VERSION = VERSION + 1");
        QCOMPARE(status(), 503);
        site.Connection().Execute("UPDATE SRV_SCHEMA SET VERSION = VERSION - 1");
        QCOMPARE(status(), 200);
    }

    void ReadyOnlyWithTheTables()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        QCOMPARE(server.Call({.method = "GET", .path = "/readyz"}).status, 200);
        site.Connection().Execute("ALTER TABLE USR_USER RENAME TO ELSEWHERE");
        const HttpReply reply = server.Call({.method = "GET", .path = "/readyz"});
        QCOMPARE(reply.status, 503);
        QCOMPARE(reply.body, QByteArray("not ready\n"));
        QVERIFY(server.WaitForLog("code=\"server.not_ready\""));
        QCOMPARE(server.Call({.method = "GET", .path = "/healthz"}).status, 200);
        site.Connection().Execute("ALTER TABLE ELSEWHERE RENAME TO USR_USER");
        QCOMPARE(server.Call({.method = "GET", .path = "/readyz"}).status, 200);
    }

    void ALineSaysWhoReadWhat()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url(), u"--log-format"_s, u"json"_s});
        const QString sql =
            u"SELECT O.ORG_ID FROM BAS_ORG O, UNI_ORG M WHERE M.ORG_ID = O.ORG_ID"_s;
        QCOMPARE(server.Query(sql).status, 200);
        QVERIFY(server.WaitForLog("\"hash\""));
        const QJsonObject line = QJsonDocument::fromJson(server.Log().split('\n').first()).object();
        QCOMPARE(line[u"user"_s], u"admin"_s);
        QCOMPARE(line[u"address"_s], u"127.0.0.1"_s);
        QCOMPARE(line[u"request"_s], u"POST /NorvaneSelectServlet"_s);
        QCOMPARE(line[u"status"_s], 200);
        QCOMPARE(line[u"tables"_s], u"BAS_ORG,UNI_ORG"_s);
        QCOMPARE(line[u"hash"_s].toString().size(), 16);
        QCOMPARE(line[u"rows"_s], 1);
        QVERIFY(line[u"bytes"_s].toInt() > 10);
        QVERIFY(line[u"received"_s].toInt() > sql.size());
        QVERIFY(line[u"us"_s].toInt() > 0);
        QCOMPARE(line[u"ref"_s].toString().size(), 10);
        QVERIFY(QDateTime::fromString(line[u"time"_s].toString(), Qt::ISODateWithMs).isValid());
        QVERIFY(!line.contains(u"statement"_s)); // of a failed one alone
    }

    void NothingSecretIsPrintedInAWholeRun_data()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("text") << u"text"_s;
        QTest::newRow("json") << u"json"_s;
    }
    void NothingSecretIsPrintedInAWholeRun()
    {
        QFETCH(QString, format);
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url(), u"--log-format"_s, format});
        const QByteArray name = "不愿公开的名称";
        const QByteArray price = "778899.25";
        const QString literal = QString::fromUtf8(name);
        const QString number = QString::fromLatin1(price);
        HttpCall wrong = QueryCall(u"SELECT ORG_ID FROM BAS_ORG"_s);
        wrong.credential = "admin:a-token-that-nobody-has";
        server.Call(wrong);
        for (const QString &sql : {
                 u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME = '%1'"_s,
                 u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAM = '%1' AND ORG_CODE > %2"_s,
                 u"SELECT ORG_ID FROM BAS_ORG WHERE '%1' SELECT %2"_s,
                 u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME = '%1"_s,
                 u"SELECT TO_DATE('%1', 'YYYY-MM-DD') D FROM BAS_ORG"_s,
                 u"SELECT ORG_ID FROM BAS_ORG WHERE TO_NUMBER(ORG_NAME || '%1') > %2"_s,
                 u"SELECT ORG_ID \"%1\" FROM BAS_ORG WHERE NVL('%1') = %2"_s,
             })
            server.Call(
                QueryCall((sql.contains("%2"_L1) ? sql.arg(literal, number) : sql.arg(literal))));
        QCOMPARE(server.Post(NewGroup(literal), "a-key-of-one-post").rows.value(0).code, u"1"_s);
        Wire::PostRequest bad = NewGroup(literal);
        bad.rows[0].append({u"LAST_OPERATE"_s, literal.repeated(100)});
        server.Call({.path = "/NorvaneServlet", .body = Wire::Encode(bad, Wire::Format::Json)});
        server.Call({.path = "/NorvaneServlet", .body = "{\"" + name + "\":\"" + price + "\"}"});
        server.Call({.method = "GET", .path = "/session?token=" + price});
        RawClient broken(server.Port());
        broken.Send("GET /" + price + " HTTP/1.1\r\nAuthorization: Basic " + name.toBase64() +
                    "\r\n " + name + "\r\n\r\n");
        broken.Receive();
        // The server's own failure names the statement, and no more than its beginning.
        site.Connection().Execute("ALTER TABLE CAT_ORG RENAME TO ELSEWHERE");
        server.Query(u"SELECT ORG_ID FROM CAT_ORG WHERE %1 < ORG_TYPE AND ORG_NAME IN ('%2')"_s.arg(
            number, QString(literal).repeated(150)));
        QVERIFY(server.WaitForLog("code=\"server.failure\"", 5'000) ||
                server.Log().contains("\"code\":\"server.failure\""));
        server.Process().terminate();
        QVERIFY(server.Process().waitForFinished(20'000));

        const QByteArray printed = server.Log() + server.Process().readAllStandardOutput();
        QVERIFY(printed.count('\n') >= 12);
        for (const QByteArray &secret :
             {name, price, QByteArray("a-token-that-nobody-has"),
              QByteArray(TestDatabase::AdminToken), QByteArray("a-key-of-one-post")}) {
            QVERIFY2(!printed.contains(secret), printed.constData());
            QVERIFY(!printed.contains(secret.toBase64().chopped(4)));
            QVERIFY(!printed.contains(("admin:" + secret).toBase64().chopped(4)));
        }
    }

    void NoClientPutsALineOrAnEscapeIntoTheLog()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        const Wire::PostRequest post{
            u"x\n2026-01-01 user=\"admin\"\x1b[2J"_s, u"y\u009b2J\u2028\u202e"_s, {}};
        server.Call({.path = "/NorvaneServlet", .body = Wire::Encode(post, Wire::Format::Json)});
        QVERIFY(server.WaitForLog("post.unknown_method"));
        QCOMPARE(server.Log().count('\n'), 1);
        QVERIFY(!server.Log().contains('\x1b'));
        QVERIFY(server.Log().contains("what=\"x\\u000a2026-01-01 user=\\\"admin\\\"\\u001b[2J/y"
                                      "\\u009b2J\\u2028\\u202e\""));
    }

    void PlainHttpBeyondThisMachineIsWarnedOf()
    {
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url(), u"--listen"_s, u"0.0.0.0:0"_s});
        QVERIFY(server.WaitForLog("event=\"warning\" detail=\"没有 TLS 而在 0.0.0.0 上监听"));
        ServerProcess inside({u"--database"_s, site.Url()});
        inside.Call({.method = "GET", .path = "/nowhere"});
        QVERIFY(inside.WaitForLog("/nowhere"));
        QVERIFY(!inside.Log().contains("event=\"warning\""));
    }

    void TheServiceManagerIsToldWhenItServesAndStops()
    {
        QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.filePath(u"notify"_s));
        const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
        QCOMPARE(bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        const timeval patience{20, 0};
        setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        const auto received = [socket] {
            char text[64];
            const ssize_t size = recv(socket, text, sizeof text, 0);
            return size > 0 ? QByteArray(text, size) : QByteArray();
        };
        qputenv("NOTIFY_SOCKET", path);
        TestDatabase site;
        ServerProcess server({u"--database"_s, site.Url()});
        qunsetenv("NOTIFY_SOCKET");
        QCOMPARE(received(), QByteArray("READY=1"));
        server.Process().terminate();
        QCOMPARE(received(), QByteArray("STOPPING=1"));
        close(socket);
    }
};

QTEST_GUILESS_MAIN(MonitoringTest)
#include "MonitoringTest.moc"
