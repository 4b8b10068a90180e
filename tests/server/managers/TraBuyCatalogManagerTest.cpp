#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.TraBuyCatalog"_s;

/// Besides the site: the hospital 200001 has the drug stores 21 西药库 and 22 中药库 and had 23
/// 旧库; the pharmacy 200002 has 24 总库. 200003 is a manufacturer, 200004 a deleted hospital. For
/// 200001 work 600001, 600011 and 600012, and 600013, who is disabled. With 21 work 600001 (linked)
/// and 600011 (nothing stored of the link); 600012 did so before. With 24 works 600002.
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("UPDATE BAS_ORG SET ORG_TYPE = '5' WHERE ORG_ID = '200002'");
        Connection().Run("UPDATE BAS_ORG SET ORG_TYPE = '1' WHERE ORG_ID = '200003'");
        Connection().Run("UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = '200004'");
        Connection().Run("INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID, ENABLE_FLAG)"
                         " VALUES ('600011', 'wang', '王一', '200001', '1'),"
                         " ('600012', 'li', '李二', '200001', '1'),"
                         " ('600013', 'zhao', '赵三', '200001', '0')");
        Connection().Run("INSERT INTO TRA_BUY_CATALOG (CATALOG_ID, CATALOG_NAME, BUY_ORGID,"
                         " LAST_OPERATE) VALUES ('21', '西药库', '200001', '1'),"
                         " ('22', '中药库', '200001', '1'), ('23', '旧库', '200001', 'D'),"
                         " ('24', '总库', '200002', '1')");
        Connection().Run("INSERT INTO TRA_USER_BUY_CATALOG (CATALOG_ID, USER_ID, BUY_ORGID,"
                         " RELATION_FLAG, LAST_OPERATE) VALUES"
                         " ('21', '600001', '200001', '1', '1'),"
                         " ('21', '600011', '200001', NULL, '1'),"
                         " ('21', '600012', '200001', '1', 'D'),"
                         " ('24', '600002', '200002', '1', '1')");
    }

    Wire::PostAnswer Save(const QString &id, const QString &name, const QString &org)
    {
        return Post(Manager, u"insertUpdateBuyCatalog"_s,
                    {{{u"CATALOG_ID"_s, id},
                      {u"CATALOG_NAME"_s, name},
                      {u"BUY_ORGID"_s, org},
                      {u"LAST_USER_ID"_s, Admin().userId},
                      {u"LAST_USER"_s, Admin().userName}}});
    }
    QString SaveCode(const QString &id, const QString &name, const QString &org = u"200001"_s)
    {
        return Save(id, name, org).rows.first().code;
    }
    QString Delete(const QString &id, const QString &org = u"200001"_s)
    {
        return Codes(Manager, u"deleteBuyCatalog"_s,
                     {{{u"CATALOG_ID"_s, id},
                       {u"BUY_ORGID"_s, org},
                       {u"LAST_USER"_s, Admin().userName},
                       {u"LAST_USER_ID"_s, Admin().userId}}});
    }
    static Wire::NamedValues Assignment(const QString &user, const QString &flag,
                                        const QString &catalog = u"21"_s,
                                        const QString &org = u"200001"_s)
    {
        return {{u"USER_ID"_s, user},
                {u"CATALOG_ID"_s, catalog},
                {u"BUY_ORGID"_s, org},
                {u"RELATION_FLAG"_s, flag},
                {u"LAST_USER_ID"_s, Admin().userId}};
    }
    QString Assign(const QList<Wire::NamedValues> &rows)
    {
        return Codes(Manager, u"insertUpdateTraUserBuyCatalog"_s, rows);
    }
    QString RemoveAll(const QString &id, const QString &org = u"200001"_s)
    {
        return Codes(Manager, u"deleteTraUserBuyCatalog"_s,
                     {{{u"CATALOG_ID"_s, id},
                       {u"BUY_ORGID"_s, org},
                       {u"LAST_USER_ID"_s, Admin().userId},
                       {u"LAST_USER"_s, Admin().userName}}});
    }

    /// "ORGANISATION/NAME" of the live drug stores.
    QStringList Catalogs()
    {
        return Texts("SELECT BUY_ORGID||'/'||CATALOG_NAME FROM TRA_BUY_CATALOG"
                     " WHERE LAST_OPERATE <> 'D' ORDER BY BUY_ORGID, CATALOG_ID");
    }
    /// "CATALOG/USER/LINK" of the live assignments, "-" for a link of which nothing is stored.
    QStringList Assignments()
    {
        return Texts("SELECT CATALOG_ID||'/'||USER_ID||'/'||COALESCE(RELATION_FLAG, '-')"
                     " FROM TRA_USER_BUY_CATALOG WHERE LAST_OPERATE <> 'D'"
                     " ORDER BY CATALOG_ID, USER_ID");
    }
};

