#include "screens/OrgRuleSet.h"

#include "controls/ButtonEdit.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

RowSet Organisations()
{
    return Rows({u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_ABBR"_s, u"ORG_NAME"_s},
                {{u"501"_s, u"H501"_s, u"一院"_s, u"市第一医院"_s},
                 {u"502"_s, u"H502"_s, u"二院"_s, u"市第二医院"_s},
                 {u"503"_s, u"P503"_s, u"百草"_s, u"百草药房"_s}});
}

/// Rules as the server gives them: "CODE=value".
RowSet Rules(const QStringList &rules)
{
    QList<QStringList> rows;
    for (const QString &rule : rules)
        rows << QStringList{u"501"_s, rule.section(u'=', 0, 0), rule.section(u'=', 1)};
    return Rows({u"ORG_ID"_s, u"RULE_CODE"_s, u"RULE_VALUE"_s}, rows);
}

const QStringList AllRules{u"ORG_SJJGSH=1"_s, u"ORG_SJJGSH_ORGID=900"_s, u"ORG_DDYXQ=1"_s,
                           u"ORG_DDYXQ_TS=30"_s, u"ORG_HPTX=1"_s};

/// The screen, shown, and a server with three of 120 organisations: 501 has the given rules, 502
/// and 503 have none; 900 is the superior that the affiliation has for 502.
class Screen : public ScreenFixture
{
public:
    explicit Screen(const QStringList &rules = AllRules)
    {
        const RowSet superior = Rows({u"ORG_ID"_s, u"ORG_NAME"_s}, {{u"900"_s, u"省卫生厅"_s}});
        server.OnQuery(u"SELECT * FROM BAS_ORG WHERE"_s).Answer(Organisations(), 120);
        server.OnQueryExact(OrgRuleSql::Rules(u"501"_s)).Answer(Rules(rules));
        server.OnQuery(u"SELECT * FROM UNI_ORG_RULE"_s).Answer(Rules({}));
        server.OnQueryExact(OrgRuleSql::OrgName(u"900"_s)).Answer(superior);
        server.OnQueryExact(OrgRuleSql::Superior(u"502"_s))
            .Answer(Rows({u"PARENT_ORGID"_s, u"ORG_NAME"_s}, {{u"900"_s, u"省卫生厅"_s}}));
        server.OnQuery(u"BAS_ORG_AFFILIATION"_s)
            .Answer(Rows({u"PARENT_ORGID"_s, u"ORG_NAME"_s}, {}));
        ShowScreen(form);
    }

    void Query() { Trigger(&form, u"ActQuery"_s); }
    /// Lists the organisations and loads one as a click on its row does.
    void Load(int row = 0)
    {
        if (!Listed().IsActive())
            Query();
        ClickCell(Grid(), row, u"ORG_NAME");
    }
    void Save() { Trigger(&form, u"ActSave"_s); }
    ScriptedServer::Script &OnSave()
    {
        return server.OnPost(u"com.business.admin.RuleManager"_s, u"insertUpdateOrgRule"_s);
    }
    QStringList Posted() { return RowTexts(server.LastPost().rows); }
    /// The posted codes and values: "ORG_SJJGSH=1".
    QStringList PostedValues()
    {
        QStringList values;
        for (int row = 0; row < server.LastPost().rows.size(); ++row)
            values << server.LastPost().Value(u"RULE_CODE"_s, row) + u'=' +
                          server.LastPost().Value(u"RULE_VALUE"_s, row);
        return values;
    }

    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridRuleView"_s); }
    ClientDataSet &Listed() { return *Grid().DataSet(); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    QTabWidget &Tabs() { return *Child<QTabWidget>(&form, u"cxPageControl1"_s); }
    QCheckBox &Approval() { return *Child<QCheckBox>(&form, u"ORG_SJJGSH"_s); }
    ButtonEdit &Superior() { return *Child<ButtonEdit>(&form, u"ORG_SJJGSH_ID"_s); }
    QCheckBox &Validity() { return *Child<QCheckBox>(&form, u"ORG_DDYXQ"_s); }
    QLineEdit &Days() { return *Child<QLineEdit>(&form, u"ORG_DDYXQ_TS"_s); }
    bool Chosen(const QString &radio) { return Child<QRadioButton>(&form, radio)->isChecked(); }
    QString Label(const QString &name) { return Child<QLabel>(&form, name)->text(); }
    bool Enabled(const QString &action) { return ActionEnabled(&form, action); }
    /// A tick as the operator makes it: at the box, which need not fill its widget.
    void Tick(QCheckBox &box)
    {
        QVERIFY(box.isEnabled());
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(8, box.height() / 2));
    }

    TFrmOrgRuleSet form;
};

const QString ChooseOrg = u"Information||请指定一个机构|Ok"_s;
const QString DaysBelowZero = u"Information|提示|订单有效期天数不能小于零！|Ok"_s;
const QString NeedsSuperior = u"Information|提示|上级审核机构不能为空！|Ok"_s;
const QString NoSuperior = u"Information|提示|不存在上级审核机构！|Ok"_s;
const QString Stored = u"Information|提示|设置成功！|Ok"_s;

} // namespace

class OrgRuleSetTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(OrgRuleSql::Organisations(u"  "_s), Expected(u"ruleorgs.all"_s));
        QCOMPARE(OrgRuleSql::Organisations(u" ab'c "_s), Expected(u"ruleorgs.filtered"_s));
        QCOMPARE(OrgRuleSql::Rules(u"50'1"_s), Expected(u"orgrules"_s));
        QCOMPARE(OrgRuleSql::Superior(u"50'1"_s), Expected(u"orgrules.superior"_s));
        QCOMPARE(OrgRuleSql::OrgName(u"50'1"_s), Expected(u"orgrules.orgname"_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form.windowTitle(), u"机构规则设置"_s);
        QCOMPARE(screen.Tabs().tabText(0), u"采购单制作"_s);
        QCOMPARE(screen.Tabs().tabText(1), u"其他设置"_s);
        const QList<std::pair<QString, QString>> buttons{
            {u"BtnQuery"_s, u"查询"_s},
            {u"BtnModify"_s, u"修改"_s},
            {u"BtnSave"_s, u"保存设置"_s},
            {u"BtnClose"_s, u"返回"_s},
            {u"ORG_SJJGSH"_s, u"启用上级审核"_s},
            {u"ORG_DDYXQ"_s, u"启用订单有效期"_s},
            {u"rbHPTXAdd"_s, u"货票同行"_s},
            {u"rbHPTXUnAdd"_s, u"货票不同行"_s},
            {u"ORG_HASH_PRODUCT"_s, u"自动生成产品编码"_s},
            {u"ORG_HASH_ORG"_s, u"自动生成机构编码"_s},
            {u"ORG_LCML"_s, u"启用产品目录"_s},
        };
        for (const auto &[name, text] : buttons)
            QCOMPARE(Child<QAbstractButton>(&screen.form, name)->text(), text);
        QCOMPARE(screen.Superior().Buttons(), QStringList{u"..."_s});
        QCOMPARE(screen.Label(u"lbInfo"_s), u"机构名称"_s);
        QCOMPARE(screen.Label(u"lbOrgNameCaption"_s), u"当前机构："_s);
        QCOMPARE(screen.Label(u"lbOrgRuleCaption"_s), u"规则状态："_s);
        QCOMPARE(screen.Label(u"lbDDYXQ_TS"_s), u"订单有效期天数"_s);
        QCOMPARE(
            ColumnsOf(screen.Grid()),
            QStringList({u"ORG_CODE 机构编码"_s, u"ORG_ABBR 机构简称"_s, u"ORG_NAME 机构名称"_s}));
    }

    void ExplanationsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.Label(u"lbDDYXQ"_s),
                 u"启用订单有效期，订单在有效期内是有效的，卖方可以进行配送。"_s);
        QCOMPARE(screen.Label(u"lbSJJGSH"_s),
                 u"启用上级审核机构表示采购单需要由上级审核机构审核后才能生成订单。（备注：需要在"
                 "机构从属关系模块中维护上下级关系）"_s);
        QCOMPARE(screen.Label(u"lbHPTX"_s),
                 u"启用货票同行，指是用户在进行订单配送时必须填写发票号和发票时间等信息。"_s);
    }

    void StylingPassReplacesTheLayoutsPagingValues()
    {
        Screen screen;
        QCOMPARE(screen.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(screen.Pages().PageSize(), 50);
        QCOMPARE(screen.Pages().ShowAllLimit(), 1000);
        QVERIFY(!screen.Pages().ShowSelectAll());
    }

    void ShowOpensTheFirstTabAndQueriesNothing()
    {
        Screen screen;
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Tabs().currentIndex(), 0);
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(!screen.Enabled(u"ActModify"_s));
        QVERIFY(!screen.Enabled(u"ActGetOrg"_s));
        QVERIFY(!screen.Superior().isEnabled());
        QCOMPARE(screen.Label(u"lbOrgName"_s), u"无"_s);
        QCOMPARE(screen.Label(u"lbOrgRule"_s), u"未设置"_s);
        QCOMPARE(screen.Days().text(), u"6"_s);
    }

    // --- The list --------------------------------------------------------------------------------

    void EnterInTheFilterQueriesTheFirstPage()
    {
        Screen screen;
        Type(&screen.form, u"edInfo"_s, u" ab'c "_s);
        Press(&screen.form, u"edInfo"_s, Qt::Key_Return);
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"ruleorgs.filtered"_s)});
        QCOMPARE(screen.server.LastQuery().page, 1);
        QCOMPARE(screen.server.LastQuery().pageSize, 50);
        QCOMPARE(screen.server.LastQuery().queryType, 2);
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QCOMPARE(FocusName(screen.form), u"GridRuleView"_s);
        QVERIFY(screen.Enabled(u"ActModify"_s));
    }

    void QueryWithoutRowsFocusesTheFilter()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Rows({u"ORG_ID"_s}, {}));
        screen.Query();
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(!screen.Enabled(u"ActModify"_s));
    }

    void QueryActionIsDisabledWhileItRuns()
    {
        Screen screen;
        bool enabled = true;
        connect(&screen.server, &ScriptedServer::RequestArrived, &screen.form,
                [&] { enabled = screen.Enabled(u"ActQuery"_s); });
        screen.Query();
        QVERIFY(!enabled);
        QVERIFY(screen.Enabled(u"ActQuery"_s));
    }

    // --- Loading ---------------------------------------------------------------------------------

    void RulesAreLoadedByAClickByEnterOrByTheAction_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"click", "Enter", "action"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }
    void RulesAreLoadedByAClickByEnterOrByTheAction()
    {
        QFETCH(QString, way);
        Screen screen;
        screen.Query();
        if (way == u"click")
            ClickCell(screen.Grid(), 0, u"ORG_CODE");
        else if (way == u"Enter")
            Press(&screen.Grid(), Qt::Key_Return);
        else
            Trigger(&screen.form, u"ActModify"_s);
        QCOMPARE(screen.server.Statements().mid(1),
                 QStringList({OrgRuleSql::Rules(u"501"_s), OrgRuleSql::OrgName(u"900"_s)}));
        QCOMPARE(screen.server.LastQuery().page, 0);
        QCOMPARE(screen.server.LastQuery().pageSize, 0);
        QCOMPARE(screen.Label(u"lbOrgName"_s), u"市第一医院"_s);
        QCOMPARE(screen.Label(u"lbOrgRule"_s), u"已设置"_s);
    }

    void EveryRuleIsShown()
    {
        Screen screen;
        screen.Load();
        QVERIFY(screen.Approval().isChecked());
        QCOMPARE(screen.Superior().text(), u"省卫生厅"_s);
        QVERIFY(screen.Superior().isEnabled());
        QVERIFY(screen.Enabled(u"ActGetOrg"_s));
        QVERIFY(screen.Validity().isChecked());
        QCOMPARE(screen.Days().text(), u"30"_s);
        QVERIFY(screen.Days().isEnabled());
        QVERIFY(screen.Chosen(u"rbHPTXAdd"_s));
        QVERIFY(!screen.Chosen(u"rbHPTXUnAdd"_s));
    }

    void SuperiorIsNotReadUnderTheCodeUnderWhichItIsWritten()
    {
        Screen screen({u"ORG_SJJGSH=1"_s, u"ORG_SJJGSH_ID=900"_s});
        screen.Load();
        QVERIFY(screen.Superior().text().isEmpty());
        QCOMPARE(screen.server.Statements().last(), OrgRuleSql::Rules(u"501"_s));
    }

    void OnlyTheValueOneSwitchesOn()
    {
        Screen screen({u"ORG_SJJGSH=0"_s, u"ORG_SJJGSH_ORGID=900"_s, u"ORG_DDYXQ=Y"_s,
                       u"ORG_DDYXQ_TS=30"_s, u"ORG_HPTX="_s});
        screen.Load();
        QVERIFY(!screen.Approval().isChecked());
        QVERIFY(screen.Superior().text().isEmpty());
        QVERIFY(!screen.Superior().isEnabled());
        QVERIFY(!screen.Validity().isChecked());
        QCOMPARE(screen.Days().text(), u"30"_s);
        QVERIFY(!screen.Days().isEnabled());
        QVERIFY(screen.Chosen(u"rbHPTXUnAdd"_s));
    }

    void OrganisationWithoutRulesShowsNotSetAndEveryControlUnset()
    {
        Screen screen;
        screen.Load(0);
        screen.Load(1);
        QCOMPARE(screen.Label(u"lbOrgName"_s), u"市第二医院"_s);
        QCOMPARE(screen.Label(u"lbOrgRule"_s), u"未设置"_s);
        QVERIFY(!screen.Approval().isChecked());
        QVERIFY(screen.Superior().text().isEmpty());
        QVERIFY(screen.Superior().ChosenValue().isEmpty());
        QVERIFY(!screen.Enabled(u"ActGetOrg"_s));
        QVERIFY(!screen.Validity().isChecked());
        QVERIFY(screen.Days().text().isEmpty());
        QVERIFY(!screen.Days().isEnabled());
        QVERIFY(!screen.Chosen(u"rbHPTXAdd"_s));
        QVERIFY(!screen.Chosen(u"rbHPTXUnAdd"_s));
    }

    void ValidityWithoutStoredDaysShowsSix()
    {
        Screen screen({u"ORG_DDYXQ=1"_s});
        screen.Load();
        QCOMPARE(screen.Days().text(), u"6"_s);
    }

    void SuperiorThatIsGoneIsShownWithoutAName()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.server.OnQuery(u"BAS_ORG WHERE"_s).Answer(Organisations());
        screen.server.OnQuery(u"UNI_ORG_RULE"_s).Answer(Rules(AllRules));
        screen.server.OnAnyQuery().Answer(Rows({u"ORG_ID"_s, u"ORG_NAME"_s}, {}));
        screen.Load();
        QVERIFY(screen.Superior().text().isEmpty());
        QCOMPARE(screen.Superior().ChosenValue(), u"900"_s);
    }

    void MovingInTheListKeepsTheLoadedOrganisation()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        const auto queries = screen.server.Queries().size();
        Press(&screen.Grid(), Qt::Key_Down);
        QCOMPARE(screen.Listed().FieldText(u"ORG_ID"), u"502"_s);
        QCOMPARE(screen.server.Queries().size(), queries);
        QCOMPARE(screen.Label(u"lbOrgName"_s), u"市第一医院"_s);
        screen.Save();
        QCOMPARE(screen.server.LastPost().Value(u"ORG_ID"_s), u"501"_s);
    }

    void LoadActionIsDisabledWhileItRuns()
    {
        Screen screen;
        screen.Query();
        QList<bool> enabled;
        connect(&screen.server, &ScriptedServer::RequestArrived, &screen.form,
                [&] { enabled << screen.Enabled(u"ActModify"_s); });
        Trigger(&screen.form, u"ActModify"_s);
        QCOMPARE(enabled, QList<bool>({false, false}));
        QVERIFY(screen.Enabled(u"ActModify"_s));
    }

    /// Else the rules of one organisation could be saved for another.
    void BrokenLoadLeavesNameAndRulesOfTheOrganisationBefore_data()
    {
        QTest::addColumn<QString>("broken");
        QTest::newRow("rules") << u"UNI_ORG_RULE"_s;
        QTest::newRow("superior's name") << u"SELECT ORG_ID,ORG_NAME"_s;
    }
    void BrokenLoadLeavesNameAndRulesOfTheOrganisationBefore()
    {
        QFETCH(QString, broken);
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load(1);
        screen.server.ClearScripts();
        screen.server.OnQuery(broken).Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s);
        screen.server.OnAnyQuery().Answer(Rules(AllRules));
        screen.OnSave().Code(u"1"_s);
        ClickCell(screen.Grid(), 0, u"ORG_NAME");
        QVERIFY(screen.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QCOMPARE(screen.Label(u"lbOrgName"_s), u"市第二医院"_s);
        QVERIFY(!screen.Approval().isChecked());
        QVERIFY(screen.Enabled(u"ActModify"_s));
        screen.Save();
        QCOMPARE(screen.server.LastPost().Value(u"ORG_ID"_s), u"502"_s);
    }

    // --- The rules that hang together ------------------------------------------------------------

    void ApprovalEnablesTheSuperior()
    {
        Screen screen;
        screen.Load(1);
        screen.Tick(screen.Approval());
        QVERIFY(screen.Superior().isEnabled());
        QVERIFY(screen.Enabled(u"ActGetOrg"_s));
        screen.Tick(screen.Approval());
        QVERIFY(!screen.Superior().isEnabled());
        QVERIFY(!screen.Enabled(u"ActGetOrg"_s));
    }

    void UncheckedApprovalClearsTheSuperiorAndPostsNoRowForIt()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        screen.Tick(screen.Approval());
        QVERIFY(screen.Superior().text().isEmpty());
        screen.Save();
        QCOMPARE(
            screen.Posted(),
            QStringList({Expected(u"orgrule.approval.off"_s), Expected(u"orgrule.validity.on"_s),
                         Expected(u"orgrule.days.30"_s), Expected(u"orgrule.invoice.on"_s)}));
    }

    void ApprovalSwitchedOffAndOnAgainAsksForTheSuperiorAnew()
    {
        Screen screen;
        screen.Load();
        screen.Tick(screen.Approval());
        screen.Tick(screen.Approval());
        screen.Save();
        QCOMPARE(screen.Boxes(), QStringList{NeedsSuperior});
    }

    void CheckedValidityFillsSixIntoAnEmptyDaysBox()
    {
        Screen screen;
        screen.Load(1);
        QVERIFY(screen.Days().text().isEmpty());
        screen.Tick(screen.Validity());
        QCOMPARE(screen.Days().text(), u"6"_s);
        QVERIFY(screen.Days().isEnabled());
    }

    void CheckedValidityKeepsTheDaysThereAre()
    {
        Screen screen;
        screen.Load();
        screen.Tick(screen.Validity());
        QVERIFY(!screen.Days().isEnabled());
        QCOMPARE(screen.Days().text(), u"30"_s);
        screen.Tick(screen.Validity());
        QVERIFY(screen.Days().isEnabled());
        QCOMPARE(screen.Days().text(), u"30"_s);
    }

    void BoxesOfTheSecondTabRunTheRuleOfTheDays_data()
    {
        QTest::addColumn<QString>("box");
        for (const char *box : {"ORG_HASH_PRODUCT", "ORG_HASH_ORG", "ORG_LCML"})
            QTest::newRow(box) << QString::fromLatin1(box);
    }
    void BoxesOfTheSecondTabRunTheRuleOfTheDays()
    {
        QFETCH(QString, box);
        Screen screen;
        screen.Load();
        screen.Days().clear();
        screen.Tabs().setCurrentIndex(1);
        screen.Tick(*Child<QCheckBox>(&screen.form, box));
        QCOMPARE(screen.Days().text(), u"6"_s);
    }

    void SecondTabIsNeitherLoadedNorSaved()
    {
        Screen screen({u"ORG_HASH_PRODUCT=1"_s, u"ORG_HASH_ORG=1"_s, u"ORG_LCML=1"_s});
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        for (const auto &box : {u"ORG_HASH_PRODUCT"_s, u"ORG_HASH_ORG"_s, u"ORG_LCML"_s}) {
            QVERIFY(!Child<QCheckBox>(&screen.form, box)->isChecked());
            Child<QCheckBox>(&screen.form, box)->setChecked(true);
        }
        screen.Save();
        QCOMPARE(screen.PostedValues(), QStringList({u"ORG_SJJGSH=0"_s, u"ORG_DDYXQ=0"_s,
                                                     u"ORG_DDYXQ_TS="_s, u"ORG_HPTX=0"_s}));
    }

    // --- The superior ----------------------------------------------------------------------------

    void SuperiorIsProposedFromTheAffiliation()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load(1);
        screen.Tick(screen.Approval());
        PressInside(&screen.form, u"ORG_SJJGSH_ID"_s);
        QCOMPARE(screen.server.LastQuery().sql, OrgRuleSql::Superior(u"502"_s));
        QCOMPARE(screen.server.LastQuery().page, 0);
        QCOMPARE(screen.Superior().text(), u"省卫生厅"_s);
        screen.Save();
        QCOMPARE(screen.PostedValues().value(1), u"ORG_SJJGSH_ID=900"_s);
    }

    void OrganisationWithoutASuperiorIsToldAndKeepsTheOneItHas()
    {
        Screen screen;
        screen.Load();
        PressInside(&screen.form, u"ORG_SJJGSH_ID"_s);
        QCOMPARE(screen.Boxes(), QStringList{NoSuperior});
        QCOMPARE(screen.Superior().text(), u"省卫生厅"_s);
        QVERIFY(screen.Enabled(u"ActGetOrg"_s));
    }

    void SuperiorIsNotTyped()
    {
        Screen screen;
        screen.Load();
        screen.Superior().setFocus();
        QTest::keyClick(&screen.Superior(), Qt::Key_X);
        QCOMPARE(screen.Superior().text(), u"省卫生厅"_s);
        QCOMPARE(screen.Superior().ChosenValue(), u"900"_s);
    }

    // --- Saving ----------------------------------------------------------------------------------

    void SavingWithNothingLoadedAsksForAnOrganisation()
    {
        Screen screen;
        screen.Query();
        screen.Save();
        QCOMPARE(screen.Boxes(), QStringList{ChooseOrg});
        QVERIFY(screen.server.Posts().isEmpty());
        QVERIFY(screen.Enabled(u"ActSave"_s));
    }

    void EveryRuleIsPostedInItsOrder()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        screen.Save();
        QCOMPARE(screen.Posted(),
                 QStringList({Expected(u"orgrule.approval.on"_s), Expected(u"orgrule.superior"_s),
                              Expected(u"orgrule.validity.on"_s), Expected(u"orgrule.days.30"_s),
                              Expected(u"orgrule.invoice.on"_s)}));
    }

    void UnsetRulesArePostedAsNo()
    {
        Screen screen(QStringList{});
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        screen.Save();
        QCOMPARE(
            screen.Posted(),
            QStringList({Expected(u"orgrule.approval.off"_s), Expected(u"orgrule.validity.off"_s),
                         Expected(u"orgrule.days.none"_s), Expected(u"orgrule.invoice.off"_s)}));
    }

    void DaysArePostedTrimmed()
    {
        Screen screen({u"ORG_DDYXQ=1"_s, u"ORG_DDYXQ_TS= 6 "_s});
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        screen.Save();
        QCOMPARE(screen.Posted().value(2), Expected(u"orgrule.days.6"_s));
    }

    void NegativeDaysAreRefusedBeforeAnythingIsPosted()
    {
        Screen screen;
        screen.Load();
        screen.Approval().setChecked(false);
        Type(&screen.Days(), u"-1"_s);
        screen.Save();
        QCOMPARE(screen.Boxes(), QStringList{DaysBelowZero});
        QVERIFY(screen.server.Posts().isEmpty());
        QVERIFY(screen.Enabled(u"ActSave"_s));
    }

    void NegativeDaysOfASwitchedOffValidityAreNotLookedAt()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        Type(&screen.Days(), u"-1"_s);
        screen.Tick(screen.Validity());
        screen.Save();
        QCOMPARE(screen.PostedValues().mid(2, 2),
                 QStringList({u"ORG_DDYXQ=0"_s, u"ORG_DDYXQ_TS=-1"_s}));
    }

    void MinusAloneIsAsGoodAsNoDays()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        Type(&screen.Days(), u"-"_s);
        screen.Tick(screen.Validity());
        screen.Save();
        QCOMPARE(screen.PostedValues().value(3), u"ORG_DDYXQ_TS="_s);
        screen.Tick(screen.Validity());
        QCOMPARE(screen.Days().text(), u"6"_s);
    }

    void ZeroDaysArePossible()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        Type(&screen.Days(), u"0"_s);
        screen.Save();
        QCOMPARE(screen.PostedValues().value(3), u"ORG_DDYXQ_TS=0"_s);
    }

    void DaysTakeFourDigitsAndNothingElse_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("days");
        QTest::newRow("huge") << u"99999999999999999999"_s << u"9999"_s;
        QTest::newRow("letters") << u"3a0天"_s << u"30"_s;
        QTest::newRow("fraction") << u"1.5"_s << u"15"_s;
        QTest::newRow("minus in front") << u"-30"_s << u"-30"_s;
        QTest::newRow("minus behind") << u"3-0"_s << u"30"_s;
    }
    void DaysTakeFourDigitsAndNothingElse()
    {
        QFETCH(QString, typed);
        QFETCH(QString, days);
        Screen screen;
        screen.Load();
        screen.Days().setFocus();
        screen.Days().selectAll();
        for (const QChar character : typed)
            QTest::sendKeyEvent(QTest::Click, &screen.Days(), Qt::Key_unknown, QString(character),
                                Qt::NoModifier);
        QCOMPARE(screen.Days().text(), days);
    }

    void LettersPastedIntoTheDaysAreNotTaken()
    {
        Screen screen;
        screen.Load();
        screen.Days().selectAll();
        QApplication::clipboard()->setText(u"三十"_s);
        screen.Days().paste();
        QVERIFY(!screen.Days().text().contains(u'三'));
    }

    void DaysAreLookedAtBeforeTheSuperior()
    {
        Screen screen;
        screen.Load(1);
        screen.Tick(screen.Approval());
        screen.Tick(screen.Validity());
        Type(&screen.Days(), u"-1"_s);
        screen.Save();
        Type(&screen.Days(), u"1"_s);
        screen.Save();
        QCOMPARE(screen.Boxes(), QStringList({DaysBelowZero, NeedsSuperior}));
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void AnswerIsTold_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<QString>("state");
        QTest::newRow("stored") << u"1"_s << QStringList{Stored} << u"已设置"_s;
        QTest::newRow("has rules")
            << u"-1"_s << QStringList{u"Error|错误|该机构已存在交易规则！|Ok"_s} << u"未设置"_s;
        QTest::newRow("failed") << u"0"_s << QStringList{u"Error|错误|设置失败！|Ok"_s}
                                << u"未设置"_s;
        QTest::newRow("unknown") << u"-2"_s << QStringList{} << u"未设置"_s;
    }
    void AnswerIsTold()
    {
        QFETCH(QString, code);
        QFETCH(QStringList, boxes);
        QFETCH(QString, state);
        Screen screen;
        screen.OnSave().Code(code);
        screen.Load(1);
        screen.Tick(screen.Validity());
        screen.Save();
        QCOMPARE(screen.Boxes(), boxes);
        QCOMPARE(screen.Label(u"lbOrgRule"_s), state);
        QVERIFY(screen.Validity().isChecked());
        QCOMPARE(screen.Days().text(), u"6"_s);
    }

    void SaveActionIsDisabledWhileItsPostRuns()
    {
        Screen screen;
        screen.OnSave().Code(u"1"_s);
        screen.Load();
        bool enabled = true;
        connect(&screen.server, &ScriptedServer::RequestArrived, &screen.form,
                [&] { enabled = screen.Enabled(u"ActSave"_s); });
        screen.Save();
        QVERIFY(!enabled);
        QVERIFY(screen.Enabled(u"ActSave"_s));
    }

    void BrokenSaveLeavesTheControlsAsEdited()
    {
        Screen screen;
        screen.OnSave().Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s);
        screen.Load();
        Type(&screen.Days(), u"12"_s);
        screen.Save();
        QVERIFY(screen.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QCOMPARE(screen.Days().text(), u"12"_s);
        QVERIFY(screen.Enabled(u"ActSave"_s));
    }

    void CloseClosesTheScreen()
    {
        Screen screen;
        Trigger(&screen.form, u"ActClose"_s);
        QVERIFY(!screen.form.isVisible());
    }
};

QTEST_MAIN(OrgRuleSetTest)
#include "OrgRuleSetTest.moc"
