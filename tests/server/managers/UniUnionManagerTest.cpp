#include "ManagerSite.h"

#include <QTest>

#include <atomic>
#include <thread>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString UnionManager = u"com.business.admin.UniUnion"_s;
const QString OrgManager = u"com.business.admin.UniUnionOrg"_s;

/// What the group editor posts; `changes` replaces values by name.
Wire::NamedValues Group(const QList<std::pair<QString, QString>> &changes = {})
{
    Wire::NamedValues row{{u"UNION_ID"_s, u""_s},           {u"PARENT_ID"_s, u""_s},
                          {u"UNION_CODE"_s, u"0009"_s},     {u"UNION_NAME"_s, u"新采购联合体"_s},
                          {u"UNION_TYPE"_s, u"2"_s},        {u"REGION_ID"_s, u"100001"_s},
                          {u"MASTER_ORGID"_s, u"200005"_s}, {u"REMARK"_s, u""_s},
                          {u"LAST_USER"_s, u"系统管理员"_s}};
    for (const auto &[name, value] : changes) {
        for (auto &[rowName, rowValue] : row) {
            if (rowName == name)
                rowValue = value;
        }
    }
    return ByAdmin(row);
}

Wire::NamedValues Existing(const QString &id, const QString &parent, const QString &code,
                           const QString &master)
{
    return Group({{u"UNION_ID"_s, id},
                  {u"PARENT_ID"_s, parent},
                  {u"UNION_CODE"_s, code},
                  {u"MASTER_ORGID"_s, master}});
}

class Site : public ManagerSite
{
public:
    Wire::ResultRow Save(const Wire::NamedValues &row)
    {
        return Post(UnionManager, u"insert_update_UniUnion"_s, {row}).rows.value(0);
    }
    QString Delete(const QString &id)
    {
        return Codes(UnionManager, u"delete_UniUnion"_s,
                     {ByAdmin({{u"UNION_ID"_s, id}, {u"LAST_USER"_s, u"系统管理员"_s}})});
    }
    QString DeleteMember(const QString &unionId, const QString &orgId)
    {
        return Codes(OrgManager, u"delete_UniOrg"_s,
                     {ByAdmin({{u"UNION_ID"_s, unionId}, {u"ORG_ID"_s, orgId}})});
    }
    QString LastLog() { return Log().value(Logged() - 1); }
};

} // namespace

class UniUnionManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void NewGroupGetsAKeyAndALogRow()
    {
        Site site;
        const Wire::ResultRow result = site.Save(Group());
        QCOMPARE(result.code, u"1"_s);
        const QString id = result.values.value(0).second;
        QCOMPARE(result.values.value(0).first, u"UNION_ID"_s);
        QVERIFY(!id.isEmpty());
        QCOMPARE(site.Text("SELECT UNION_NAME||'/'||LAST_OPERATE||'/'||ENABLE_FLAG||'/'||LAST_USER "
                           "FROM UNI_UNION WHERE UNION_ID='" +
                           id.toUtf8() + '\''),
                 u"新采购联合体/1/1/系统管理员"_s);
        QCOMPARE(site.LastLog(), u"UNI_UNION/%1/-/600001/系统管理员/1"_s.arg(id));
        QVERIFY(!site.Text("SELECT OPTION_DATE FROM SYS_UPDATE_LOG").isEmpty());
        const Wire::ResultRow second =
            site.Save(Group({{u"UNION_CODE"_s, u"0010"_s}, {u"MASTER_ORGID"_s, u"200008"_s}}));
        QVERIFY(second.values.value(0).second != id);
    }

    void GroupWithoutParentIsFoundByTreeAndByCodeQuery()
    {
        Site site;
        QCOMPARE(site.Save(Group()).code, u"1"_s);
        const RowSet tree = site.Query(u"SELECT A.* FROM UNI_UNION A WHERE A.UNION_CODE='0009'"_s);
        QVERIFY(tree.IsNull(0, tree.FieldIndex(u"PARENT_ID")));
        const RowSet next = site.Query(
            u" SELECT NVL(MAX(Union_CODE)+1,'1') AS CODE  FROM Uni_Union  WHERE PARENT_ID IS NULL "
            "   AND ENABLE_FLAG <> 'D'"_s);
        QCOMPARE(next.Text(0, 0), u"10"_s);
    }

    void DuplicateLiveCodeIsRefused()
    {
        Site site;
        QCOMPARE(site.Save(Group({{u"UNION_CODE"_s, u"0002"_s}})).code, u"-1"_s);
        QCOMPARE(site.Logged(), 0);
        // 0003 belongs to a deleted group: it is free again.
        QCOMPARE(site.Save(Group({{u"UNION_CODE"_s, u"0003"_s}})).code, u"1"_s);
    }

    void OrganisationLeadsOneLiveGroup()
    {
        Site site;
        QCOMPARE(site.Save(Group({{u"MASTER_ORGID"_s, u"200004"_s}})).code, u"-2"_s);
        // It led a group that is deleted now.
        QCOMPARE(site.Save(Group({{u"MASTER_ORGID"_s, u"200006"_s}})).code, u"1"_s);
        // A group may keep its own leader.
        QCOMPARE(site.Save(Existing(u"300004"_s, {}, u"0002"_s, u"200004"_s)).code, u"1"_s);
    }

    void SecondRefusalIsAnsweredWhenBothApply()
    {
        Site site;
        QCOMPARE(
            site.Save(Group({{u"UNION_CODE"_s, u"0002"_s}, {u"MASTER_ORGID"_s, u"200004"_s}})).code,
            u"-2"_s);
    }

    void RowsThatMakeNoSenseAreNotStored_data()
    {
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("master");
        const auto row = [](const char *what, const QString &parent, const QString &code,
                            const QString &name = u"名称"_s, const QString &master = u"200005"_s) {
            QTest::newRow(what) << parent << code << name << master;
        };
        row("three digits at the top", {}, u"009"_s);
        row("letters", {}, u"00a1"_s);
        row("full-width digits", {}, u"０００９"_s);
        row("six digits at the top", {}, u"000109"_s);
        row("not under the parent's code", u"300001"_s, u"000209"_s);
        row("two levels below the parent", u"300001"_s, u"00010909"_s);
        row("parent does not exist", u"399999"_s, u"000109"_s);
        row("parent is deleted", u"300005"_s, u"000309"_s);
        row("no name", {}, u"0009"_s, {});
        row("unknown organisation", {}, u"0009"_s, u"名称"_s, u"299999"_s);
    }
    void RowsThatMakeNoSenseAreNotStored()
    {
        QFETCH(QString, parent);
        QFETCH(QString, code);
        QFETCH(QString, name);
        QFETCH(QString, master);
        Site site;
        const int before = site.Number("SELECT count(*) FROM UNI_UNION");
        QCOMPARE(site.Save(Group({{u"PARENT_ID"_s, parent},
                                  {u"UNION_CODE"_s, code},
                                  {u"UNION_NAME"_s, name},
                                  {u"MASTER_ORGID"_s, master}}))
                     .code,
                 u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_UNION"), before);
        QCOMPARE(site.Logged(), 0);
    }

    void ChangeOfAMissingOrDeletedGroupFails()
    {
        Site site;
        QCOMPARE(site.Save(Existing(u"399999"_s, {}, u"0009"_s, u"200005"_s)).code, u"0"_s);
        QCOMPARE(site.Save(Existing(u"300005"_s, {}, u"0003"_s, u"200006"_s)).code, u"0"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void NewCodeTakesEverySubGroupAlong()
    {
        Site site;
        QCOMPARE(site.Save(Existing(u"300001"_s, {}, u"0007"_s, u"200001"_s)).code, u"1"_s);
        QCOMPARE(site.Texts("SELECT UNION_CODE FROM UNI_UNION WHERE LAST_OPERATE <> 'D'"
                            " ORDER BY UNION_ID"),
                 QStringList({u"0007"_s, u"000701"_s, u"00070101"_s, u"0002"_s}));
        QCOMPARE(site.Texts("SELECT DISTINCT KEY_ID1 FROM SYS_UPDATE_LOG WHERE OPTION_TYPE = '2'"
                            " ORDER BY 1"),
                 QStringList({u"300001"_s, u"300002"_s, u"300003"_s}));
    }

    void ChangeKeepsTheGroupsCodeAndWritesTheLog()
    {
        Site site;
        Wire::NamedValues row = Existing(u"300002"_s, u"300001"_s, u"000101"_s, u"200002"_s);
        const Wire::ResultRow result = site.Save(row);
        QCOMPARE(result.code, u"1"_s);
        QCOMPARE(result.values.value(0).second, u"300002"_s);
        QCOMPARE(site.Text("SELECT UNION_NAME FROM UNI_UNION WHERE UNION_ID='300002'"),
                 u"新采购联合体"_s);
        QCOMPARE(site.LastLog(), u"UNI_UNION/300002/-/600001/系统管理员/2"_s);
    }

    void GroupWithMembersIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.DeleteMember(u"300002"_s, u"200007"_s), u"1"_s);
        QCOMPARE(site.Delete(u"300003"_s), u"1"_s);
        QCOMPARE(site.Delete(u"300002"_s), u"1"_s);
        Site again;
        QCOMPARE(again.Delete(u"300003"_s), u"1"_s);
        QCOMPARE(again.Delete(u"300002"_s), u"-2"_s);
    }

    void GroupWithSubGroupsIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.Delete(u"300001"_s), u"-1"_s);
        QCOMPARE(site.Delete(u"300002"_s), u"-2"_s); // members and sub-groups
        QCOMPARE(site.Delete(u"399999"_s), u"0"_s);
        QCOMPARE(site.Delete(u"300005"_s), u"0"_s); // deleted already
        QCOMPARE(site.Logged(), 0);
    }

    void DeletedGroupIsMarkedInBothFlagsAndNeitherIsEverNull()
    {
        Site site;
        QCOMPARE(site.Delete(u"300004"_s), u"1"_s);
        QCOMPARE(
            site.Text("SELECT LAST_OPERATE||ENABLE_FLAG FROM UNI_UNION WHERE UNION_ID='300004'"),
            u"DD"_s);
        QCOMPARE(site.LastLog(), u"UNI_UNION/300004/-/600001/系统管理员/5"_s);
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError,
                                 site.Connection().Run("UPDATE UNI_UNION SET LAST_OPERATE=NULL"));
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError,
                                 site.Connection().Run("UPDATE UNI_UNION SET ENABLE_FLAG=NULL"));
    }

    void FailureInTheMiddleLeavesNothing()
    {
        Site site;
        site.Connection().Execute("ALTER TABLE SYS_UPDATE_LOG RENAME TO LOG_ASIDE");
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, site.Save(Group()));
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, site.Delete(u"300004"_s));
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_UNION WHERE UNION_CODE='0009'"), 0);
        QCOMPARE(site.Text("SELECT LAST_OPERATE FROM UNI_UNION WHERE UNION_ID='300004'"), u"1"_s);
    }

    void TwoOperatorsTakingOneCodeAtOnce()
    {
        Site site;
        std::atomic<int> stored = 0;
        std::atomic<int> refused = 0;
        const auto take = [&](const QString &master) {
            const Wire::PostRequest request{
                UnionManager, u"insert_update_UniUnion"_s, {Group({{u"MASTER_ORGID"_s, master}})}};
            const QString code = site.PostBeside(request);
            ++(code == u"1" ? stored : refused);
        };
        std::thread first(take, u"200005"_s);
        std::thread second(take, u"200008"_s);
        first.join();
        second.join();
        QCOMPARE(stored.load(), 1);
        QCOMPARE(refused.load(), 1);
    }
};

QTEST_GUILESS_MAIN(UniUnionManagerTest)
#include "UniUnionManagerTest.moc"
