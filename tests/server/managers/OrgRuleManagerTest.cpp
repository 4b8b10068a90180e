#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.RuleManager"_s;
const QString Method = u"insertUpdateOrgRule"_s;

/// What the screen of the organisation rules posts.
Wire::NamedValues Rule(const QString &code, const QString &value, const QString &type,
                       const QString &orgId = u"200002"_s, const QString &operation = u"1"_s)
{
    return {{u"ORG_ID"_s, orgId},
            {u"RULE_CODE"_s, code},
            {u"RULE_NAME"_s, u"规则"_s},
            {u"RULE_VALUE"_s, value},
            {u"VALUE_TYPE"_s, type},
            {u"REMARK"_s, {}},
            {u"ENABLE_FLAG"_s, u"1"_s},
            {u"LAST_OPERATE"_s, operation},
            {u"LAST_USER"_s, u"系统管理员"_s}};
}

Wire::NamedValues Approval(const QString &value)
{
    return Rule(u"ORG_SJJGSH"_s, value, u"B"_s);
}

Wire::NamedValues Superior(const QString &orgId)
{
    return Rule(u"ORG_SJJGSH_ID"_s, orgId, u"S"_s);
}

Wire::NamedValues Validity(const QString &value)
{
    return Rule(u"ORG_DDYXQ"_s, value, u"B"_s);
}

Wire::NamedValues Days(const QString &days)
{
    return Rule(u"ORG_DDYXQ_TS"_s, days, u"S"_s);
}

Wire::NamedValues Invoice(const QString &value)
{
    return Rule(u"ORG_HPTX"_s, value, u"B"_s);
}

/// Everything that the screen posts with all its boxes ticked.
const QList<Wire::NamedValues> AllOn{Approval(u"1"_s), Superior(u"200001"_s), Validity(u"1"_s),
                                     Days(u"30"_s), Invoice(u"1"_s)};

/// Besides the site: 200006 is deleted, 200005 disabled.
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = '200006'");
        Connection().Run("UPDATE BAS_ORG SET ENABLE_FLAG = '0' WHERE ORG_ID = '200005'");
    }

    QString Save(const QList<Wire::NamedValues> &rows) { return Codes(Manager, Method, rows); }
    /// "RULE_CODE=RULE_VALUE" of what the screen reads for 200002.
    QStringList Rules()
    {
        return Texts("SELECT RULE_CODE||'='||coalesce(RULE_VALUE,'') FROM UNI_ORG_RULE"
                     " WHERE ORG_ID = '200002' ORDER BY RULE_CODE");
    }
};

} // namespace

