#include "managers/PostRunner.h"
#include "support/TestDatabase.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

Wire::PostRequest DeleteMember(const QString &userId = u"600001"_s,
                               const QString &userName = u"系统管理员"_s)
{
    return {u"com.business.admin.UniUnionOrg"_s,
            u"delete_UniOrg"_s,
            {{{u"UNION_ID"_s, u"300002"_s},
              {u"ORG_ID"_s, u"200007"_s},
              {u"LOG_USER_ID"_s, userId},
              {u"LOG_USER_NAME"_s, userName}}}};
}

Wire::PostAnswer Run(TestDatabase &site, const Wire::PostRequest &request,
                     const QByteArray &key = {})
{
    return Managers::RunPost(
        site.Connection(), TestDatabase::Admin(),
        {.request = request, .key = key, .body = Wire::Encode(request, Wire::Format::Cbor)});
}

/// The code of the error that the post is refused with as a whole.
QByteArray Refusal(TestDatabase &site, const Wire::PostRequest &request, const QByteArray &key = {})
{
    try {
        Run(site, request, key);
        return "none";
    } catch (const Managers::EPostError &error) {
        return error.Code();
    }
}

bool IsMember(TestDatabase &site)
{
    return site.Text("SELECT LAST_OPERATE FROM UNI_ORG") == u"1";
}

int Logged(TestDatabase &site)
{
    return site.Number("SELECT count(*) FROM SYS_UPDATE_LOG");
}

} // namespace

/// What holds for every method: who acts, what a row may hold, all or nothing, once.
class PostRunnerTest : public QObject
{
    Q_OBJECT

private slots:
    void UnknownMethodIsRefused()
    {
        TestDatabase site;
        Wire::PostRequest request = DeleteMember();
        request.method = u"delete_everything"_s;
        QCOMPARE(Refusal(site, request), "post.unknown_method");
        request = DeleteMember();
        request.manager = u"com.business.admin.UniUnion"_s;
        QCOMPARE(Refusal(site, request), "post.unknown_method");
    }

    void RowThatNamesAnotherOperatorIsRefused()
    {
        TestDatabase site;
        QCOMPARE(Refusal(site, DeleteMember(u"600002"_s)), "post.operator");
        QCOMPARE(Refusal(site, DeleteMember(u"600001"_s, u"张伟"_s)), "post.operator");
        QVERIFY(IsMember(site));
        QCOMPARE(Logged(site), 0);
    }

    void UnknownDoubledAndOverlongParametersAreRefused()
    {
        TestDatabase site;
        Wire::PostRequest request = DeleteMember();
        request.rows[0].append({u"PASSWORD"_s, u"x"_s});
        QCOMPARE(Refusal(site, request), "post.bad_row");
        request = DeleteMember();
        request.rows[0].append({u"ORG_ID"_s, u"200001"_s});
        QCOMPARE(Refusal(site, request), "post.bad_row");
        request = DeleteMember();
        request.rows[0][1].second = QString(5000, u'9');
        QCOMPARE(Refusal(site, request), "post.bad_row");
        QVERIFY(IsMember(site));
    }

    void SecondRowsRefusalUndoesTheFirst()
    {
        TestDatabase site;
        Wire::PostRequest request = DeleteMember();
        request.rows << request.rows[0];
        request.rows[1][1].second = u"200001"_s; // no member
        const Wire::PostAnswer answer = Run(site, request);
        QCOMPARE(answer.rows.size(), 2);
        QCOMPARE(answer.rows[0].code, u"0"_s);
        QVERIFY(IsMember(site));
        QCOMPARE(Logged(site), 0);
    }

    void SamePostWithOneKeyTakesEffectOnce()
    {
        TestDatabase site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        QCOMPARE(Logged(site), 1);
        // Without the key it is another post, and there is nothing to delete any more.
        QCOMPARE(Run(site, DeleteMember()).rows.value(0).code, u"0"_s);
    }

    void KeyOfAnotherBodyIsRefused()
    {
        TestDatabase site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        Run(site, DeleteMember(), key);
        Wire::PostRequest other = DeleteMember();
        other.rows[0][1].second = u"200001"_s;
        QCOMPARE(Refusal(site, other, key), "post.key_reused");
    }

    void FailedPostDoesNotUseUpItsKey()
    {
        TestDatabase site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        site.Connection().Execute("ALTER TABLE SYS_UPDATE_LOG RENAME TO LOG_ASIDE");
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, Run(site, DeleteMember(), key));
        site.Connection().Execute("ALTER TABLE LOG_ASIDE RENAME TO SYS_UPDATE_LOG");
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        QCOMPARE(Logged(site), 1);
    }

    void KeyIsKeptForSeventyTwoHours()
    {
        TestDatabase site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        Run(site, DeleteMember(), key);
        site.Connection().Run(
            "UPDATE SRV_IDEMPOTENCY SET CREATED = datetime('now','localtime','-71 hours')");
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        site.Connection().Run(
            "UPDATE SRV_IDEMPOTENCY SET CREATED = datetime('now','localtime','-100 hours')");
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"0"_s);
        QCOMPARE(Logged(site), 1);
    }
};

QTEST_GUILESS_MAIN(PostRunnerTest)
#include "PostRunnerTest.moc"
