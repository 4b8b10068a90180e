#include "ManagerSite.h"

#include <QTest>

#include <thread>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.basedata.OrgAffiliationManager"_s;
const QString Save = u"insertUpdateOrgAffiliation"_s;
const QString Delete = u"deleteOrgAffiliation"_s;

/// What the editor posts.
Wire::NamedValues Place(const QString &id, const QString &orgId, const QString &parentOrgId,
                        const QString &code, const QString &level)
{
    return ByAdmin({{u"ID"_s, id},
                    {u"ORG_ID"_s, orgId},
                    {u"PARENT_ORGID"_s, parentOrgId},
                    {u"TREE_CODE"_s, code},
                    {u"TREE_LEVEL"_s, level},
                    {u"LAST_USER"_s, u"系统管理员"_s}});
}

/// Besides the site: the affiliation
///   1 200001 0001, top
///   2 200002 000101, below 200001
///   3 200003 00010101, below 200002
///   4 200004 000102, below 200001
///   5 200005 0002, top, taken out
class Site : public ManagerSite
{
public:
    Site()
    {
        const QList<QStringList> places{
            {u"1"_s, u"200001"_s, {}, u"0001"_s, u"1"_s, u"1"_s},
            {u"2"_s, u"200002"_s, u"200001"_s, u"000101"_s, u"2"_s, u"1"_s},
            {u"3"_s, u"200003"_s, u"200002"_s, u"00010101"_s, u"3"_s, u"1"_s},
            {u"4"_s, u"200004"_s, u"200001"_s, u"000102"_s, u"2"_s, u"1"_s},
            {u"5"_s, u"200005"_s, {}, u"0002"_s, u"1"_s, u"D"_s}};
        for (const QStringList &place : places)
            Connection().Run("INSERT INTO BAS_ORG_AFFILIATION (ID, ORG_ID, PARENT_ORGID, TREE_CODE,"
                             " TREE_LEVEL, ENABLE_FLAG, LAST_OPERATE)"
                             " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?6)",
                             Store::Values(place.begin(), place.end()));
    }

    QString Store(const Wire::NamedValues &row) { return Codes(Manager, Save, {row}); }
    QString Remove(const QString &orgId, const QString &flag = u"D"_s)
    {
        return Codes(Manager, Delete,
                     {ByAdmin({{u"ORG_ID"_s, orgId},
                               {u"ENABLE_FLAG"_s, flag},
                               {u"LAST_USER"_s, u"系统管理员"_s}})});
    }
    void DeleteOrganisation(const QByteArray &orgId)
    {
        Connection().Execute("UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = '" + orgId +
                             '\'');
    }

    /// "ID ORG_ID PARENT_ORGID TREE_CODE" of the live rows, in the order of their codes.
    QStringList Tree()
    {
        return Texts("SELECT ID||' '||ORG_ID||' '||coalesce(PARENT_ORGID,'-')||' '||TREE_CODE"
                     " FROM BAS_ORG_AFFILIATION WHERE ENABLE_FLAG <> 'D' ORDER BY TREE_CODE");
    }
};

const QStringList Before{u"1 200001 - 0001"_s, u"2 200002 200001 000101"_s,
                         u"3 200003 200002 00010101"_s, u"4 200004 200001 000102"_s};

QString Logged(const QString &id, const QString &change)
{
    return u"BAS_ORG_AFFILIATION/%1/-/600001/系统管理员/%2"_s.arg(id, change);
}

} // namespace

