#include "FaultyDatabase.h"
#include "ManagerSite.h"
#include "managers/PostRunner.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Break = FaultyDatabase::Break;
using Clock = Store::WriterPool::Clock;
using Managers::PostInGroup;

namespace {

const QStringList Organisations{u"200003"_s, u"200004"_s, u"200005"_s};

/// A rule of an organisation; its name is what it is told from others by.
PostInGroup StoreRule(const QString &orgId, const QString &name, const QByteArray &key = {},
                      Clock::time_point deadline = Clock::now() + 1min)
{
    const Wire::PostRequest request{u"com.business.admin.RuleManager"_s,
                                    u"insertUpdateOrgRule"_s,
                                    {{{u"ORG_ID"_s, orgId},
                                      {u"RULE_CODE"_s, u"ORG_HPTX"_s},
                                      {u"RULE_NAME"_s, name},
                                      {u"RULE_VALUE"_s, u"1"_s},
                                      {u"VALUE_TYPE"_s, u"B"_s},
                                      {u"ENABLE_FLAG"_s, u"1"_s},
                                      {u"REMARK"_s, {}},
                                      {u"LAST_OPERATE"_s, u"1"_s}}}};
    const Managers::Submission submission{
        TestDatabase::Admin(),
        {.request = request, .key = key, .body = Wire::Encode(request, Wire::Format::Cbor)}};
    return {.deadline = deadline, .prepare = [submission](auto &) { return submission; }};
}

std::vector<PostInGroup> OneForEach(const QString &name)
{
    std::vector<PostInGroup> posts;
    for (const QString &id : Organisations)
        posts.push_back(StoreRule(id, name, "key-" + id.toLatin1()));
    return posts;
}

/// The code of the first result, or of the failure.
QByteArray OutcomeOf(const PostInGroup &post)
{
    try {
        if (post.failure)
            std::rethrow_exception(post.failure);
        return post.answer.rows.value(0).code.toLatin1();
    } catch (const Managers::EPostError &error) {
        return error.Code();
    } catch (const Store::EStoreError &) {
        return "store error";
    }
}

QByteArrayList OutcomesOf(const std::vector<PostInGroup> &posts)
{
    QByteArrayList outcomes;
    for (const PostInGroup &post : posts)
        outcomes += OutcomeOf(post);
    return outcomes;
}

const QByteArray StoredRules = "SELECT ORG_ID||'/'||RULE_NAME FROM UNI_ORG_RULE ORDER BY ORG_ID";

} // namespace

