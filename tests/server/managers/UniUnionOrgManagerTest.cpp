#include "ManagerSite.h"

#include <QTest>

#include <atomic>
#include <thread>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.UniUnionOrg"_s;
const QString Method = u"insert_update_UniUnionOrg"_s;

/// What batch addition posts for one organisation.
Wire::NamedValues Addition(const QString &orgId, const QString &typeId = u"400001"_s,
                           const QString &unionId = u"300002"_s)
{
    return ByAdmin({{u"UNION_ID"_s, unionId}, {u"ORG_ID"_s, orgId}, {u"ORG_TYPE_ID"_s, typeId}});
}

/// What the member editor posts.
Wire::NamedValues Change(const QString &orgId, const QString &typeId)
{
    return ByAdmin({{u"UNION_ID"_s, u"300002"_s},
                    {u"ORG_ID"_s, orgId},
                    {u"ORG_TYPE_ID"_s, typeId},
                    {u"LAST_USER"_s, u"系统管理员"_s}});
}

class Site : public ManagerSite
{
public:
    QString Save(const QList<Wire::NamedValues> &rows) { return Codes(Manager, Method, rows); }
    QString Delete(const QString &unionId, const QString &orgId)
    {
        return Codes(Manager, u"delete_UniOrg"_s,
                     {ByAdmin({{u"UNION_ID"_s, unionId}, {u"ORG_ID"_s, orgId}})});
    }
    /// "ORG_ID/ORG_TYPE_ID" of the live members of 300002.
    QStringList Members()
    {
        return Texts("SELECT ORG_ID||'/'||ORG_TYPE_ID FROM UNI_ORG WHERE UNION_ID = '300002'"
                     " AND LAST_OPERATE <> 'D' ORDER BY ORG_ID");
    }
};

const QString FirstMember = u"200007/400001"_s;

} // namespace

class UniUnionOrgManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void AddsAListOfOrganisationsWithALogEntryEach()
    {
        Site site;
        QCOMPARE(site.Save({Addition(u"200005"_s), Addition(u"200006"_s, u"400002"_s)}), u"1 1"_s);
        QCOMPARE(site.Members(),
                 QStringList({u"200005/400001"_s, u"200006/400002"_s, FirstMember}));
        QCOMPARE(site.Text("SELECT LAST_OPERATE||'/'||LAST_USER||'/'||LAST_USER_ID FROM UNI_ORG"
                           " WHERE ORG_ID = '200005'"),
                 u"1/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList({u"UNI_ORG/300002/200005/600001/系统管理员/1"_s,
                                          u"UNI_ORG/300002/200006/600001/系统管理员/1"_s}));
    }

    void DeletedMembershipIsTakenIntoUseAgain()
    {
        Site site;
        QCOMPARE(site.Delete(u"300002"_s, u"200007"_s), u"1"_s);
        QCOMPARE(site.Save({Addition(u"200007"_s, u"400002"_s)}), u"1"_s);
        QCOMPARE(site.Members(), QStringList{u"200007/400002"_s});
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_ORG"), 1);
        QCOMPARE(site.Log().value(1), u"UNI_ORG/300002/200007/600001/系统管理员/1"_s);
    }

    void OrganisationThatAnotherOperatorHasJustAddedRefusesTheWholeList()
    {
        Site site;
        QCOMPARE(site.Save({Addition(u"200005"_s), Addition(u"200007"_s, u"400002"_s),
                            Addition(u"200006"_s)}),
                 u"-1 -1 -1"_s);
        QCOMPARE(site.Members(), QStringList{FirstMember});
        QCOMPARE(site.Logged(), 0);
        // The same type makes no difference.
        QCOMPARE(site.Save({Addition(u"200007"_s)}), u"-1"_s);
    }

    void TwoOperatorsAddingOneOrganisationAtOnce()
    {
        Site site;
        std::atomic<int> stored = 0;
        std::atomic<int> refused = 0;
        const auto add = [&](const QString &typeId) {
            const Wire::PostRequest request{Manager, Method, {Addition(u"200005"_s, typeId)}};
            const QString code = site.PostBeside(request);
            if (code == u"1"_s)
                ++stored;
            else if (code == u"-1"_s)
                ++refused;
        };
        std::thread first(add, u"400001"_s);
        std::thread second(add, u"400002"_s);
        first.join();
        second.join();
        QCOMPARE(stored.load(), 1);
        QCOMPARE(refused.load(), 1);
        QCOMPARE(site.Logged(), 1);
    }

    void RowWithLastUserChangesTheTypeOfAMember()
    {
        Site site;
        QCOMPARE(site.Save({Change(u"200007"_s, u"400002"_s)}), u"1"_s);
        QCOMPARE(site.Members(), QStringList{u"200007/400002"_s});
        QCOMPARE(site.Log(), QStringList{u"UNI_ORG/300002/200007/600001/系统管理员/2"_s});
    }

    void ChangeToTheSameTypeLeavesNoTrace()
    {
        Site site;
        QCOMPARE(site.Save({Change(u"200007"_s, u"400001"_s)}), u"1"_s);
        QCOMPARE(site.Text("SELECT coalesce(LAST_USER,'-') FROM UNI_ORG"), u"-"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void ChangeDoesNotBringBackAMemberThatAnotherOperatorRemoved()
    {
        Site site;
        QCOMPARE(site.Delete(u"300002"_s, u"200007"_s), u"1"_s);
        QCOMPARE(site.Save({Change(u"200007"_s, u"400002"_s)}), u"0"_s);
        QCOMPARE(site.Save({Change(u"200005"_s, u"400002"_s)}), u"0"_s);
        QCOMPARE(site.Members(), QStringList());
        QCOMPARE(site.Logged(), 1);
    }

    void RowsThatMakeNoSenseAreNotStored_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        QTest::newRow("no type") << Addition(u"200006"_s, {});
        QTest::newRow("change to no type") << Change(u"200007"_s, {});
        QTest::newRow("unknown type") << Addition(u"200006"_s, u"499999"_s);
        QTest::newRow("deleted type") << Addition(u"200006"_s, u"400003"_s);
        QTest::newRow("type of another group") << Addition(u"200006"_s, u"400004"_s);
        QTest::newRow("change to a type of another group") << Change(u"200007"_s, u"400004"_s);
        QTest::newRow("no organisation") << Addition({});
        QTest::newRow("unknown organisation") << Addition(u"299999"_s);
        QTest::newRow("disabled organisation") << Addition(u"200008"_s);
        QTest::newRow("unknown group") << Addition(u"200006"_s, u"400001"_s, u"399999"_s);
        QTest::newRow("deleted group") << Addition(u"200006"_s, u"400001"_s, u"300005"_s);
    }
    void RowsThatMakeNoSenseAreNotStored()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        site.Connection().Run("UPDATE BAS_ORG SET ENABLE_FLAG = '0' WHERE ORG_ID = '200008'");
        QCOMPARE(site.Save({Addition(u"200005"_s), row}), u"0 0"_s);
        QCOMPARE(site.Members(), QStringList{FirstMember});
        QCOMPARE(site.Logged(), 0);
    }

    void OrganisationNamedTwiceInOneListIsRefused()
    {
        Site site;
        QCOMPARE(site.Refusal(Manager, Method,
                              {Addition(u"200005"_s), Addition(u"200005"_s, u"400002"_s)}),
                 "post.bad_row");
        QCOMPARE(site.Members(), QStringList{FirstMember});
    }

    void EmptyListIsRefused()
    {
        Site site;
        QCOMPARE(site.Refusal(Manager, Method, {}), "post.bad_row");
    }

    void DeletedMembershipIsMarkedAndLogged()
    {
        Site site;
        QCOMPARE(site.Delete(u"300002"_s, u"200007"_s), u"1"_s);
        QCOMPARE(site.Text("SELECT LAST_OPERATE FROM UNI_ORG"), u"D"_s);
        QCOMPARE(site.Log(), QStringList{u"UNI_ORG/300002/200007/600001/系统管理员/5"_s});
        QCOMPARE(site.Delete(u"300002"_s, u"200007"_s), u"0"_s);
        QCOMPARE(site.Delete(u"300002"_s, u"200001"_s), u"0"_s);
        QCOMPARE(site.Logged(), 1);
    }
};

QTEST_GUILESS_MAIN(UniUnionOrgManagerTest)
#include "UniUnionOrgManagerTest.moc"
