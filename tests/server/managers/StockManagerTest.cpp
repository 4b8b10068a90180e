#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.stock.StockManager"_s;
const QString Method = u"stockOrgManager"_s;

/// What the screens post: a permission of `owner` for `viewer`.
Wire::NamedValues Permission(const QString &owner, const QString &viewer,
                             const QString &showQty = u"0"_s, const QString &operation = u"1"_s)
{
    return {{u"OWNER_ORGID"_s, owner}, {u"LAST_OPERATE"_s, operation},
            {u"ORG_ID"_s, viewer},     {u"LAST_USER"_s, TestDatabase::Admin().userName},
            {u"SHOW_QTY"_s, showQty},  {u"LOG_USER_ID"_s, TestDatabase::Admin().userId}};
}

/// Besides the site: 200001, 200002, 200007 and the deleted 200006 are in group 300002; 200003 is
/// there no more; 200004 and 200005 are in group 300004, with 200002. 200002 has opened its stock
/// to 200001 (the quantity), and to 200005 no more.
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("INSERT INTO UNI_ORG (UNION_ID, ORG_ID, LAST_OPERATE) VALUES"
                         " ('300002', '200001', '1'), ('300002', '200002', '1'),"
                         " ('300002', '200006', '1'), ('300002', '200003', 'D'),"
                         " ('300004', '200002', '1'), ('300004', '200004', '1'),"
                         " ('300004', '200005', '1')");
        Connection().Run("UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = '200006'");
        Connection().Run("UPDATE BAS_ORG SET ENABLE_FLAG = '0' WHERE ORG_ID = '200004'");
        Connection().Run("INSERT INTO STK_ORG_SET (OWNER_ORGID, ORG_ID, SHOW_QTY, LAST_OPERATE)"
                         " VALUES ('200002', '200001', '1', '1'), ('200002', '200005', '0', 'D')");
    }

    QString Run(const QList<Wire::NamedValues> &rows) { return Codes(Manager, Method, rows); }
    QString Open(const QString &owner, const QString &viewer, const QString &showQty = u"0"_s)
    {
        return Run({Permission(owner, viewer, showQty)});
    }
    QString Close(const QString &owner, const QString &viewer)
    {
        return Run({Permission(owner, viewer, u"0"_s, u"D"_s)});
    }
    /// "OWNER/VIEWER/SHOW_QTY" of the live permissions.
    QStringList Permissions()
    {
        return Texts("SELECT OWNER_ORGID||'/'||ORG_ID||'/'||SHOW_QTY FROM STK_ORG_SET"
                     " WHERE LAST_OPERATE <> 'D' ORDER BY OWNER_ORGID, ORG_ID");
    }
};

const QString Present = u"200002/200001/1"_s;

} // namespace

class StockManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void PermissionIsStampedAndLogged()
    {
        Site site;
        QCOMPARE(site.Open(u"200007"_s, u"200002"_s, u"1"_s), u"1"_s);
        QCOMPARE(site.Permissions(), QStringList({Present, u"200007/200002/1"_s}));
        QCOMPARE(site.Text("SELECT LAST_OPERATE||'/'||LAST_USER||'/'||LAST_USER_ID"
                           " FROM STK_ORG_SET WHERE OWNER_ORGID = '200007'"),
                 u"1/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList{u"STK_ORG_SET/200007/200002/600001/系统管理员/1"_s});
    }

    void PermissionIsOneWay()
    {
        Site site;
        QCOMPARE(site.Open(u"200001"_s, u"200002"_s), u"1"_s);
        QCOMPARE(site.Permissions(), QStringList({u"200001/200002/0"_s, Present}));
    }

    void AnyGroupInCommonIsEnough()
    {
        Site site;
        QCOMPARE(
            site.Run({Permission(u"200002"_s, u"200004"_s), Permission(u"200002"_s, u"200007"_s)}),
            u"1 1"_s);
    }

    void DisabledOrganisationsAreCandidatesToo()
    {
        Site site;
        QCOMPARE(site.Open(u"200004"_s, u"200005"_s), u"1"_s);
    }

    void StockIsNotOpenedToItself()
    {
        Site site;
        QCOMPARE(site.Open(u"200002"_s, u"200002"_s), u"-1"_s);
        QCOMPARE(site.Permissions(), QStringList{Present});
        QCOMPARE(site.Logged(), 0);
    }

    void StockIsNotOpenedWithoutAGroupInCommon_data()
    {
        QTest::addColumn<QString>("owner");
        QTest::addColumn<QString>("viewer");
        QTest::newRow("in other groups") << u"200001"_s << u"200004"_s;
        QTest::newRow("in no group") << u"200001"_s << u"200008"_s;
        QTest::newRow("viewer left the group") << u"200001"_s << u"200003"_s;
        QTest::newRow("owner left the group") << u"200003"_s << u"200001"_s;
    }
    void StockIsNotOpenedWithoutAGroupInCommon()
    {
        QFETCH(QString, owner);
        QFETCH(QString, viewer);
        Site site;
        QCOMPARE(site.Open(owner, viewer), u"-2"_s);
        QCOMPARE(site.Permissions(), QStringList{Present});
    }

    void WhatMakesNoSenseIsNotStored_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        QTest::newRow("deleted viewer") << Permission(u"200001"_s, u"200006"_s);
        QTest::newRow("deleted owner") << Permission(u"200006"_s, u"200001"_s);
        QTest::newRow("deleted both") << Permission(u"200006"_s, u"200006"_s);
        QTest::newRow("unknown viewer") << Permission(u"200001"_s, u"299999"_s);
        QTest::newRow("no owner") << Permission({}, u"200001"_s);
        QTest::newRow("no viewer") << Permission(u"200001"_s, {});
        QTest::newRow("flag that is none") << Permission(u"200001"_s, u"200007"_s, u"2"_s);
        QTest::newRow("no flag") << Permission(u"200001"_s, u"200007"_s, {});
    }
    void WhatMakesNoSenseIsNotStored()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        QCOMPARE(site.Run({row}), u"0"_s);
        QCOMPARE(site.Permissions(), QStringList{Present});
        QCOMPARE(site.Logged(), 0);
    }

    void RefusedPermissionUndoesTheOthersAndIsTheFirstAnswer()
    {
        Site site;
        QCOMPARE(
            site.Run({Permission(u"200002"_s, u"200004"_s), Permission(u"200002"_s, u"200008"_s),
                      Permission(u"200002"_s, u"200007"_s)}),
            u"-2 -2 -2"_s);
        QCOMPARE(site.Permissions(), QStringList{Present});
        QCOMPARE(site.Logged(), 0);
    }

    void PermissionThatAnotherOperatorOpenedIsOpen()
    {
        Site site;
        QCOMPARE(site.Open(u"200002"_s, u"200001"_s, u"1"_s), u"1"_s);
        QCOMPARE(site.Logged(), 0);
        QCOMPARE(site.Open(u"200002"_s, u"200001"_s, u"0"_s), u"1"_s);
        QCOMPARE(site.Permissions(), QStringList{u"200002/200001/0"_s});
        QCOMPARE(site.Log(), QStringList{u"STK_ORG_SET/200002/200001/600001/系统管理员/2"_s});
    }

    void PermissionOpenedAgainTakesOverItsOldRow()
    {
        Site site;
        QCOMPARE(site.Open(u"200002"_s, u"200005"_s, u"1"_s), u"1"_s);
        QCOMPARE(site.Permissions(), QStringList({Present, u"200002/200005/1"_s}));
        QCOMPARE(site.Number("SELECT count(*) FROM STK_ORG_SET"), 2);
        QCOMPARE(site.Log(), QStringList{u"STK_ORG_SET/200002/200005/600001/系统管理员/1"_s});
    }

    void DeletionMarksTheRowAndIsLogged()
    {
        Site site;
        QCOMPARE(site.Close(u"200002"_s, u"200001"_s), u"1"_s);
        QCOMPARE(site.Permissions(), QStringList());
        QCOMPARE(site.Number("SELECT count(*) FROM STK_ORG_SET"), 2);
        QCOMPARE(site.Log(), QStringList{u"STK_ORG_SET/200002/200001/600001/系统管理员/5"_s});
    }

    void PermissionThatAnotherOperatorDeletedIsDeleted()
    {
        Site site;
        QCOMPARE(site.Close(u"200002"_s, u"200005"_s), u"1"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void PermissionThatNeverWasIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.Close(u"200001"_s, u"200002"_s), u"0"_s);
    }

    /// Otherwise what no longer should be could not be taken away.
    void PermissionIsDeletedEvenWithoutAGroupInCommon()
    {
        Site site;
        site.Connection().Run("UPDATE UNI_ORG SET LAST_OPERATE = 'D'");
        site.Connection().Run("UPDATE BAS_ORG SET LAST_OPERATE = 'D'");
        QCOMPARE(site.Close(u"200002"_s, u"200001"_s), u"1"_s);
    }

    void RowsThatNameAnotherOperatorOrOnePermissionTwiceAreRefused()
    {
        Site site;
        Wire::NamedValues foreign = Permission(u"200001"_s, u"200002"_s);
        foreign.last().second = u"600002"_s;
        QCOMPARE(site.Refusal(Manager, Method, {foreign}), "post.operator");
        QCOMPARE(site.Refusal(Manager, Method,
                              {Permission(u"200001"_s, u"200002"_s),
                               Permission(u"200001"_s, u"200002"_s, u"1"_s)}),
                 "post.bad_row");
        QCOMPARE(site.Refusal(Manager, Method, {}), "post.bad_row");
    }

    // --- What the candidates' statement says -----------------------------------------------------

    void CandidatesShareAGroupAndAreNeitherTheOwnerNorOpenAlready()
    {
        Site site;
        const RowSet rows = site.Query(
            u" select '0' as selected,a.org_code,a.org_name,a.org_id  from bas_org a,"
            " ( select * from stk_org_set where owner_orgid = '200002'    and last_operate<> 'D' )"
            " b, (select distinct u.org_id from uni_org u,     ( select distinct union_id from"
            " uni_org where org_id = '200002'            and last_operate <> 'D' ) v "
            "     where u.union_id = v.union_id and u.last_operate<> 'D' ) d "
            " where  d.org_id = a.org_id  and d.org_id = b.org_id(+)  and b.org_id is null"
            " and d.org_id <> '200002' order by a.org_name "_s);
        QStringList candidates;
        const int orgId = rows.FieldIndex(u"ORG_ID");
        for (int row = 0; row < rows.RowCount(); ++row)
            candidates << rows.Text(row, orgId);
        candidates.sort();
        QCOMPARE(candidates, QStringList({u"200004"_s, u"200005"_s, u"200006"_s, u"200007"_s}));
    }
};

QTEST_GUILESS_MAIN(StockManagerTest)
#include "StockManagerTest.moc"