/// Several posts in one transaction of a database that has one writer.
class GroupedPostsTest : public QObject
{
    Q_OBJECT

private slots:
    void PostsShareOneTransaction()
    {
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        auto posts = OneForEach(u"a"_s);
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "1", "1"}));
        QCOMPARE(database.Committed(), 1);
        QCOMPARE(site.Texts(StoredRules),
                 (QStringList{u"200003/a"_s, u"200004/a"_s, u"200005/a"_s}));
        QCOMPARE(site.Logged(), 3);
        QCOMPARE(site.Number("SELECT count(*) FROM SRV_IDEMPOTENCY"), 3);
    }

    void LaterOneSeesWhatTheEarlierStored()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        std::vector<PostInGroup> posts{StoreRule(u"200005"_s, u"a"_s),
                                       StoreRule(u"200005"_s, u"b"_s)};
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "1"}));
        QCOMPARE(site.Texts(StoredRules), QStringList{u"200005/b"_s});
        QCOMPARE(site.Texts("SELECT OPTION_TYPE FROM SYS_UPDATE_LOG ORDER BY LOG_ID"),
                 (QStringList{u"1"_s, u"2"_s})); // added, then changed
    }

    void OneKeyTwiceInAGroupHasOneEffect()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        std::vector<PostInGroup> posts{StoreRule(u"200005"_s, u"a"_s, "key"),
                                       StoreRule(u"200005"_s, u"a"_s, "key"),
                                       StoreRule(u"200005"_s, u"b"_s, "key")};
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "1", "post.key_reused"}));
        QCOMPARE(site.Logged(), 1);
    }

    void RefusedOneLeavesNothingAndTheOthersAreStored()
    {
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        auto posts = OneForEach(u"a"_s);
        posts[1] = StoreRule(u"999999"_s, u"a"_s); // there is no such organisation
        posts.push_back(posts[2]);
        posts.back().prepare = [](auto &) -> Managers::Submission {
            throw Managers::EPostError("post.unknown_method", u"x"_s);
        };
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "0", "1", "post.unknown_method"}));
        QCOMPARE(database.Committed(), 1);
        QCOMPARE(site.Texts(StoredRules), (QStringList{u"200003/a"_s, u"200005/a"_s}));
    }

    void RowThatTheDatabaseRefusesIsUndoneAlone()
    {
        ManagerSite site;
        site.Trap(ManagerSite::Trouble::Constraint, "AFTER INSERT ON UNI_ORG_RULE",
                  "NEW.ORG_ID = '200004'");
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        auto posts = OneForEach(u"a"_s);
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "0", "1"}));
        QCOMPARE(database.Committed(), 1);
        QCOMPARE(site.Texts(StoredRules), (QStringList{u"200003/a"_s, u"200005/a"_s}));
        QCOMPARE(site.Logged(), 2);
    }

    void OneThatFailsIsRunAgainByItself()
    {
        ManagerSite site;
        site.Connection().Execute("CREATE TRIGGER fails AFTER INSERT ON UNI_ORG_RULE"
                                  " WHEN NEW.ORG_ID = '200004'"
                                  " BEGIN UPDATE UNI_ORG_RULE SET REMARK ="
                                  " abs(NEW.ORG_ID * 0 - 9223372036854775807 - 1); END");
        Store::WriterPool writers(site.Database());
        auto posts = OneForEach(u"a"_s);
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "store error", "1"}));
        QCOMPARE(site.Texts(StoredRules), (QStringList{u"200003/a"_s, u"200005/a"_s}));
        QCOMPARE(site.Logged(), 2);
    }

    void OneThatMakesTheDatabaseUndoEverythingDoesNotTakeTheOthersAlong()
    {
        ManagerSite site;
        site.Connection().Execute("CREATE TRIGGER undoes AFTER INSERT ON UNI_ORG_RULE"
                                  " WHEN NEW.ORG_ID = '200004'"
                                  " BEGIN SELECT RAISE(ROLLBACK, 'undone'); END");
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        auto posts = OneForEach(u"a"_s);
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "0", "1"}));
        QCOMPARE(database.Committed(), 2);
        QCOMPARE(site.Texts(StoredRules), (QStringList{u"200003/a"_s, u"200005/a"_s}));
        QCOMPARE(site.Logged(), 2);
    }

    void WhatCannotBeginInTimeIsNotDone()
    {
        ManagerSite site;
        Store::WriterPool writers(site.Database());
        std::vector<PostInGroup> posts;
        for (const QString &id : Organisations)
            posts.push_back(StoreRule(id, u"a"_s, {}, Clock::now() + 200ms));
        {
            const Store::Transaction other(site.Connection());
            Managers::SubmitPosts(writers, posts);
        }
        QCOMPARE(OutcomesOf(posts),
                 (QByteArrayList{"post.not_done", "post.not_done", "post.not_done"}));
        QCOMPARE(site.Texts(StoredRules), QStringList());
    }

    void CommitWhoseAnswerWasLostIsFoundByTheKeys_data()
    {
        QTest::addColumn<int>("where");
        QTest::newRow("carried out") << static_cast<int>(Break::AfterCommit);
        QTest::newRow("never arrived") << static_cast<int>(Break::BeforeCommit);
    }
    void CommitWhoseAnswerWasLostIsFoundByTheKeys()
    {
        QFETCH(int, where);
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        database.BreakOnce(static_cast<Break>(where));
        auto posts = OneForEach(u"a"_s);
        posts.push_back(StoreRule(u"200006"_s, u"without key"_s));
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "1", "1", "post.unknown"}));
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_ORG_RULE WHERE RULE_NAME = 'a'"), 3);
        QCOMPARE(site.Logged(), where == static_cast<int>(Break::AfterCommit) ? 4 : 3);
    }

    void ConnectionThatBreaksInTheMiddleLosesNoPost()
    {
        ManagerSite site;
        FaultyDatabase database(site.Database());
        Store::WriterPool writers(database);
        database.BreakOnce(Break::InStatement);
        auto posts = OneForEach(u"a"_s);
        Managers::SubmitPosts(writers, posts);
        QCOMPARE(OutcomesOf(posts), (QByteArrayList{"1", "1", "1"}));
        QCOMPARE(site.Logged(), 3);
    }
};

QTEST_GUILESS_MAIN(GroupedPostsTest)
#include "GroupedPostsTest.moc"
