#include "store/Database.h"
#include "support/PostgresCopies.h"
#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

using namespace Qel;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Copies = 3;

QString TypeQuery(const QString &name)
{
    return u"SELECT ORG_TYPE_ID FROM UNI_ORG_TYPE WHERE ORG_TYPE_NAME = '%1'"_s.arg(name);
}

/// A new member type, which any number of operators may add at once.
HttpCall NewType(const QString &name, const QByteArray &key = {})
{
    const Wire::PostRequest request{u"com.business.admin.UniUnion"_s,
                                    u"insert_update_UniOrgType"_s,
                                    {{{u"ORG_TYPE_ID"_s, u""_s},
                                      {u"ORG_TYPE_NAME"_s, name},
                                      {u"UNION_ID"_s, u"300001"_s},
                                      {u"BUYER_FLAG"_s, u"1"_s},
                                      {u"SALER_FLAG"_s, u"0"_s},
                                      {u"SENDER_FLAG"_s, u"0"_s},
                                      {u"ADMIN_FLAG"_s, u"0"_s},
                                      {u"REMARK"_s, u""_s},
                                      {u"LAST_OPERATE"_s, u"1"_s}}}};
    return {
        .path = "/NorvaneServlet", .body = Wire::Encode(request, Wire::Format::Json), .key = key};
}

HttpCall Query(const QString &sql, const QByteArray &position = {})
{
    return {.path = "/NorvaneSelectServlet",
            .body = Wire::Encode(Wire::QueryRequest{sql, 0, 0, 1}, Wire::Format::Json),
            .position = position};
}

/// Rows of the answer; -1: it was an error.
qint64 RowsOf(const HttpReply &reply)
{
    return reply.status == 200
               ? Wire::DecodeQueryAnswer(reply.body, Wire::Format::Json).rows.RowCount()
               : -1;
}

QString CodeOf(const HttpReply &reply)
{
    if (reply.status != 200)
        return {};
    return Wire::DecodePostAnswer(reply.body, Wire::Format::Json).rows.value(0).code;
}

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

/// Operators at work: each stores a type, under the same key until it is acknowledged, and then
/// asks the other server for it.
class Load
{
public:
    Load(Site &site, int operators)
    {
        for (int number = 0; number < operators; ++number)
            threads_.emplace_back([this, &site, number] { Work(site, number); });
    }
    ~Load() { End(); }
    Q_DISABLE_COPY_MOVE(Load)

    void End()
    {
        stop_ = true;
        for (std::thread &thread : threads_) {
            if (thread.joinable())
                thread.join();
        }
    }

    std::atomic<int> acknowledged = 0;
    std::atomic<int> failedPosts = 0;
    std::atomic<int> failedQueries = 0;
    std::atomic<int> unseen = 0; ///< queries that did not show what their operator had stored

private:
    void Work(Site &site, int number)
    {
        for (int count = 0; !stop_; ++count) {
            const QString name = u"T%1-%2"_s.arg(number).arg(count);
            HttpReply stored;
            for (;;) {
                stored = site.servers[size_t(count % 2)]->Call(NewType(name, name.toLatin1()));
                if (CodeOf(stored) == "1"_L1)
                    break;
                ++failedPosts;
                std::this_thread::sleep_for(20ms);
            }
            ++acknowledged;
            const qint64 rows = RowsOf(site.servers[size_t((count + 1) % 2)]->Call(
                Query(TypeQuery(name), stored.Header("QEL-Position"))));
            if (rows < 0)
                ++failedQueries;
            else if (rows != 1)
                ++unseen;
        }
    }

    std::atomic<bool> stop_ = false;
    std::vector<std::thread> threads_;
};

} // namespace

/// Servers on a PostgreSQL database of one primary and two standbys.
class CopiesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { site_ = std::make_unique<Site>(); }
    void cleanup() { site_.reset(); }

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
        const HttpReply stored = Server().Call(NewType(u"医院"_s));
        QCOMPARE(CodeOf(stored), u"1"_s);
        const QByteArray position = stored.Header("QEL-Position");
        QVERIFY(!position.isEmpty());
        ServerProcess &other = *site_->servers[1];
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"医院"_s)))), 0); // of a copy that is behind
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"医院"_s), position))), 1);
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"医院"_s), "latest"))), 1);
        QCOMPARE(RowsOf(other.Call(Query(TypeQuery(u"医院"_s), "what is this"))), 1);
        SetReplay(true);
        QTRY_COMPARE(RowsOf(other.Call(Query(TypeQuery(u"医院"_s)))), 1);
    }

    void TokenThatIsTooNewForACopyIsKnown()
    {
        SetReplay(false);
        Store::SetToken(*Store::Database::Open(site_->copies.Url())->OpenWriter(), u"zhang"_s,
                        "0123456789abcdef-zhang");
        HttpCall query = Query(TypeQuery(u"医院"_s));
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
        const HttpReply reply = hasty.Call(NewType(u"医院"_s, "key-1"));
        QVERIFY2(reply.status >= 500, reply.body.constData());
        QCOMPARE(RowsOf(hasty.Call(Query(TypeQuery(u"医院"_s)))), 0); // nobody sees it either
        site_->copies.Start(1);
        QTRY_COMPARE_WITH_TIMEOUT(CodeOf(hasty.Call(NewType(u"医院"_s, "key-1"))), u"1"_s, 20'000);
        QCOMPARE(RowsOf(hasty.Call(Query(TypeQuery(u"医院"_s), "latest"))), 1);
    }

    /// A standby stops and comes back, then the primary is lost and a standby takes its place, all
    /// of it under load and without a word to the servers.
    void NothingAcknowledgedIsLostWithThePrimary()
    {
        PostgresCopies &copies = site_->copies;
        Load load(*site_, 4);
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
        QCOMPARE(now->QueryText("SELECT COUNT(*) FROM SYS_UPDATE_LOG"
                                " WHERE TABLE_NAME = 'UNI_ORG_TYPE'"),
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
