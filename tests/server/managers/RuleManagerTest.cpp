#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.RuleManager"_s;
const QString Method = u"insertUpdateUnionRule"_s;

/// What the rule screen posts; `changes` replaces values by name.
Wire::NamedValues Rule(const QString &code, const QString &name, const QString &value,
                       const QString &type, const QList<std::pair<QString, QString>> &changes = {})
{
    Wire::NamedValues row{{u"UNION_ID"_s, u"300002"_s},
                          {u"RULE_CODE"_s, code},
                          {u"RULE_NAME"_s, name},
                          {u"RULE_VALUE"_s, value},
                          {u"VALUE_TYPE"_s, type},
                          {u"ENABLE_FLAG"_s, u"1"_s},
                          {u"REMARK"_s, {}},
                          {u"LAST_OPERATE"_s, u"1"_s},
                          {u"LAST_USER"_s, u"系统管理员"_s}};
    for (const auto &[changed, to] : changes) {
        for (auto &[rowName, rowValue] : row) {
            if (rowName == changed)
                rowValue = to;
        }
    }
    return row;
}

Wire::NamedValues Audit(const QString &value,
                        const QList<std::pair<QString, QString>> &changes = {})
{
    return Rule(u"UNI_JTCGDSH"_s, u"集团审核启用标志"_s, value, u"B"_s, changes);
}

Wire::NamedValues Auditor(const QString &orgId)
{
    return Rule(u"UNI_JTCGDSH_ORGID"_s, u"集团审核机构ID"_s, orgId, u"S"_s);
}

class Site : public ManagerSite
{
public:
    QString Save(const QList<Wire::NamedValues> &rows) { return Codes(Manager, Method, rows); }
    /// "RULE_CODE=RULE_VALUE" of what the screen reads for 300002.
    QStringList Rules()
    {
        return Texts("SELECT RULE_CODE||'='||RULE_VALUE FROM UNI_UNION_RULE"
                     " WHERE UNION_ID = '300002' AND LAST_OPERATE <> 'D' ORDER BY RULE_CODE");
    }
};

const QString On = u"UNI_JTCGDSH=1"_s;
const QString Off = u"UNI_JTCGDSH=0"_s;
const QString ByMember = u"UNI_JTCGDSH_ORGID=200007"_s;

} // namespace

class RuleManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void RulesAreAddedStampedAndLogged()
    {
        Site site;
        QCOMPARE(site.Save({Audit(u"1"_s), Auditor(u"200007"_s)}), u"1 1"_s);
        QCOMPARE(site.Rules(), QStringList({On, ByMember}));
        QCOMPARE(
            site.Text("SELECT RULE_NAME||'/'||VALUE_TYPE||'/'||ENABLE_FLAG||'/'||"
                      "coalesce(REMARK,'-')||'/'||LAST_OPERATE||'/'||LAST_USER||'/'||LAST_USER_ID"
                      " FROM UNI_UNION_RULE WHERE RULE_CODE = 'UNI_JTCGDSH'"),
            u"集团审核启用标志/B/1/-/1/系统管理员/600001"_s);
    }

    void OperatorIsLoggedFromTheCredentialThoughNoRowNamesAnId()
    {
        Site site;
        QCOMPARE(site.Save({Audit(u"1"_s)}), u"1"_s);
        QCOMPARE(site.Log(),
                 QStringList{u"UNI_UNION_RULE/300002/UNI_JTCGDSH/600001/系统管理员/1"_s});
        QCOMPARE(site.Refusal(Manager, Method, {Audit(u"0"_s, {{u"LAST_USER"_s, u"张伟"_s}})}),
                 "post.operator");
        QCOMPARE(site.Rules(), QStringList{On});
    }

    void StoredRuleIsChangedByGroupAndCode()
    {
        Site site;
        site.Save({Audit(u"1"_s), Auditor(u"200007"_s)});
        QCOMPARE(site.Save({Audit(u"0"_s)}), u"1"_s);
        QCOMPARE(site.Rules(), QStringList({Off, ByMember}));
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_UNION_RULE"), 2);
        QCOMPARE(site.Log().value(2), u"UNI_UNION_RULE/300002/UNI_JTCGDSH/600001/系统管理员/2"_s);
    }

    void RulePostedUnchangedLeavesNoTrace()
    {
        Site site;
        site.Save({Audit(u"1"_s), Auditor(u"200007"_s)});
        QCOMPARE(site.Save({Audit(u"1"_s), Auditor(u"200007"_s)}), u"1 1"_s);
        QCOMPARE(site.Logged(), 2);
    }

    void DeletedRuleIsMarkedAndTakenIntoUseAgain()
    {
        Site site;
        site.Save({Audit(u"1"_s)});
        const Wire::NamedValues deletion = Audit(u"1"_s, {{u"LAST_OPERATE"_s, u"D"_s}});
        QCOMPARE(site.Save({deletion}), u"1"_s);
        QCOMPARE(site.Rules(), QStringList());
        QCOMPARE(site.Save({deletion}), u"0"_s);
        QCOMPARE(site.Save({Audit(u"1"_s)}), u"1"_s);
        QCOMPARE(site.Rules(), QStringList{On});
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_UNION_RULE"), 1);
    }

    void EmptyLastOperateIsStoredAsLive()
    {
        Site site;
        QCOMPARE(site.Save({Audit(u"1"_s, {{u"LAST_OPERATE"_s, {}}})}), u"1"_s);
        QCOMPARE(site.Rules(), QStringList{On});
    }

    void RowsThatMakeNoSenseAreNotStored_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        QTest::newRow("unknown code") << Rule(u"UNI_NOSUCH"_s, u"规则"_s, u"1"_s, u"B"_s);
        QTest::newRow("no code") << Rule({}, u"规则"_s, u"1"_s, u"B"_s);
        QTest::newRow("no name") << Audit(u"1"_s, {{u"RULE_NAME"_s, {}}});
        QTest::newRow("value that is no flag") << Audit(u"2"_s);
        QTest::newRow("no value") << Audit({});
        QTest::newRow("another value type") << Audit(u"1"_s, {{u"VALUE_TYPE"_s, u"S"_s}});
        QTest::newRow("enable flag that is none") << Audit(u"1"_s, {{u"ENABLE_FLAG"_s, u"x"_s}});
        QTest::newRow("auditor that is no member") << Auditor(u"200005"_s);
        QTest::newRow("no auditor") << Auditor({});
        QTest::newRow("unknown group") << Audit(u"1"_s, {{u"UNION_ID"_s, u"399999"_s}});
        QTest::newRow("deleted group") << Audit(u"1"_s, {{u"UNION_ID"_s, u"300005"_s}});
    }
    void RowsThatMakeNoSenseAreNotStored()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        QCOMPARE(site.Save({row}), u"0"_s);
        QCOMPARE(site.Logged(), 0);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_UNION_RULE"), 0);
    }

    void RefusedRuleUndoesTheOther()
    {
        Site site;
        QCOMPARE(site.Save({Audit(u"1"_s), Auditor(u"200005"_s)}), u"0 0"_s);
        QCOMPARE(site.Rules(), QStringList());
        QCOMPARE(site.Logged(), 0);
    }

    void RuleNamedTwiceAndTextTooLongAreRefused()
    {
        Site site;
        QCOMPARE(site.Refusal(Manager, Method, {Audit(u"1"_s), Audit(u"0"_s)}), "post.bad_row");
        QCOMPARE(
            site.Refusal(Manager, Method, {Audit(u"1"_s, {{u"RULE_NAME"_s, QString(101, u'规')}})}),
            "post.bad_row");
        QCOMPARE(site.Refusal(Manager, Method, {}), "post.bad_row");
    }
};

QTEST_GUILESS_MAIN(RuleManagerTest)
#include "RuleManagerTest.moc"
