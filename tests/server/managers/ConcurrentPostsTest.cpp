#include "FaultyDatabase.h"
#include "ManagerSite.h"
#include "managers/KeptAnswers.h"
#include "managers/PostRunner.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <barrier>
#include <functional>
#include <thread>

using namespace Qel;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Break = FaultyDatabase::Break;
using Clock = Store::WriterPool::Clock;

namespace {

constexpr auto Patience = 60s;
const QByteArray Key = "11111111-2222-3333-4444-555555555555";

Store::Operator Zhang()
{
    return {u"600002"_s, u"zhang"_s, u"张伟"_s, u"200002"_s, u"第2院"_s, u"第2人民医院"_s};
}

Wire::PostAnswer Submit(Store::WriterPool &writers, const Wire::PostRequest &request,
                        const QByteArray &key = {},
                        const Store::Operator &user = TestDatabase::Admin(),
                        Clock::duration time = Patience)
{
    const Managers::Submission submission{
        user, {.request = request, .key = key, .body = Wire::Encode(request, Wire::Format::Cbor)}};
    return Managers::SubmitPost(writers, Clock::now() + time,
                                [&](Store::Connection &) { return submission; });
}

/// The code of the error that the post ends in.
QByteArray Failure(Store::WriterPool &writers, const Wire::PostRequest &request,
                   const QByteArray &key = {}, Clock::duration time = Patience)
{
    try {
        Submit(writers, request, key, TestDatabase::Admin(), time);
        return "none";
    } catch (const Managers::EPostError &error) {
        return error.Code();
    }
}

/// Runs `work(0)` to `work(count - 1)` at the same time. Throws what the last one to fail threw.
void AtOnce(int count, const std::function<void(int)> &work)
{
    std::barrier start(count);
    std::mutex lock;
    std::exception_ptr failure;
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < count; ++number)
            threads.emplace_back([&, number] {
                start.arrive_and_wait();
                try {
                    work(number);
                } catch (...) {
                    const std::lock_guard guard(lock);
                    failure = std::current_exception();
                }
            });
    }
    if (failure)
        std::rethrow_exception(failure);
}

Wire::PostRequest DeleteMember()
{
    return {u"com.business.admin.UniUnionOrg"_s,
            u"delete_UniOrg"_s,
            {{{u"UNION_ID"_s, u"300002"_s}, {u"ORG_ID"_s, u"200007"_s}}}};
}

Wire::PostRequest AddGroup(const QString &code, const QString &leader)
{
    return {u"com.business.admin.UniUnion"_s,
            u"insert_update_UniUnion"_s,
            {{{u"UNION_ID"_s, {}},
              {u"PARENT_ID"_s, {}},
              {u"UNION_CODE"_s, code},
              {u"UNION_NAME"_s, u"新集团"_s + code},
              {u"UNION_TYPE"_s, u"1"_s},
              {u"REGION_ID"_s, {}},
              {u"MASTER_ORGID"_s, leader},
              {u"REMARK"_s, {}}}}};
}

/// A rule whose two texts are the same: a mixture of two posts shows.
Wire::PostRequest StoreRule(const QString &text)
{
    return {u"com.business.admin.RuleManager"_s,
            u"insertUpdateOrgRule"_s,
            {{{u"ORG_ID"_s, u"200005"_s},
              {u"RULE_CODE"_s, u"ORG_HPTX"_s},
              {u"RULE_NAME"_s, text},
              {u"RULE_VALUE"_s, u"1"_s},
              {u"VALUE_TYPE"_s, u"B"_s},
              {u"ENABLE_FLAG"_s, u"1"_s},
              {u"REMARK"_s, text},
              {u"LAST_OPERATE"_s, u"1"_s}}}};
}

Wire::PostRequest StoreTypes(const QString &prefix, int count)
{
    Wire::PostRequest request{u"com.business.admin.UniUnion"_s, u"insert_update_UniOrgType"_s, {}};
    const QStringList ids{u"400001"_s, u"400002"_s};
    for (int number = 0; number < count; ++number)
        request.rows.append({{u"ORG_TYPE_ID"_s, ids.value(number)},
                             {u"ORG_TYPE_NAME"_s, prefix + QString::number(number)},
                             {u"UNION_ID"_s, u"300002"_s},
                             {u"BUYER_FLAG"_s, u"1"_s},
                             {u"SALER_FLAG"_s, u"0"_s},
                             {u"SENDER_FLAG"_s, u"0"_s},
                             {u"ADMIN_FLAG"_s, u"0"_s},
                             {u"REMARK"_s, prefix},
                             {u"LAST_OPERATE"_s, u"1"_s}});
    return request;
}

Wire::PostRequest AssignUsers(const QStringList &users)
{
    Wire::PostRequest request{
        u"com.business.admin.TraBuyCatalog"_s, u"insertUpdateTraUserBuyCatalog"_s, {}};
    for (const QString &user : users)
        request.rows.append({{u"USER_ID"_s, user},
                             {u"CATALOG_ID"_s, u"1"_s},
                             {u"BUY_ORGID"_s, u"200003"_s},
                             {u"RELATION_FLAG"_s, u"0"_s}});
    return request;
}

