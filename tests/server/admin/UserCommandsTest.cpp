#include "store/Clock.h"
#include "support/AdminRun.h"
#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

struct Site : TestDatabase
{
    AdminRun User(const QStringList &arguments) const
    {
        return RunAdmin(QStringList{u"user"_s} + arguments, {{u"QEL_DATABASE"_s, Url()}});
    }

    QByteArray Add(const QStringList &options = {}) const
    {
        return User(QStringList{u"add"_s, u"zhang"_s} + options).out.trimmed().toLatin1();
    }
};

int StatusOf(const ServerProcess &server, const QByteArray &token)
{
    return server.Call({.method = "GET", .path = "/session", .credential = "zhang:" + token})
        .status;
}

} // namespace

class UserCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void PrintsTokenAloudOnceAndKeepsItsHash()
    {
        Site site;
        const AdminRun run = site.User({u"add"_s, u"zhang"_s});
        QCOMPARE(run.status, 0);
        // 256 bits in base64url are 43 characters
        static const QRegularExpression form(u"^1-[A-Za-z0-9_-]{43}\n$"_s);
        QVERIFY2(form.match(run.out).hasMatch(), qPrintable(run.out));
        QCOMPARE(run.err, u"用户 zhang 的令牌 1，不过期。它只显示这一次。\n"_s);
        QCOMPARE(site.Number("SELECT LENGTH(TOKEN_HASH) FROM SRV_TOKEN WHERE USER_CODE = 'zhang'"),
                 64);
        const QString row = site.Connection()
                                .QueryRow("SELECT * FROM SRV_TOKEN WHERE USER_CODE = 'zhang'")
                                ->join(u'|');
        QVERIFY(!row.contains(run.out.trimmed()));
        QVERIFY(!row.contains(run.out.trimmed().mid(2)));
    }

    void TokensDiffer()
    {
        Site site;
        const QByteArray first = site.Add();
        const QByteArray second = site.Add();
        QVERIFY(first.startsWith("1-") && second.startsWith("2-"));
        QVERIFY(first.mid(2) != second.mid(2));
    }

    void RunningServersFollowAtOnce()
    {
        Site site;
        const ServerProcess one({u"--database"_s, site.Url()});
        const ServerProcess other({u"--database"_s, site.Url()});
        const QByteArray first = site.Add();
        const QByteArray second = site.Add();
        for (const ServerProcess *server : {&one, &other})
            for (const QByteArray &token : {first, second})
                QCOMPARE(StatusOf(*server, token), 200);

        const AdminRun run = site.User({u"revoke"_s, u"zhang"_s, u"--token-id"_s, u"1"_s});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, u"已撤销用户 zhang 的 1 个令牌。\n"_s);
        for (const ServerProcess *server : {&one, &other}) {
            QCOMPARE(StatusOf(*server, first), 401);
            QCOMPARE(StatusOf(*server, second), 200); // replaced without a gap
        }
        QCOMPARE(site.User({u"revoke"_s, u"zhang"_s}).status, 0);
        QCOMPARE(StatusOf(one, second), 401);
    }

    void TokenOfProgramStandsBesideThose()
    {
        Site site;
        const QByteArray added = site.Add();
        const QByteArray set = "set-by-a-program-1";
        QCOMPARE(
            RunAdmin({u"--database"_s, site.Url(), u"--set-token"_s, u"zhang"_s}, {}, set + '\n')
                .status,
            0);
        const ServerProcess server({u"--database"_s, site.Url()});
        QCOMPARE(StatusOf(server, added), 200);
        QCOMPARE(StatusOf(server, set), 200);
    }

    void ExpiredTokenIsRefused()
    {
        Site site;
        const QByteArray token = site.Add({u"--expires"_s, u"1"_s});
        const QDateTime end = QDateTime::fromString(
            site.Text("SELECT EXPIRES FROM SRV_TOKEN WHERE USER_CODE = 'zhang'"),
            u"yyyy-MM-dd HH:mm:ss"_s);
        const qint64 left = QDateTime::currentDateTime().secsTo(end);
        QVERIFY(left > 86'000 && left <= 86'400);
        QVERIFY(Store::FindOperator(site.Connection(), u"zhang"_s, token));
        site.Connection().Run("UPDATE SRV_TOKEN SET EXPIRES = ?1 WHERE USER_CODE = 'zhang'",
                              {Store::Now()});
        QVERIFY(!Store::FindOperator(site.Connection(), u"zhang"_s, token));
    }

    void ListsTokensWithoutSecrets()
    {
        Site site;
        const QByteArray first = site.Add({u"--label"_s, u"办公室 3"_s, u"--expires"_s, u"30"_s});
        const QByteArray second = site.Add({u"--unions"_s, u"300001,300002"_s});
        const AdminRun run = site.User({u"list"_s, u"zhang"_s});
        QCOMPARE(run.status, 0);
        const QStringList lines = run.Lines();
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0], u"USER\tTOKEN\tCREATED\tEXPIRES\tUNIONS\tLABEL"_s);
        const auto times = [&](const char *id) {
            return site.Connection()
                .QueryRow("SELECT CREATED, COALESCE(EXPIRES, '-') FROM SRV_TOKEN"
                          " WHERE USER_CODE = 'zhang' AND TOKEN_ID = ?1",
                          {QString::fromLatin1(id)})
                ->join(u'\t');
        };
        QCOMPARE(lines[1], u"zhang\t1\t%1\t-\t办公室 3"_s.arg(times("1")));
        QCOMPARE(lines[2], u"zhang\t2\t%1\t300001,300002\t-"_s.arg(times("2")));
        for (const QByteArray &token : {first, second})
            for (qsizetype at = 2; at + 4 <= token.size(); ++at)
                QVERIFY(!run.out.contains(QString::fromLatin1(token.mid(at, 4))));
        const AdminRun all = site.User({u"list"_s});
        QCOMPARE(all.Lines().size(), 4); // the test's own of admin is the first
        QVERIFY(all.Lines()[1].startsWith(u"admin\t0\t"_s));
    }

    void Refuses_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QStringList &arguments,
                            const QString &message) {
            QTest::newRow(name) << arguments << message;
        };
        row("unknown user", {u"add"_s, u"nobody"_s}, u"用户 nobody 不存在或已停用。"_s);
        row("disabled user", {u"add"_s, u"gone"_s}, u"用户 gone 不存在或已停用。"_s);
        row("no days", {u"add"_s, u"zhang"_s, u"--expires"_s, u"0"_s},
            u"--expires 应为 1 至 3660 的整数。"_s);
        row("line feed in label", {u"add"_s, u"zhang"_s, u"--label"_s, u"a\nb"_s},
            u"--label 应为至多 100 个可见字符。"_s);
        row("unknown group", {u"add"_s, u"zhang"_s, u"--unions"_s, u"300001,399999"_s},
            u"集团 399999 不存在。"_s);
        row("deleted group", {u"add"_s, u"zhang"_s, u"--unions"_s, u"300005"_s},
            u"集团 300005 不存在。"_s);
        row("no group", {u"add"_s, u"zhang"_s, u"--unions"_s, QString()}, u"集团  不存在。"_s);
        row("group that is text", {u"add"_s, u"zhang"_s, u"--unions"_s, u"300001,'"_s},
            u"集团 ' 不存在。"_s);
        row("no token to revoke", {u"revoke"_s, u"zhang"_s}, u"用户 zhang 没有令牌。"_s);
        row("no such token", {u"revoke"_s, u"admin"_s, u"--token-id"_s, u"7"_s},
            u"用户 admin 没有令牌 7。"_s);
        row("empty number", {u"revoke"_s, u"admin"_s, u"--token-id"_s, QString()},
            u"--token-id 是空的。"_s);
    }
    void Refuses()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        Site site;
        const AdminRun run = site.User(arguments);
        QCOMPARE(run.status, 1);
        QCOMPARE(run.out, QString());
        QCOMPARE(run.err, u"qel-server: "_s + message + u'\n');
        QCOMPARE(site.Text("SELECT COUNT(*) FROM SRV_TOKEN"), u"1"_s);
    }
};

QTEST_GUILESS_MAIN(UserCommandsTest)
#include "UserCommandsTest.moc"
