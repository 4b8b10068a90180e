#include "managers/PostRunner.h"
#include "ManagerSite.h"
#include "store/Clock.h"

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

Wire::PostRequest MoveIn(const QStringList &products)
{
    Wire::PostRequest request{u"com.business.admin.Uni_Product"_s, u"move_in_Uni_Product"_s, {}};
    for (const QString &product : products)
        request.rows.append({{u"UNION_ID"_s, u"300002"_s}, {u"PRODUCT_ID"_s, product}});
    return request;
}

Wire::PostRequest StoreType()
{
    return {u"com.business.admin.UniUnion"_s,
            u"insert_update_UniOrgType"_s,
            {{{u"ORG_TYPE_ID"_s, u"400001"_s},
              {u"ORG_TYPE_NAME"_s, u"新类型"_s},
              {u"UNION_ID"_s, u"300002"_s},
              {u"BUYER_FLAG"_s, u"1"_s},
              {u"SALER_FLAG"_s, u"0"_s},
              {u"SENDER_FLAG"_s, u"0"_s},
              {u"ADMIN_FLAG"_s, u"0"_s},
              {u"REMARK"_s, {}},
              {u"LAST_OPERATE"_s, u"1"_s}}}};
}

Wire::PostAnswer Run(ManagerSite &site, const Wire::PostRequest &request,
                     const QByteArray &key = {})
{
    return Managers::RunPost(
        site.Connection(), TestDatabase::Admin(),
        {.request = request, .key = key, .body = Wire::Encode(request, Wire::Format::Cbor)});
}

/// The code of the error that the post is refused with as a whole.
QByteArray Refusal(ManagerSite &site, const Wire::PostRequest &request, const QByteArray &key = {})
{
    try {
        Run(site, request, key);
        return "none";
    } catch (const Managers::EPostError &error) {
        return error.Code();
    }
}

bool IsMember(ManagerSite &site)
{
    return site.Text("SELECT LAST_OPERATE FROM UNI_ORG") == u"1";
}

} // namespace

/// What holds for every method: who acts, what a row may hold, all or nothing, once.
class PostRunnerTest : public QObject
{
    Q_OBJECT

private slots:
    void UnknownMethodIsRefused()
    {
        ManagerSite site;
        Wire::PostRequest request = DeleteMember();
        request.method = u"delete_everything"_s;
        QCOMPARE(Refusal(site, request), "post.unknown_method");
        request = DeleteMember();
        request.manager = u"com.business.admin.UniUnion"_s;
        QCOMPARE(Refusal(site, request), "post.unknown_method");
    }

    void RowThatNamesAnotherOperatorIsRefused()
    {
        ManagerSite site;
        QCOMPARE(Refusal(site, DeleteMember(u"600002"_s)), "post.operator");
        QCOMPARE(Refusal(site, DeleteMember(u"600001"_s, u"张伟"_s)), "post.operator");
        QVERIFY(IsMember(site));
        QCOMPARE(site.Logged(), 0);
    }