/// The change log of a record in its order: who made each entry.
QStringList Authors(ManagerSite &site, const QByteArray &table, const QByteArray &key1)
{
    return site.Texts("SELECT USER_ID FROM SYS_UPDATE_LOG WHERE TABLE_NAME = '" + table +
                      "' AND KEY_ID1 = '" + key1 + "' ORDER BY CAST(LOG_ID AS BIGINT)");
}

} // namespace

/// Many posts at the same time, and connections that break.
class ConcurrentPostsTest : public QObject
{
    Q_OBJECT

private slots:
    void ThirtyTwoThreadsWithOneKeyHaveOneEffect()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        std::array<QByteArray, 32> answers;
        AtOnce(32, [&](int number) {
            answers[static_cast<std::size_t>(number)] = Wire::Encode(
                Submit(writers, AddGroup(u"0009"_s, u"200005"_s), Key), Wire::Format::Json);
        });
        for (const QByteArray &answer : answers)
            QCOMPARE(answer, answers[0]);
        QCOMPARE(Wire::DecodePostAnswer(answers[0], Wire::Format::Json).rows.value(0).code, u"1"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_UNION WHERE UNION_CODE = '0009'"), 1);
        QCOMPARE(site.Logged(), 1);
    }

    void OneKeyWithTwoBodiesAtOnceHasOneEffectAndOneRefusal()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        for (int round = 0; round < 10; ++round) {
            const QByteArray key = Key + QByteArray::number(round);
            std::array<QByteArray, 2> failures;
            AtOnce(2, [&](int number) {
                const QString text = u"%1-%2"_s.arg(round).arg(number);
                failures[static_cast<std::size_t>(number)] = Failure(writers, StoreRule(text), key);
            });
            std::sort(failures.begin(), failures.end());
            QCOMPARE(failures[0], "none");
            QCOMPARE(failures[1], "post.key_reused");
        }
        QCOMPARE(site.Logged(), 10);
    }

    void RowThatTwoOperatorsSaveIsTheLastOfTheLogAndWhole()
    {
        constexpr int rounds = 30;
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        AtOnce(2, [&](int number) {
            const Store::Operator user = number == 0 ? TestDatabase::Admin() : Zhang();
            for (int round = 0; round < rounds; ++round) {
                const auto answer =
                    Submit(writers, StoreRule(u"%1-%2"_s.arg(user.userId).arg(round)), {}, user);
                if (answer.rows.value(0).code != u"1")
                    throw EQelError(u"not stored"_s);
            }
        });
        const QStringList authors = Authors(site, "UNI_ORG_RULE", "200005");
        QCOMPARE(authors.size(), 2 * rounds);
        QCOMPARE(authors.count(u"600001"_s), rounds);
        // An operator posts one after the other: what is left is the last post of the last author.
        const QString left = authors.last() + u"-%1"_s.arg(rounds - 1);
        QCOMPARE(site.Texts("SELECT RULE_NAME||'/'||REMARK||'/'||LAST_USER_ID FROM UNI_ORG_RULE"),
                 QStringList{left + u'/' + left + u'/' + authors.last()});
    }

    void ListsOfTwoOperatorsNeverMix()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        for (int round = 0; round < 10; ++round) {
            AtOnce(2, [&](int number) {
                Submit(writers, StoreTypes(u"%1-%2-"_s.arg(round).arg(number), 2));
            });
            const QStringList remarks =
                site.Texts("SELECT REMARK FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID IN"
                           " ('400001', '400002') ORDER BY ORG_TYPE_ID");
            QCOMPARE(remarks.size(), 2);
            QCOMPARE(remarks[0], remarks[1]);
        }
        QCOMPARE(site.Logged(), 10 * 2 * 2);
    }

    void ReplacedListIsOneOfTheTwoPosted()
    {
        ManagerSite site;
        for (int number = 1; number <= 4; ++number)
            site.Connection().Run(
                "INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID, ENABLE_FLAG)"
                " VALUES (?1, ?1, ?1, '200003', '1')",
                {QString::number(610000 + number)});
        site.Connection().Run("INSERT INTO TRA_BUY_CATALOG (CATALOG_ID, CATALOG_NAME, BUY_ORGID)"
                              " VALUES ('1', '西药库', '200003')");
        Store::WriterPool writers(site.Database());
        const QList<QStringList> lists{{u"610001"_s, u"610002"_s}, {u"610003"_s, u"610004"_s}};
        for (int round = 0; round < 10; ++round) {
            AtOnce(2, [&](int number) { Submit(writers, AssignUsers(lists[number])); });
            const QStringList left =
                site.Texts("SELECT USER_ID FROM TRA_USER_BUY_CATALOG WHERE CATALOG_ID = '1'"
                           " AND LAST_OPERATE <> 'D' ORDER BY USER_ID");
            QVERIFY2(lists.contains(left), qPrintable(left.join(u' ')));
        }
    }

    void OfTwoWhoTakeOneCodeOneIsRefused()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        const QList<QStringList> leaders{{u"200005"_s, u"200006"_s}, {u"200007"_s, u"200008"_s}};
        for (int round = 0; round < 2; ++round) {
            std::array<QString, 2> codes;
            AtOnce(2, [&](int number) {
                codes[static_cast<std::size_t>(number)] =
                    Submit(writers, AddGroup(u"001%1"_s.arg(round), leaders[round][number]))
                        .rows.value(0)
                        .code;
            });
            std::sort(codes.begin(), codes.end());
            QCOMPARE(codes[0], u"-1"_s);
            QCOMPARE(codes[1], u"1"_s);
        }
        QCOMPARE(site.Logged(), 2);
    }

    void KeysOfManyWritersDiffer()
    {
        constexpr int each = 20;
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        std::array<QStringList, 4> keys;
        AtOnce(4, [&](int number) {
            for (int round = 0; round < each; ++round) {
                Wire::PostRequest request = StoreTypes(u"%1-%2"_s.arg(number).arg(round), 1);
                request.rows[0][0].second.clear();
                keys[static_cast<std::size_t>(number)] +=
                    Submit(writers, request).rows.value(0).values.value(0).second;
            }
        });
        QSet<QString> all;
        for (const QStringList &some : keys)
            all.unite(QSet<QString>(some.begin(), some.end()));
        QCOMPARE(all.size(), 4 * each);
        // Beyond those that were there before the server counted.
        for (const QString &key : std::as_const(all))
            QVERIFY2(key.toInt() > 400004, qPrintable(key));
    }

    void PostIsGivenUpAtItsDeadlineWithNothingWritten()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        {
            Store::Transaction other(site.Connection());
            site.Connection().Run("UPDATE UNI_ORG SET LAST_USER = 'x'");
            QCOMPARE(Failure(writers, DeleteMember(), Key, 200ms), "post.not_done");
        }
        QCOMPARE(site.Text("SELECT LAST_OPERATE FROM UNI_ORG"), u"1"_s);
        QCOMPARE(site.Logged(), 0);
        QCOMPARE(site.Number("SELECT count(*) FROM SRV_IDEMPOTENCY"), 0);
        QCOMPARE(Failure(writers, DeleteMember(), Key), "none");
        QCOMPARE(site.Logged(), 1);
    }

    void PostGoesOnAfterItsConnectionBroke()
    {
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        database.BreakOnce(Break::InStatement);
        QCOMPARE(Submit(writers, DeleteMember()).rows.value(0).code, u"1"_s);
        QCOMPARE(database.Opened(), 2); // the broken one was thrown away
        QCOMPARE(site.Logged(), 1);
    }

    void CommitWhoseAnswerWasLostIsFoundByItsKey_data()
    {
        QTest::addColumn<int>("where");
        QTest::newRow("carried out") << static_cast<int>(Break::AfterCommit);
        QTest::newRow("never arrived") << static_cast<int>(Break::BeforeCommit);
    }
    void CommitWhoseAnswerWasLostIsFoundByItsKey()
    {
        QFETCH(int, where);
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        database.BreakOnce(static_cast<Break>(where));
        QCOMPARE(Submit(writers, DeleteMember(), Key).rows.value(0).code, u"1"_s);
        QCOMPARE(database.Opened(), 2);
        QCOMPARE(site.Logged(), 1);
    }

    void CommitWithoutKeyWhoseAnswerWasLostIsSaidToBeUnknown()
    {
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        database.BreakOnce(Break::AfterCommit);
        try {
            Submit(writers, DeleteMember());
            QFAIL("an answer that nobody has");
        } catch (const Managers::EPostError &error) {
            QCOMPARE(error.Code(), "post.unknown");
            QCOMPARE(error.Message(),
                     u"保存时与数据库的连接中断，无法确定是否已保存，请查询核对后再操作。"_s);
        }
        QCOMPARE(site.Logged(), 1);
    }

    void ExpiredAnswersAreDroppedBesideThePosts()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        Submit(writers, DeleteMember(), "old");
        Submit(writers, DeleteMember(), "new");
        site.Connection().Run("UPDATE SRV_IDEMPOTENCY SET CREATED = '2020-01-01 00:00:00'"
                              " WHERE KEY = 'old'");
        const Managers::AnswerSweeper sweeper(writers, 10ms);
        QTRY_COMPARE(site.Texts("SELECT KEY FROM SRV_IDEMPOTENCY"), QStringList{u"new"_s});
    }
};

QTEST_GUILESS_MAIN(ConcurrentPostsTest)
#include "ConcurrentPostsTest.moc"
