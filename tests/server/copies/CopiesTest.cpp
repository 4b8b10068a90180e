#include "copies/PostLoad.h"
#include "store/Database.h"
#include "support/PostgresCopies.h"
#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

#include <array>
#include <memory>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Copies = 3;

/// Two servers on a database in three copies.
struct Site
{
    Site()
    {
        const auto database = Store::Database::Open(copies.Url());
        TestDatabase::Fill(*database->OpenWriter(), TestDatabase::Content::Rows);
        for (auto &server : servers)
            server = std::make_unique<ServerProcess>(QStringList{u"--database"_s, copies.Url()});
    }

    int Sessions(int copy) const ///< of servers
    {
        return copies
            .Text(copy, u"SELECT COUNT(*) FROM pg_stat_activity"
                        " WHERE application_name = 'qel-server'"_s)
            .toInt();
    }

    PostgresCopies copies;
    std::array<std::unique_ptr<ServerProcess>, 2> servers;
};

} // namespace

/// Servers on a PostgreSQL database of one primary and two standbys.
class CopiesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { site_ = std::make_unique<Site>(); }
    void cleanupTestCase() { site_.reset(); }
    void cleanup() ///< before the primary is lost in the end
    {
        for (int copy = 1; copy < Copies; ++copy) {
            if (!site_->copies.IsRunning(copy))
                site_->copies.Start(copy);
            if (site_->copies.Text(copy, u"SELECT pg_is_in_recovery()"_s) == "t"_L1)
                site_->copies.SetReplay(copy, true);
        }
    }

    void QueriesRunOnStandbysAndPostsOnThePrimary()
    {
        for (int round = 0; round < 10; ++round)
            QCOMPARE(RowsOf(Server().Call(Query(TypeQuery(u"无"_s)))), 0);
        QVERIFY(site_->Sessions(1) + site_->Sessions(2) > 0);
        QCOMPARE(CodeOf(Server().Call(NewType(u"医院"_s))), u"1"_s);
        QCOMPARE(site_->copies.Text(0, u"SELECT pg_is_in_recovery()"_s), u"f"_s);
    }

    void OperatorsReadWhatTheyHaveWritten()
    {
        SetReplay(false);
        const HttpReply stored = Server().Call(NewType(u"卫生院"_s));
        QCOMPARE(CodeOf(stored), u"1"_s);
        const QByteArray position = stored.Header("QEL-Position");
        QVERIFY(!position.isEmpty());
        ServerProcess &other = *site_->servers[1];
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"卫生院"_s)))), 0); // of a copy that is behind
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"卫生院"_s), position))), 1);
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"卫生院"_s), "latest"))), 1);
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"卫生院"_s), "what is this"))), 1);
        SetReplay(true);
        QTRY_COMPARE(RowsOf(other.Call(Query(TypeQuery(u"卫生院"_s)))), 1);
    }

    void TokenThatIsTooNewForACopyIsKnown()
    {
        SetReplay(false);
        Store::SetToken(*Store::Database::Open(site_->copies.Url())->OpenWriter(), u"zhang"_s,
                        "0123456789abcdef-zhang");
        HttpCall query = Query(TypeQuery(u"药店"_s));
        query.credential = "zhang:0123456789abcdef-zhang";
        QCOMPARE(RowsOf(Server().Call(query)), 0);
        query.credential = "zhang:0123456789abcdef-other";
        QCOMPARE(Server().Call(query).status, 401);
    }

    void NoCommitIsAcknowledgedThatOneMachineAloneHas()
    {
        site_->copies.Stop(1);
        site_->copies.Stop(2);
        ServerProcess hasty({u"--database"_s, site_->copies.Url(), u"--statement-time"_s, u"2"_s});
        const HttpReply reply = hasty.Call(NewType(u"诊所"_s, "key-1"));
        QVERIFY2(reply.status >= 500, reply.body.constData());
        QCOMPARE(RowsOf(hasty.Call(Query(TypeQuery(u"诊所"_s)))), 0); // nobody sees it either
        site_->copies.Start(1);
        QTRY_COMPARE_WITH_TIMEOUT(CodeOf(hasty.Call(NewType(u"诊所"_s, "key-1"))), u"1"_s, 20'000);
        QCOMPARE(RowsOf(hasty.Call(Query(TypeQuery(u"诊所"_s), "latest"))), 1);
    }

    /// A standby stops and comes back, then the primary is lost and a standby takes its place, all
    /// of it under load and without a word to the servers.
    void NothingAcknowledgedIsLostWithThePrimary()
    {
        PostgresCopies &copies = site_->copies;
        PostLoad load({site_->servers[0]->Port(), site_->servers[1]->Port()}, 4);
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > 50, 30'000);
        copies.Stop(2);
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > 100, 30'000);
        copies.Start(2);
        QTRY_COMPARE_WITH_TIMEOUT(
            copies.Text(0, u"SELECT COUNT(*) FROM pg_stat_replication WHERE state = 'streaming'"_s),
            u"2"_s, 30'000);
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > 200, 30'000);
        QCOMPARE(load.failedPosts.load(), 0);
        QCOMPARE(load.failedQueries.load(), 0);

        copies.Stop(0);
        QElapsedTimer outage;
        outage.start();
        const auto received = [&copies](int copy) {
            return copies.Text(copy, u"SELECT pg_wal_lsn_diff(pg_last_wal_receive_lsn(), '0/0')"_s)
                .toLongLong();
        };
        const int next = received(1) >= received(2) ? 1 : 2;
        copies.Promote(next);
        copies.Follow(3 - next, next);
        const int before = load.acknowledged;
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > before + 8, 30'000);
        qInfo("service back %lld ms after the primary was lost; %d posts and %d queries failed",
              outage.elapsed(), load.failedPosts.load(), load.failedQueries.load());
        QTRY_VERIFY_WITH_TIMEOUT(load.acknowledged > before + 100, 30'000);
        load.End();

        QCOMPARE(load.unseen.load(), 0);
        const auto now = Store::Database::Open(copies.UrlOf(next))->OpenWriter();
        QCOMPARE(now->QueryText("SELECT COUNT(*) FROM UNI_ORG_TYPE WHERE ORG_TYPE_NAME LIKE 'T%'"),
                 QString::number(load.acknowledged.load()));
        QCOMPARE(now->QueryText("SELECT COUNT(*) FROM SYS_UPDATE_LOG JOIN UNI_ORG_TYPE"
                                " ON ORG_TYPE_ID = KEY_ID1 WHERE TABLE_NAME = 'UNI_ORG_TYPE'"
                                " AND ORG_TYPE_NAME LIKE 'T%'"),
                 QString::number(load.acknowledged.load()));
    }

private:
    ServerProcess &Server() { return *site_->servers[0]; }
    void SetReplay(bool on)
    {
        for (int copy = 1; copy < Copies; ++copy)
            site_->copies.SetReplay(copy, on);
    }

    std::unique_ptr<Site> site_;
};

QTEST_GUILESS_MAIN(CopiesTest)
#include "CopiesTest.moc"