/// The tree of superiors.
class OrgAffiliationManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void NewPlaceGetsAKeyAStampAndALogRow()
    {
        Site site;
        const Wire::ResultRow result =
            site.Post(Manager, Save, {Place({}, u"200006"_s, u"200001"_s, u"000103"_s, u"2"_s)})
                .rows.value(0);
        QCOMPARE(result.code, u"1"_s);
        const Wire::NamedValues key{{u"ID"_s, u"6"_s}};
        QCOMPARE(result.values, key);
        QCOMPARE(site.Tree(), Before + QStringList{u"6 200006 200001 000103"_s});
        QCOMPARE(site.Text("SELECT TREE_LEVEL||ENABLE_FLAG||LAST_OPERATE||'/'||LAST_USER||'/'||"
                           "LAST_USER_ID FROM BAS_ORG_AFFILIATION WHERE ID = '6'"),
                 u"211/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList{Logged(u"6"_s, u"1"_s)});
    }

    void PlaceWithoutSuperiorIsFoundByTreeAndByCodeQuery()
    {
        Site site;
        QCOMPARE(site.Store(Place({}, u"200006"_s, {}, u"0007"_s, u"1"_s)), u"1"_s);
        const RowSet tree = site.Query(
            u" SELECT A.*,    B.ORG_ABBR,    B.ORG_NAME  FROM BAS_ORG_AFFILIATION A,       BAS_ORG "
            "B  WHERE A.ORG_ID=B.ORG_ID      AND B.LAST_OPERATE <>'D'      and a.enable_flag <> "
            "'D' ORDER BY A.TREE_CODE"_s);
        QCOMPARE(tree.RowCount(), 5);
        QVERIFY(tree.IsNull(4, tree.FieldIndex(u"PARENT_ORGID")));
        const RowSet next = site.Query(
            u" SELECT NVL(MAX(TREE_CODE)+1,'1') AS CODE  FROM BAS_ORG_AFFILIATION  WHERE "
            "PARENT_ORGID IS NULL and enable_flag <>'D' "_s);
        QCOMPARE(next.Text(0, 0), u"8"_s);
    }

    void NextCodeBelowASuperiorLosesItsLeadingZeros()
    {
        Site site;
        const QString below =
            u" SELECT nvl(Max(TREE_CODE)+1,'01') AS CODE  FROM BAS_ORG_AFFILIATION  WHERE "
            "PARENT_ORGID='%1' and enable_flag <>'D' "_s;
        QCOMPARE(site.Query(below.arg(u"200001"_s)).Text(0, 0), u"103"_s);
        QCOMPARE(site.Query(below.arg(u"200004"_s)).Text(0, 0), u"1"_s);
    }

    void OrganisationStandsOnce()
    {
        Site site;
        QCOMPARE(site.Store(Place({}, u"200003"_s, u"200001"_s, u"000103"_s, u"2"_s)), u"-2"_s);
        QCOMPARE(site.Store(Place(u"4"_s, u"200003"_s, u"200001"_s, u"000102"_s, u"2"_s)), u"-2"_s);
        QCOMPARE(site.Tree(), Before);
        QCOMPARE(site.Logged(), 0);
        // 200005 was taken out.
        QCOMPARE(site.Store(Place({}, u"200005"_s, u"200001"_s, u"000103"_s, u"2"_s)), u"1"_s);
    }

    void LiveCodeStandsOnce()
    {
        Site site;
        QCOMPARE(site.Store(Place({}, u"200006"_s, u"200001"_s, u"000102"_s, u"2"_s)), u"-1"_s);
        QCOMPARE(site.Store(Place(u"4"_s, u"200004"_s, u"200001"_s, u"000101"_s, u"2"_s)), u"-1"_s);
        QCOMPARE(site.Tree(), Before);
        QCOMPARE(site.Logged(), 0);
        // 0002 was that of a place that is gone.
        QCOMPARE(site.Store(Place({}, u"200006"_s, {}, u"0002"_s, u"1"_s)), u"1"_s);
    }

    void SecondRefusalIsAnsweredWhenBothApply()
    {
        Site site;
        QCOMPARE(site.Store(Place({}, u"200003"_s, u"200001"_s, u"000102"_s, u"2"_s)), u"-2"_s);
    }

    void PlacesThatMakeNoSenseAreNotStored_data()
    {
        QTest::addColumn<QString>("orgId");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("level");
        const auto row = [](const char *what, const QString &orgId, const QString &parent,
                            const QString &code, const QString &level) {
            QTest::newRow(what) << orgId << parent << code << level;
        };
        const QString org = u"200006"_s;
        const QString top = u"200001"_s;
        row("no organisation", {}, top, u"000103"_s, u"2"_s);
        row("unknown organisation", u"299999"_s, top, u"000103"_s, u"2"_s);
        row("no code", org, {}, {}, u"0"_s);
        row("three digits at the top", org, {}, u"003"_s, u"0"_s);
        row("six digits at the top", org, {}, u"000103"_s, u"2"_s);
        row("letters", org, {}, u"00a1"_s, u"1"_s);
        row("full-width digits", org, {}, u"０００３"_s, u"1"_s);
        row("not under the superior's code", org, top, u"000203"_s, u"2"_s);
        row("two levels below", org, top, u"00010301"_s, u"3"_s);
        row("the superior's own code", org, top, u"0001"_s, u"1"_s);
        row("superior outside the tree", org, u"200007"_s, u"000103"_s, u"2"_s);
        row("superior that was taken out", org, u"200005"_s, u"000201"_s, u"2"_s);
        row("another level than the code's", org, top, u"000103"_s, u"1"_s);
        row("no level", org, top, u"000103"_s, {});
    }
    void PlacesThatMakeNoSenseAreNotStored()
    {
        QFETCH(QString, orgId);
        QFETCH(QString, parent);
        QFETCH(QString, code);
        QFETCH(QString, level);
        Site site;
        QCOMPARE(site.Store(Place({}, orgId, parent, code, level)), u"0"_s);
        QCOMPARE(site.Tree(), Before);
        QCOMPARE(site.Logged(), 0);
    }

    void NothingStandsUnderTwelveDigitCode()
    {
        Site site;
        QCOMPARE(site.Store(Place({}, u"200006"_s, u"200003"_s, u"0001010101"_s, u"4"_s)), u"1"_s);
        QCOMPARE(site.Store(Place({}, u"200007"_s, u"200006"_s, u"000101010101"_s, u"5"_s)),
                 u"1"_s);
        QCOMPARE(site.Refusal(Manager, Save,
                              {Place({}, u"200008"_s, u"200007"_s, u"00010101010101"_s, u"0"_s)}),
                 "post.bad_row");
        QCOMPARE(site.Store(Place({}, u"200008"_s, u"200007"_s, u"000101010102"_s, u"5"_s)),
                 u"0"_s);
    }

    void OrganisationThatSomebodyDeletedMeanwhileGetsNoPlace()
    {
        Site site;
        site.DeleteOrganisation("200006");
        QCOMPARE(site.Store(Place({}, u"200006"_s, u"200001"_s, u"000103"_s, u"2"_s)), u"0"_s);
        QCOMPARE(site.Store(Place(u"4"_s, u"200006"_s, u"200001"_s, u"000102"_s, u"2"_s)), u"0"_s);
        site.DeleteOrganisation("200004"); // which the tree no longer shows
        QCOMPARE(site.Store(Place({}, u"200007"_s, u"200004"_s, u"00010201"_s, u"3"_s)), u"0"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void DisabledOrganisationMayStand()
    {
        Site site;
        site.Connection().Execute("UPDATE BAS_ORG SET ENABLE_FLAG = '0' WHERE ORG_ID = '200006'");
        QCOMPARE(site.Store(Place({}, u"200006"_s, u"200001"_s, u"000103"_s, u"2"_s)), u"1"_s);
    }

    void ChangeOfAMissingOrRemovedPlaceFails()
    {
        Site site;
        QCOMPARE(site.Store(Place(u"99"_s, u"200006"_s, {}, u"0003"_s, u"1"_s)), u"0"_s);
        QCOMPARE(site.Store(Place(u"5"_s, u"200005"_s, {}, u"0002"_s, u"1"_s)), u"0"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void PlaceWithoutChildrenGetsAnotherCode()
    {
        Site site;
        QCOMPARE(site.Store(Place(u"4"_s, u"200004"_s, u"200001"_s, u"000177"_s, u"2"_s)), u"1"_s);
        QCOMPARE(site.Tree().last(), u"4 200004 200001 000177"_s);
        QCOMPARE(site.Log(), QStringList{Logged(u"4"_s, u"2"_s)});
    }

    void PlaceWithChildrenKeepsItsCode()
    {
        Site site;
        QCOMPARE(site.Store(Place(u"2"_s, u"200002"_s, u"200001"_s, u"000177"_s, u"2"_s)), u"0"_s);
        QCOMPARE(site.Tree(), Before);
        QCOMPARE(site.Logged(), 0);
    }

    void ChildOfADeletedOrganisationHoldsNoCode()
    {
        Site site;
        site.DeleteOrganisation("200003"); // the only one below 200002, and no longer shown
        QCOMPARE(site.Store(Place(u"2"_s, u"200006"_s, u"200001"_s, u"000177"_s, u"2"_s)), u"1"_s);
        QCOMPARE(site.Tree(), QStringList({Before[0], Before[3], u"2 200006 200001 000177"_s}));
        QCOMPARE(site.Log(), QStringList({Logged(u"2"_s, u"2"_s), Logged(u"3"_s, u"5"_s)}));
    }

    void PlaceMovesBelowAnotherSuperior()
    {
        Site site;
        QCOMPARE(site.Store(Place(u"3"_s, u"200003"_s, u"200004"_s, u"00010201"_s, u"3"_s)),
                 u"1"_s);
        QCOMPARE(site.Tree().last(), u"3 200003 200004 00010201"_s);
    }

    void NoPlaceComesBelowItself()
    {
        Site site;
        // Itself as the superior.
        QCOMPARE(site.Store(Place(u"4"_s, u"200004"_s, u"200004"_s, u"00010201"_s, u"3"_s)),
                 u"0"_s);
        // The one that takes its place as the superior.
        QCOMPARE(site.Store(Place(u"4"_s, u"200006"_s, u"200006"_s, u"00010201"_s, u"3"_s)),
                 u"0"_s);
        // One that stands below it, with a code that it got by other means.
        site.Connection().Execute(
            "UPDATE BAS_ORG_AFFILIATION SET TREE_CODE = '0009' WHERE ID IN ('3')");
        site.Connection().Execute(
            "UPDATE BAS_ORG_AFFILIATION SET TREE_CODE = '000901' WHERE ID IN ('2')");
        QCOMPARE(site.Store(Place(u"2"_s, u"200002"_s, u"200003"_s, u"000901"_s, u"2"_s)), u"0"_s);
        QCOMPARE(site.Logged(), 0);
    }

    /// 200002 was deleted and lost its place with its superior; 200003 was left below it.
    void OrganisationThatIsBackDoesNotComeBelowItsSubordinate()
    {
        Site site;
        site.DeleteOrganisation("200002");
        QCOMPARE(site.Remove(u"200004"_s), u"1"_s);
        QCOMPARE(site.Remove(u"200001"_s), u"1"_s);
        QCOMPARE(site.Tree(), QStringList{Before[2]});
        site.Connection().Execute("UPDATE BAS_ORG SET LAST_OPERATE = '1' WHERE ORG_ID = '200002'");
        const QString code = u"0001010101"_s;
        QCOMPARE(site.Store(Place({}, u"200002"_s, u"200003"_s, code, u"4"_s)), u"0"_s);
        QCOMPARE(site.Store(Place({}, u"200006"_s, u"200003"_s, code, u"4"_s)), u"1"_s);
        QCOMPARE(site.Store(Place(u"6"_s, u"200002"_s, u"200003"_s, code, u"4"_s)), u"0"_s);
        QCOMPARE(site.Tree(), QStringList({Before[2], u"6 200006 200003 0001010101"_s}));
    }

    void ExchangedOrganisationTakesItsChildrenAlong()
    {
        Site site;
        QCOMPARE(site.Store(Place(u"1"_s, u"200008"_s, {}, u"0001"_s, u"1"_s)), u"1"_s);
        QCOMPARE(site.Tree(),
                 QStringList({u"1 200008 - 0001"_s, u"2 200002 200008 000101"_s,
                              u"3 200003 200002 00010101"_s, u"4 200004 200008 000102"_s}));
        QCOMPARE(site.Log(), QStringList({Logged(u"1"_s, u"2"_s), Logged(u"2"_s, u"2"_s),
                                          Logged(u"4"_s, u"2"_s)}));
        QCOMPARE(site.Text("SELECT LAST_USER||'/'||LAST_USER_ID FROM BAS_ORG_AFFILIATION"
                           " WHERE ID = '4'"),
                 u"系统管理员/600001"_s);
        // The organisation that left is free.
        QCOMPARE(site.Store(Place({}, u"200001"_s, u"200008"_s, u"000103"_s, u"2"_s)), u"1"_s);
    }

    void ExchangeAndItsChildrenAreOneTransaction()
    {
        Site site;
        site.Trap(ManagerSite::Trouble::Constraint, "BEFORE UPDATE ON BAS_ORG_AFFILIATION",
                  "OLD.ID = '4'");
        QCOMPARE(site.Store(Place(u"1"_s, u"200008"_s, {}, u"0001"_s, u"1"_s)), u"0"_s);
        QCOMPARE(site.Tree(), Before);
        QCOMPARE(site.Logged(), 0);
    }

    void SavingWhatStandsLeavesNoTrace()
    {
        Site site;
        QCOMPARE(site.Store(Place(u"2"_s, u"200002"_s, u"200001"_s, u"000101"_s, u"2"_s)), u"1"_s);
        QCOMPARE(site.Logged(), 0);
        QCOMPARE(site.Text("SELECT LAST_USER FROM BAS_ORG_AFFILIATION WHERE ID = '2'"), QString());
    }

    void PlaceWithChildrenIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.Remove(u"200001"_s), u"-1"_s);
        QCOMPARE(site.Tree(), Before);
        QCOMPARE(site.Logged(), 0);
        QCOMPARE(site.Remove(u"200003"_s), u"1"_s);
        QCOMPARE(site.Remove(u"200002"_s), u"1"_s);
    }

    void DeletedPlaceIsMarkedInBothFlagsAndForgetsItsSuperior()
    {
        Site site;
        QCOMPARE(site.Remove(u"200004"_s), u"1"_s);
        QCOMPARE(site.Text("SELECT ENABLE_FLAG||LAST_OPERATE||coalesce(PARENT_ORGID,'-')||"
                           "TREE_CODE||LAST_USER FROM BAS_ORG_AFFILIATION WHERE ID = '4'"),
                 u"DD-000102系统管理员"_s);
        QCOMPARE(site.Log(), QStringList{Logged(u"4"_s, u"5"_s)});
    }

    void RulesOfARemovedOrganisationFindNoSuperior()
    {
        Site site;
        const QString sql =
            u" SELECT A.PARENT_ORGID , B.ORG_NAME  FROM BAS_ORG_AFFILIATION A,        BAS_ORG B   "
            "WHERE A.ORG_ID='200004'   AND A.PARENT_ORGID=B.ORG_ID"_s;
        QCOMPARE(site.Query(sql).RowCount(), 1);
        QCOMPARE(site.Remove(u"200004"_s), u"1"_s);
        QCOMPARE(site.Query(sql).RowCount(), 0);
        QCOMPARE(site.Store(Place({}, u"200004"_s, u"200002"_s, u"00010102"_s, u"3"_s)), u"1"_s);
        const RowSet superior = site.Query(sql);
        QCOMPARE(superior.RowCount(), 1);
        QCOMPARE(superior.Text(0, 0), u"200002"_s);
    }

    void PlaceThatAnotherOperatorDeletedIsGone()
    {
        Site site;
        QCOMPARE(site.Remove(u"200005"_s), u"1"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void OrganisationThatNeverStoodIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.Remove(u"200007"_s), u"0"_s);
        QCOMPARE(site.Remove(u"299999"_s), u"0"_s);
        QCOMPARE(site.Remove(u"200004"_s, u"1"_s), u"0"_s); // what else should be done with it
        QCOMPARE(site.Tree(), Before);
    }

    void ChildOfADeletedOrganisationHoldsNoSuperior()
    {
        Site site;
        site.DeleteOrganisation("200003"); // the only one below 200002, and no longer shown
        QCOMPARE(site.Remove(u"200002"_s), u"1"_s);
        QCOMPARE(site.Tree(), QStringList({Before[0], Before[3]}));
        QCOMPARE(site.Log(), QStringList({Logged(u"2"_s, u"5"_s), Logged(u"3"_s, u"5"_s)}));
    }

    void FailureInTheMiddleLeavesNothing()
    {
        Site site;
        site.Connection().Execute("ALTER TABLE SYS_UPDATE_LOG RENAME TO LOG_ASIDE");
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, site.Store(Place({}, u"200006"_s, u"200001"_s,
                                                                      u"000103"_s, u"2"_s)));
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, site.Remove(u"200004"_s));
        QCOMPARE(site.Tree(), Before);
    }

    void TwoOperatorsTakingOneCodeAtOnce()
    {
        Site site;
        QCOMPARE(CodesOfBoth(site, Place({}, u"200006"_s, u"200001"_s, u"000103"_s, u"2"_s),
                             Place({}, u"200007"_s, u"200001"_s, u"000103"_s, u"2"_s)),
                 QStringList({u"-1"_s, u"1"_s}));
    }

    void TwoOperatorsPlacingOneOrganisationAtOnce()
    {
        Site site;
        QCOMPARE(CodesOfBoth(site, Place({}, u"200006"_s, u"200001"_s, u"000103"_s, u"2"_s),
                             Place({}, u"200006"_s, {}, u"0002"_s, u"1"_s)),
                 QStringList({u"-2"_s, u"1"_s}));
    }

private:
    /// Saves both at once; the codes in the order of their texts.
    static QStringList CodesOfBoth(Site &site, const Wire::NamedValues &one,
                                   const Wire::NamedValues &other)
    {
        QStringList codes{{}, {}};
        const auto save = [&site](const Wire::NamedValues &row, QString &code) {
            code = site.PostBeside({Manager, Save, {row}});
        };
        QString &first = codes[0];
        QString &second = codes[1];
        std::thread thread([&] { save(one, first); });
        save(other, second);
        thread.join();
        codes.sort();
        return codes;
    }
};

QTEST_GUILESS_MAIN(OrgAffiliationManagerTest)
#include "OrgAffiliationManagerTest.moc"