/// The rules of an organisation; those of a group are tested beside.
class OrgRuleManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void SuperiorIsFiledUnderTheCodeUnderWhichItIsRead()
    {
        Site site;
        QCOMPARE(site.Save(AllOn), u"1 1 1 1 1"_s);
        QCOMPARE(site.Rules(), QStringList({u"ORG_DDYXQ=1"_s, u"ORG_DDYXQ_TS=30"_s, u"ORG_HPTX=1"_s,
                                            u"ORG_SJJGSH=1"_s, u"ORG_SJJGSH_ORGID=200001"_s}));
    }

    void RulesAreStampedAndLogged()
    {
        Site site;
        QCOMPARE(site.Save({Superior(u"200001"_s), Validity(u"1"_s)}), u"1 1"_s);
        QCOMPARE(
            site.Text("SELECT RULE_NAME||'/'||VALUE_TYPE||'/'||ENABLE_FLAG||'/'||"
                      "coalesce(REMARK,'-')||'/'||LAST_OPERATE||'/'||LAST_USER||'/'||LAST_USER_ID"
                      " FROM UNI_ORG_RULE WHERE RULE_CODE = 'ORG_DDYXQ'"),
            u"规则/B/1/-/1/系统管理员/600001"_s);
        QCOMPARE(site.Log(),
                 QStringList({u"UNI_ORG_RULE/200002/ORG_SJJGSH_ORGID/600001/系统管理员/1"_s,
                              u"UNI_ORG_RULE/200002/ORG_DDYXQ/600001/系统管理员/1"_s}));
    }

    void RulesAreChangedByOrganisationAndCode()
    {
        Site site;
        site.Save(AllOn);
        QCOMPARE(site.Save({Superior(u"200003"_s), Days(u"6"_s)}), u"1 1"_s);
        QCOMPARE(site.Rules(), QStringList({u"ORG_DDYXQ=1"_s, u"ORG_DDYXQ_TS=6"_s, u"ORG_HPTX=1"_s,
                                            u"ORG_SJJGSH=1"_s, u"ORG_SJJGSH_ORGID=200003"_s}));
        QCOMPARE(site.Log().mid(5),
                 QStringList({u"UNI_ORG_RULE/200002/ORG_SJJGSH_ORGID/600001/系统管理员/2"_s,
                              u"UNI_ORG_RULE/200002/ORG_DDYXQ_TS/600001/系统管理员/2"_s}));
    }

    void RulesOfAnotherOrganisationStayAsTheyAre()
    {
        Site site;
        site.Save(AllOn);
        QCOMPARE(site.Save({Rule(u"ORG_HPTX"_s, u"0"_s, u"B"_s, u"200003"_s)}), u"1"_s);
        QVERIFY(site.Rules().contains(u"ORG_HPTX=1"_s));
    }

    void RulesPostedUnchangedLeaveNoTrace()
    {
        Site site;
        site.Save(AllOn);
        QCOMPARE(site.Save(AllOn), u"1 1 1 1 1"_s);
        QCOMPARE(site.Logged(), 5);
    }

    void ApprovalSwitchedOffKeepsTheSuperiorOnFile()
    {
        Site site;
        site.Save(AllOn);
        QCOMPARE(site.Save({Approval(u"0"_s), Validity(u"1"_s), Days(u"30"_s), Invoice(u"1"_s)}),
                 u"1 1 1 1"_s);
        QVERIFY(site.Rules().contains(u"ORG_SJJGSH=0"_s));
        QVERIFY(site.Rules().contains(u"ORG_SJJGSH_ORGID=200001"_s));
    }

    void DaysAreLookedAtWhileOrdersExpire_data()
    {
        QTest::addColumn<QString>("days");
        QTest::addColumn<QString>("whileOn");
        QTest::addColumn<QString>("whileOff");
        QTest::newRow("some") << u"30"_s << u"1"_s << u"1"_s;
        QTest::newRow("zero") << u"0"_s << u"1"_s << u"1"_s;
        QTest::newRow("most") << u"9999"_s << u"1"_s << u"1"_s;
        QTest::newRow("too many") << u"10000"_s << u"0"_s << u"0"_s;
        QTest::newRow("huge") << u"99999999999999999999"_s << u"0"_s << u"0"_s;
        QTest::newRow("below zero") << u"-1"_s << u"0"_s << u"1"_s;
        QTest::newRow("far below zero") << u"-10000"_s << u"0"_s << u"0"_s;
        QTest::newRow("none") << QString() << u"0"_s << u"1"_s;
        QTest::newRow("letters") << u"三十"_s << u"0"_s << u"0"_s;
        QTest::newRow("fraction") << u"1.5"_s << u"0"_s << u"0"_s;
    }
    void DaysAreLookedAtWhileOrdersExpire()
    {
        QFETCH(QString, days);
        QFETCH(QString, whileOn);
        QFETCH(QString, whileOff);
        Site site;
        QCOMPARE(site.Save({Validity(u"1"_s), Days(days)}).left(whileOn.size()), whileOn);
        site.Save({Validity(u"0"_s)});
        QCOMPARE(site.Save({Days(days)}), whileOff);
    }

    void RowsThatMakeNoSenseAreNotStored_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        QTest::newRow("unknown code") << Rule(u"ORG_LCML"_s, u"1"_s, u"B"_s);
        QTest::newRow("code under which it is only read")
            << Rule(u"ORG_SJJGSH_ORGID"_s, u"200001"_s, u"S"_s);
        QTest::newRow("rule of groups") << Rule(u"UNI_JTCGDSH"_s, u"1"_s, u"B"_s);
        QTest::newRow("value that is no flag") << Invoice(u"2"_s);
        QTest::newRow("no value") << Invoice({});
        QTest::newRow("another value type") << Rule(u"ORG_HPTX"_s, u"1"_s, u"S"_s);
        QTest::newRow("superior of itself") << Superior(u"200002"_s);
        QTest::newRow("deleted superior") << Superior(u"200006"_s);
        QTest::newRow("unknown superior") << Superior(u"299999"_s);
        QTest::newRow("no superior") << Superior({});
        QTest::newRow("deleted organisation") << Rule(u"ORG_HPTX"_s, u"1"_s, u"B"_s, u"200006"_s);
        QTest::newRow("disabled organisation") << Rule(u"ORG_HPTX"_s, u"1"_s, u"B"_s, u"200005"_s);
        QTest::newRow("unknown organisation") << Rule(u"ORG_HPTX"_s, u"1"_s, u"B"_s, u"299999"_s);
        QTest::newRow("no organisation") << Rule(u"ORG_HPTX"_s, u"1"_s, u"B"_s, {});
    }
    void RowsThatMakeNoSenseAreNotStored()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        QCOMPARE(site.Save({row}), u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_ORG_RULE"), 0);
        QCOMPARE(site.Logged(), 0);
    }

    void RefusedRuleUndoesTheOthers()
    {
        Site site;
        QCOMPARE(site.Save({Approval(u"1"_s), Superior(u"200006"_s), Validity(u"0"_s)}),
                 u"0 0 0"_s);
        QCOMPARE(site.Rules(), QStringList());
        QCOMPARE(site.Logged(), 0);
    }

    void SuperiorIsDeletedUnderTheCodeUnderWhichItIsFiled()
    {
        Site site;
        site.Save(AllOn);
        QCOMPARE(site.Save({Rule(u"ORG_SJJGSH_ID"_s, {}, u"S"_s, u"200002"_s, u"D"_s)}), u"1"_s);
        QCOMPARE(site.Text("SELECT LAST_OPERATE FROM UNI_ORG_RULE"
                           " WHERE RULE_CODE = 'ORG_SJJGSH_ORGID'"),
                 u"D"_s);
    }

    void RuleNamedTwiceAndAForeignOperatorAreRefused()
    {
        Site site;
        QCOMPARE(site.Refusal(Manager, Method, {Invoice(u"1"_s), Invoice(u"0"_s)}), "post.bad_row");
        Wire::NamedValues foreign = Invoice(u"1"_s);
        foreign.last().second = u"张伟"_s;
        QCOMPARE(site.Refusal(Manager, Method, {foreign}), "post.operator");
    }
};

QTEST_GUILESS_MAIN(OrgRuleManagerTest)
#include "OrgRuleManagerTest.moc"