    void UnknownDoubledAndOverlongParametersAreRefused()
    {
        ManagerSite site;
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

    void MissingParameterIsRefused()
    {
        ManagerSite site;
        Wire::PostRequest request = DeleteMember();
        request.rows[0].removeAt(1);
        QCOMPARE(Refusal(site, request), "post.bad_row");
        // Who acts is known without the row saying so.
        request = DeleteMember();
        request.rows[0].resize(2);
        QCOMPARE(Run(site, request).rows.value(0).code, u"1"_s);
    }

    void RecordNamedTwiceInOneListIsRefused()
    {
        ManagerSite site;
        Wire::PostRequest request = DeleteMember();
        request.rows << request.rows[0];
        QCOMPARE(Refusal(site, request), "post.bad_row");
        QVERIFY(IsMember(site));
    }

    void EmptyListIsRefusedUnlessTheMethodTakesIt()
    {
        ManagerSite site;
        Wire::PostRequest request = DeleteMember();
        request.rows.clear();
        QCOMPARE(Refusal(site, request), "post.bad_row");
        const Wire::PostAnswer answer =
            Run(site, {u"com.business.admin.UniUnion"_s, u"insert_update_UniOrgType"_s, {}});
        QCOMPARE(answer.rows.size(), 1);
        QCOMPARE(answer.rows[0].code, u"1"_s);
    }

    void RowByRowMethodAnswersEachRowWithItsOwnCodeAndKey()
    {
        ManagerSite site;
        const Wire::PostAnswer answer = Run(site, MoveIn({u"500001"_s, u"500003"_s, u"599999"_s}));
        QCOMPARE(answer.rows.size(), 3);
        const auto result = [&](int row) {
            return answer.rows[row].code + u'/' + answer.rows[row].values.value(0).first + u'/' +
                   answer.rows[row].values.value(0).second;
        };
        QCOMPARE(result(0), u"-1/PRODUCT_ID/500001"_s);
        QCOMPARE(result(1), u"1/PRODUCT_ID/500003"_s);
        QCOMPARE(result(2), u"0/PRODUCT_ID/599999"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void RowByRowAnswerIsKeptWithItsKey()
    {
        ManagerSite site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        const Wire::PostRequest request = MoveIn({u"500001"_s, u"500003"_s});
        const QByteArray first = Wire::Encode(Run(site, request, key), Wire::Format::Json);
        // Run anew, the product that was moved in would be refused.
        QCOMPARE(Wire::Encode(Run(site, request, key), Wire::Format::Json), first);
        QCOMPARE(Run(site, request).rows[1].code, u"-1"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void RowThatTheDatabaseRefusesDoesNotUndoTheOthersOfARowByRowMethod()
    {
        ManagerSite site;
        site.Trap(ManagerSite::Trouble::Constraint, "BEFORE INSERT ON UNI_PRODUCT",
                  "NEW.PRODUCT_ID = '500003'");
        const Wire::PostAnswer answer = Run(site, MoveIn({u"500002"_s, u"500003"_s}));
        QCOMPARE(answer.rows[0].code, u"1"_s);
        QCOMPARE(answer.rows[1].code, u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D'"), 2);
        QCOMPARE(site.Logged(), 1);
    }

    void SecondRowsRefusalUndoesTheFirst()
    {
        ManagerSite site;
        Wire::PostRequest request = DeleteMember();
        request.rows << request.rows[0];
        request.rows[1][1].second = u"200001"_s; // no member
        const Wire::PostAnswer answer = Run(site, request);
        QCOMPARE(answer.rows.size(), 2);
        QCOMPARE(answer.rows[0].code, u"0"_s);
        QVERIFY(IsMember(site));
        QCOMPARE(site.Logged(), 0);
    }

    void SamePostWithOneKeyTakesEffectOnce()
    {
        ManagerSite site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        QCOMPARE(site.Logged(), 1);
        // Without the key it is another post, and there is nothing to delete any more.
        QCOMPARE(Run(site, DeleteMember()).rows.value(0).code, u"0"_s);
    }

    void AnswerIsKeptEvenIfThePostWouldBeRefusedByNow()
    {
        ManagerSite site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        const Wire::PostRequest request = StoreType();
        Store::Operator user = TestDatabase::Admin();
        user.unions = {u"300002"_s};
        const auto run = [&] {
            return Managers::RunPost(site.Connection(), user,
                                     {.request = request, .key = key, .body = "the same"});
        };
        QCOMPARE(run().rows.value(0).code, u"1"_s);
        site.Connection().Execute("UPDATE UNI_ORG_TYPE SET UNION_ID = '300001'");
        QCOMPARE(run().rows.value(0).code, u"1"_s);
        QCOMPARE(site.Text("SELECT UNION_ID FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '400001'"),
                 u"300001"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void KeyOfAnotherBodyIsRefused()
    {
        ManagerSite site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        Run(site, DeleteMember(), key);
        Wire::PostRequest other = DeleteMember();
        other.rows[0][1].second = u"200001"_s;
        QCOMPARE(Refusal(site, other, key), "post.key_reused");
    }

    void FailedPostDoesNotUseUpItsKey()
    {
        ManagerSite site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        site.Connection().Execute("ALTER TABLE SYS_UPDATE_LOG RENAME TO LOG_ASIDE");
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, Run(site, DeleteMember(), key));
        site.Connection().Execute("ALTER TABLE LOG_ASIDE RENAME TO SYS_UPDATE_LOG");
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void KeyIsKeptForSeventyTwoHours()
    {
        ManagerSite site;
        const QByteArray key = "11111111-2222-3333-4444-555555555555";
        Run(site, DeleteMember(), key);
        const auto setAge = [&](int hours) {
            const QDateTime then = QDateTime::currentDateTime().addSecs(-3600 * hours);
            site.Connection().Run("UPDATE SRV_IDEMPOTENCY SET CREATED = ?1",
                                  {Store::DateText(then)});
        };
        setAge(71);
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"1"_s);
        setAge(100);
        QCOMPARE(Run(site, DeleteMember(), key).rows.value(0).code, u"0"_s);
        QCOMPARE(site.Logged(), 1);
    }
};

QTEST_GUILESS_MAIN(PostRunnerTest)
#include "PostRunnerTest.moc"