const QStringList PresentCatalogs{u"200001/西药库"_s, u"200001/中药库"_s, u"200002/总库"_s};
const QStringList PresentAssignments{u"21/600001/1"_s, u"21/600011/-"_s, u"24/600002/1"_s};

} // namespace

class TraBuyCatalogManagerTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Drug stores -----------------------------------------------------------------------------

    void NewDrugStoreIsAnsweredWithItsKeyStampedAndLogged()
    {
        Site site;
        const Wire::ResultRow result = site.Save({}, u" 急诊药库 "_s, u"200001"_s).rows.first();
        QCOMPARE(result.code, u"1"_s);
        QCOMPARE(result.values.size(), 1);
        QCOMPARE(result.values.first().first, u"CATALOG_ID"_s);
        const QString id = result.values.first().second;
        QVERIFY(!id.isEmpty() && id.size() <= 10);
        QCOMPARE(site.Text("SELECT CATALOG_NAME||'/'||BUY_ORGID||'/'||LAST_OPERATE||'/'||LAST_USER"
                           "||'/'||LAST_USER_ID FROM TRA_BUY_CATALOG WHERE CATALOG_ID = '" +
                           id.toUtf8() + '\''),
                 u"急诊药库/200001/1/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList{u"TRA_BUY_CATALOG/"_s + id + u"/-/600001/系统管理员/1"_s});
    }

    void TwoNewOnesHaveDifferentKeys()
    {
        Site site;
        const auto key = [&](const QString &name) {
            return site.Save({}, name, u"200001"_s).rows.first().values.value(0).second;
        };
        QVERIFY(key(u"一库"_s) != key(u"二库"_s));
    }

    void PharmaciesHaveDrugStoresToo()
    {
        Site site;
        QCOMPARE(site.SaveCode({}, u"中药库"_s, u"200002"_s), u"1"_s);
    }

    void RenamedDrugStoreKeepsItsKeyAndIsLoggedAsAChange()
    {
        Site site;
        QCOMPARE(site.SaveCode(u"21"_s, u"急诊药库"_s), u"1"_s);
        QCOMPARE(site.Catalogs(),
                 QStringList({u"200001/急诊药库"_s, u"200001/中药库"_s, u"200002/总库"_s}));
        QCOMPARE(site.Log(), QStringList{u"TRA_BUY_CATALOG/21/-/600001/系统管理员/2"_s});
    }

    void ANameIsUniqueAmongTheLiveOnesOfItsOrganisation_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("org");
        QTest::addColumn<QString>("code");
        QTest::newRow("new, taken") << u""_s << u"中药库"_s << u"200001"_s << u"-1"_s;
        QTest::newRow("new, taken, with blanks")
            << u""_s << u" 中药库 "_s << u"200001"_s << u"-1"_s;
        QTest::newRow("renamed, taken") << u"21"_s << u"中药库"_s << u"200001"_s << u"-1"_s;
        QTest::newRow("renamed to itself") << u"21"_s << u"西药库"_s << u"200001"_s << u"1"_s;
        QTest::newRow("of a deleted one") << u""_s << u"旧库"_s << u"200001"_s << u"1"_s;
        QTest::newRow("of another organisation") << u""_s << u"总库"_s << u"200001"_s << u"1"_s;
    }
    void ANameIsUniqueAmongTheLiveOnesOfItsOrganisation()
    {
        QFETCH(QString, id);
        QFETCH(QString, name);
        QFETCH(QString, org);
        Site site;
        QTEST(site.SaveCode(id, name, org), "code");
    }

    void RenamingToItselfLeavesNoTrace()
    {
        Site site;
        QCOMPARE(site.SaveCode(u"21"_s, u"西药库"_s), u"1"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void WhatMakesNoSenseIsNotStored_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("org");
        QTest::newRow("no name") << u""_s << u""_s << u"200001"_s;
        QTest::newRow("name of blanks") << u""_s << u"  　"_s << u"200001"_s;
        QTest::newRow("eleven characters") << u""_s << u"一二三四五六七八九十一"_s << u"200001"_s;
        QTest::newRow("deleted meanwhile") << u"23"_s << u"新库"_s << u"200001"_s;
        QTest::newRow("unknown") << u"99"_s << u"新库"_s << u"200001"_s;
        QTest::newRow("another organisation's") << u"24"_s << u"新库"_s << u"200001"_s;
        QTest::newRow("a manufacturer's") << u""_s << u"新库"_s << u"200003"_s;
        QTest::newRow("a deleted organisation's") << u""_s << u"新库"_s << u"200004"_s;
        QTest::newRow("nobody's") << u""_s << u"新库"_s << u""_s;
    }
    void WhatMakesNoSenseIsNotStored()
    {
        QFETCH(QString, id);
        QFETCH(QString, name);
        QFETCH(QString, org);
        Site site;
        QCOMPARE(site.SaveCode(id, name, org), u"0"_s);
        QCOMPARE(site.Catalogs(), PresentCatalogs);
        QCOMPARE(site.Logged(), 0);
    }

    void ANameOfTenCharactersIsStored()
    {
        Site site;
        QCOMPARE(site.SaveCode({}, u"一二三四五六七八九十"_s), u"1"_s);
    }

    void DeletionTakesTheAssignmentsAlongAndLogsEach()
    {
        Site site;
        QCOMPARE(site.Delete(u"21"_s), u"1"_s);
        QCOMPARE(site.Catalogs(), QStringList({u"200001/中药库"_s, u"200002/总库"_s}));
        QCOMPARE(site.Assignments(), QStringList{u"24/600002/1"_s});
        QCOMPARE(site.Log(),
                 QStringList({u"TRA_BUY_CATALOG/21/-/600001/系统管理员/5"_s,
                              u"TRA_USER_BUY_CATALOG/21/600001/600001/系统管理员/5"_s,
                              u"TRA_USER_BUY_CATALOG/21/600011/600001/系统管理员/5"_s}));
        QCOMPARE(site.Number("SELECT count(*) FROM TRA_BUY_CATALOG"), 4);
    }

    void WhatAnotherOperatorDeletedIsDeleted()
    {
        Site site;
        QCOMPARE(site.Delete(u"23"_s), u"1"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void WhatTheOrganisationNeverHadIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.Delete(u"99"_s), u"0"_s);
        QCOMPARE(site.Delete(u"24"_s), u"0"_s);
        QCOMPARE(site.Catalogs(), PresentCatalogs);
    }

    // --- Users -----------------------------------------------------------------------------------

    void TheListReplacesTheDrugStoresAssignments()
    {
        Site site;
        QCOMPARE(site.Assign({Site::Assignment(u"600012"_s, u"0"_s),
                              Site::Assignment(u"600001"_s, u"1"_s)}),
                 u"1 1"_s);
        QCOMPARE(site.Assignments(),
                 QStringList({u"21/600001/1"_s, u"21/600012/0"_s, u"24/600002/1"_s}));
        // 600012 came again, 600011 went; 600001 stood there already
        QCOMPARE(site.Log(),
                 QStringList({u"TRA_USER_BUY_CATALOG/21/600012/600001/系统管理员/1"_s,
                              u"TRA_USER_BUY_CATALOG/21/600011/600001/系统管理员/5"_s}));
    }

    void TheLinkIsSwitchedAndTheEmptyFlagIsOff()
    {
        Site site;
        QCOMPARE(site.Assign(
                     {Site::Assignment(u"600001"_s, u""_s), Site::Assignment(u"600011"_s, u"1"_s)}),
                 u"1 1"_s);
        QCOMPARE(site.Assignments(),
                 QStringList({u"21/600001/0"_s, u"21/600011/1"_s, u"24/600002/1"_s}));
    }

    void WhatNothingIsStoredOfIsOffAlready()
    {
        Site site;
        QCOMPARE(site.Assign({Site::Assignment(u"600001"_s, u"1"_s),
                              Site::Assignment(u"600011"_s, u"0"_s)}),
                 u"1 1"_s);
        QCOMPARE(site.Assignments(), PresentAssignments);
        QCOMPARE(site.Logged(), 0);
    }

    void AUserWhoMayNotBeAssignedUndoesTheWholeList_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        QTest::newRow("disabled meanwhile") << Site::Assignment(u"600013"_s, u"0"_s);
        QTest::newRow("of another organisation") << Site::Assignment(u"600002"_s, u"0"_s);
        QTest::newRow("unknown") << Site::Assignment(u"699999"_s, u"0"_s);
        QTest::newRow("a flag that is none") << Site::Assignment(u"600012"_s, u"2"_s);
        QTest::newRow("of a drug store deleted meanwhile")
            << Site::Assignment(u"600012"_s, u"0"_s, u"23"_s);
        QTest::newRow("of another organisation's drug store")
            << Site::Assignment(u"600012"_s, u"0"_s, u"24"_s);
        QTest::newRow("of no drug store") << Site::Assignment(u"600012"_s, u"0"_s, u""_s);
    }
    void AUserWhoMayNotBeAssignedUndoesTheWholeList()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        QCOMPARE(site.Assign({Site::Assignment(u"600001"_s, u"0"_s), row}), u"0 0"_s);
        QCOMPARE(site.Assignments(), PresentAssignments);
        QCOMPARE(site.Logged(), 0);
    }

    void RemovingAllLeavesTheDrugStoreWithoutUsers()
    {
        Site site;
        QCOMPARE(site.RemoveAll(u"21"_s), u"1"_s);
        QCOMPARE(site.Assignments(), QStringList{u"24/600002/1"_s});
        QCOMPARE(site.Catalogs(), PresentCatalogs);
        QCOMPARE(site.Logged(), 2);
        QCOMPARE(site.RemoveAll(u"21"_s), u"1"_s); // it has none any more
        QCOMPARE(site.Logged(), 2);
    }

    void RemovingAllOfWhatTheOrganisationNeverHadFails()
    {
        Site site;
        QCOMPARE(site.RemoveAll(u"24"_s), u"0"_s);
        QCOMPARE(site.RemoveAll(u"99"_s), u"0"_s);
        QCOMPARE(site.Assignments(), PresentAssignments);
    }

    void RowsThatNameAnotherOperatorOrOneUserTwiceAreRefused()
    {
        Site site;
        Wire::NamedValues row = Site::Assignment(u"600012"_s, u"1"_s);
        QCOMPARE(site.Refusal(Manager, u"insertUpdateTraUserBuyCatalog"_s, {row, row}),
                 QByteArray("post.bad_row"));
        row.last().second = u"600002"_s;
        QCOMPARE(site.Refusal(Manager, u"insertUpdateTraUserBuyCatalog"_s, {row}),
                 QByteArray("post.operator"));
        QCOMPARE(site.Assignments(), PresentAssignments);
    }
};

QTEST_GUILESS_MAIN(TraBuyCatalogManagerTest)
#include "TraBuyCatalogManagerTest.moc"
