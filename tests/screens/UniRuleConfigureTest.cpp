#include "screens/UniRuleConfigure.h"

#include "controls/ButtonEdit.h"
#include "controls/DataGrid.h"
#include "screens/ScreenFixture.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QStringList RuleColumns{u"UNION_ID"_s,   u"RULE_CODE"_s,    u"RULE_NAME"_s,
                              u"RULE_VALUE"_s, u"VALUE_TYPE"_s,   u"ENABLE_FLAG"_s,
                              u"REMARK"_s,     u"LAST_OPERATE"_s, u"LAST_USER"_s};

QStringList Rule(const QString &code, const QString &value)
{
    return {u"10"_s, code, u""_s, value, u"S"_s, u"1"_s, u""_s, u"1"_s, u"李强"_s};
}

RowSet NoRules()
{
    return Rows(RuleColumns, {});
}

RowSet Audit(const QString &flag, const QString &orgId)
{
    return Rows(RuleColumns, {Rule(u"UNI_OTHER"_s, u"1"_s), Rule(u"UNI_JTCGDSH_ORGID"_s, orgId),
                              Rule(u"UNI_JTCGDSH"_s, flag)});
}

RowSet FlagOnly(const QString &flag)
{
    return Rows(RuleColumns, {Rule(u"UNI_JTCGDSH"_s, flag)});
}

/// The dialog for group 10, shown modally while a visit lasts. 501 is 市第一医院; the picker
/// offers 502, 市第二医院, and 501.
class Dialog : public ScreenFixture
{
public:
    explicit Dialog(const RowSet &rules)
    {
        server.OnQuery(u"UNI_Union_RULE"_s).Answer(rules);
        server.OnQueryExact(UniRuleSql::OrgName(u"501"_s))
            .Answer(Rows({u"ORG_NAME"_s}, {{u"市第一医院"_s}}));
        const auto org = [](const QString &id, const QString &name) {
            return QStringList{id, u"H"_s + id, name, u""_s, u""_s, u""_s, u"4"_s};
        };
        server.OnQuery(u"FROM UNI_UNION C"_s)
            .Answer(Rows({u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s,
                          u"ORG_NAME_PY"_s, u"ORG_NAME_WB"_s, u"ORG_TYPE"_s},
                         {org(u"502"_s, u"市第二医院"_s), org(u"501"_s, u"市第一医院"_s)}));
    }

    TModalResult Show(const std::function<void()> &visit)
    {
        TFrmUniRuleConfigure form(nullptr, u"10"_s);
        form_ = &form;
        return ShowModally(form, [&visit](QWidget *) { visit(); });
    }

    QWidget &Form() { return *form_; }
    QCheckBox &Flag() { return *Child<QCheckBox>(form_, u"JTCGDSH_FLAG"_s); }
    ButtonEdit &Org() { return *Child<ButtonEdit>(form_, u"UNI_JTCGDSH_Org"_s); }
    void Press(const QString &button) { Click(form_, button); }
    void Tick() { Test::Press(&Flag(), Qt::Key_Space); }
    bool ApplyEnabled() { return Child<QPushButton>(form_, u"btnSave"_s)->isEnabled(); }

    /// Chooses the picker's row; -1 cancels it.
    void Choose(int row)
    {
        ModalVisitor picker([row](QWidget *orgSelect) {
            if (row < 0)
                return Click(orgSelect, u"BtnCancel"_s);
            Click(orgSelect, u"BtnQuery"_s);
            Child<DataGrid>(orgSelect, u"GridQueryView"_s)->DataSet()->SetRecNo(row);
            Click(orgSelect, u"BtnSelect"_s);
        });
        Org().PressButton(0);
    }
    QStringList PostedRows(int post) { return RowTexts(server.Posts().value(post).rows); }
    ScriptedServer::Script &OnSave()
    {
        return server.OnPost(u"com.business.admin.RuleManager"_s, u"insertUpdateUnionRule"_s);
    }

private:
    QPointer<QWidget> form_;
};

const QString ChooseOrg = u"Information|提示|请选择审核机构！|Ok"_s;
const QString NotSet = u"Error|错误|设置失败！|Ok"_s;

} // namespace

class UniRuleConfigureTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(UniRuleSql::Rules(u"1'0"_s), Expected(u"rules"_s));
        QCOMPARE(UniRuleSql::OrgName(u"5'1"_s), Expected(u"rule.orgname"_s));
        QCOMPARE(UniRuleSql::Members(u"1'0"_s), Expected(u"rule.members"_s));
    }

    void CaptionsAreExact()
    {
        Dialog dialog(NoRules());
        dialog.Show([&] {
            QCOMPARE(dialog.Form().windowTitle(), u"集团项目规则设置"_s);
            QCOMPARE(Child<QGroupBox>(&dialog.Form(), u"UNI_JTCGDSH"_s)->title(),
                     u"采购单集团审核"_s);
            QCOMPARE(dialog.Flag().text(), u"启用审核机构："_s);
            QCOMPARE(dialog.Org().Buttons(), QStringList{u"选择"_s});
            QCOMPARE(Caption(dialog.Form(), u"BtnOk"_s), u"确认"_s);
            QCOMPARE(Caption(dialog.Form(), u"BtnClose"_s), u"取消"_s);
            QCOMPARE(Caption(dialog.Form(), u"btnSave"_s), u"应用(&A)"_s);
        });
    }

    void OnlyTheAuditTabIsThere()
    {
        Dialog dialog(NoRules());
        dialog.Show([&] {
            const auto *tabs = dialog.Form().findChild<QTabWidget *>();
            QVERIFY(tabs);
            QCOMPARE(tabs->count(), 1);
            QCOMPARE(tabs->tabText(0), u"采购审核"_s);
            QCOMPARE(tabs->widget(0)->objectName(), u"cxTabSheet1"_s);
        });
    }

    void ExplanationIsWrappedAndShownWhole()
    {
        Dialog dialog(NoRules());
        dialog.Show([&] {
            const auto *label = Child<QLabel>(&dialog.Form(), u"lbJTCGDSH"_s);
            QCOMPARE(label->text(), u"启用采购单集团审核：指本集团内所有买方机构所做的采购单必须经"
                                    "过指定的集团审核机构审核后，方可生成订单。"_s);
            QVERIFY(label->height() >= label->heightForWidth(label->width()));
            QVERIFY(label->height() >= 2 * label->fontMetrics().height());
        });
    }

    void GroupWithoutRulesShowsAClearBoxAndSavesNothing()
    {
        Dialog dialog(NoRules());
        const TModalResult result = dialog.Show([&] {
            QCOMPARE(dialog.server.Statements(), QStringList{UniRuleSql::Rules(u"10"_s)});
            QCOMPARE(dialog.server.LastQuery().queryType, 1);
            QCOMPARE(dialog.server.LastQuery().page, 0);
            QVERIFY(!dialog.Flag().isChecked());
            QVERIFY(!dialog.Org().isEnabled());
            QVERIFY(dialog.Org().text().isEmpty());
            QVERIFY(!dialog.ApplyEnabled());
            QCOMPARE(dialog.Form().focusWidget(), &dialog.Flag());
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(result, TModalResult::Ok);
        QVERIFY(dialog.server.Posts().isEmpty());
        QVERIFY(dialog.Boxes().isEmpty());
    }

    void RulesOfTheGroupAreShown()
    {
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.Show([&] {
            QCOMPARE(dialog.server.Statements(),
                     QStringList({UniRuleSql::Rules(u"10"_s), UniRuleSql::OrgName(u"501"_s)}));
            QVERIFY(dialog.Flag().isChecked());
            QVERIFY(dialog.Org().isEnabled());
            QCOMPARE(dialog.Org().text(), u"市第一医院"_s);
            QVERIFY(!dialog.ApplyEnabled());
        });
    }

    void OnlyTheValueOneTicksTheBox_data()
    {
        QTest::addColumn<QString>("value");
        for (const char *value : {"0", "", "Y", "2"})
            QTest::newRow(value) << QString::fromLatin1(value);
    }
    void OnlyTheValueOneTicksTheBox()
    {
        QFETCH(QString, value);
        Dialog dialog(Audit(value, u"501"_s));
        dialog.Show([&] {
            QVERIFY(!dialog.Flag().isChecked());
            QVERIFY(!dialog.Org().isEnabled());
            QCOMPARE(dialog.Org().text(), u"市第一医院"_s); // kept for when it is switched on
        });
    }

    void EmptyAuditOrganisationShowsNoNameAndIssuesNoQuery()
    {
        Dialog dialog(Audit(u"1"_s, u""_s));
        dialog.Show([&] {
            QCOMPARE(dialog.server.Queries().size(), 1);
            QVERIFY(dialog.Org().text().isEmpty());
            QVERIFY(dialog.Flag().isChecked());
        });
    }

    void AuditOrganisationIsEnabledExactlyWhenTicked()
    {
        Dialog dialog(NoRules());
        dialog.Show([&] {
            dialog.Tick();
            QVERIFY(dialog.Org().isEnabled());
            QVERIFY(dialog.ApplyEnabled());
            dialog.Tick();
            QVERIFY(!dialog.Org().isEnabled());
            QVERIFY(dialog.ApplyEnabled());
        });
    }

    void PickerSearchesTheShownNameAmongTheMembersOfTheGroup()
    {
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.Show([&] {
            ModalVisitor picker([&](QWidget *orgSelect) {
                QCOMPARE(Child<QLineEdit>(orgSelect, u"edOrg"_s)->text(), u"市第一医院"_s);
                const QString sql = dialog.server.LastQuery().sql; // asked for at once
                QVERIFY(sql.contains(u"FROM ("_s + UniRuleSql::Members(u"10"_s) + u") A"_s));
                QVERIFY(sql.contains(u"like '%市第一医院%'"_s));
                Click(orgSelect, u"BtnCancel"_s);
            });
            dialog.Org().PressButton(0);
            QCOMPARE(dialog.Org().text(), u"市第一医院"_s);
            QVERIFY(!dialog.ApplyEnabled());
        });
    }

    void AnotherOrganisationEnablesApplyAndTheSameOneDoesNot()
    {
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.Show([&] {
            dialog.Choose(1);
            QCOMPARE(dialog.Org().text(), u"市第一医院"_s);
            QVERIFY(!dialog.ApplyEnabled());
            dialog.Choose(0);
            QCOMPARE(dialog.Org().text(), u"市第二医院"_s);
            QVERIFY(dialog.ApplyEnabled());
        });
    }

    void ApplyPostsFlagAndOrganisationAndStaysOpen()
    {
        Dialog dialog(NoRules());
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Tick();
            dialog.Choose(0);
            dialog.Press(u"btnSave"_s);
            QVERIFY(dialog.Form().isVisible());
            QVERIFY(!dialog.ApplyEnabled());
        });
        QCOMPARE(dialog.server.Posts().size(), 1);
        QCOMPARE(dialog.PostedRows(0),
                 QStringList({Expected(u"rule.flag.on"_s), Expected(u"rule.org.502"_s)}));
        QVERIFY(dialog.Boxes().isEmpty());
    }

    void OkPostsBothRulesAlsoUnchanged()
    {
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.OnSave().Code(u"1"_s);
        QCOMPARE(dialog.Show([&] { dialog.Press(u"BtnOk"_s); }), TModalResult::Ok);
        QCOMPARE(dialog.PostedRows(0),
                 QStringList({Expected(u"rule.flag.on"_s), Expected(u"rule.org.501"_s)}));
    }

    void SwitchingTheAuditOffSendsOnlyTheFlag()
    {
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Tick();
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.PostedRows(0), QStringList{Expected(u"rule.flag.off"_s)});
    }

    void UntickedWithoutAFlagRowSendsNothing()
    {
        Dialog dialog(Rows(RuleColumns, {Rule(u"UNI_JTCGDSH_ORGID"_s, u"501"_s)}));
        dialog.Show([&] {
            dialog.Tick();
            dialog.Tick();
            dialog.Press(u"btnSave"_s);
            QVERIFY(!dialog.ApplyEnabled());
        });
        QVERIFY(dialog.server.Posts().isEmpty());
        QVERIFY(dialog.Boxes().isEmpty());
    }

    void AnAuditThatWasJustAppliedCanBeSwitchedOffAgain()
    {
        Dialog dialog(NoRules());
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Tick();
            dialog.Choose(1);
            dialog.Press(u"btnSave"_s);
            dialog.Press(u"JTCGDSH_FLAG"_s);
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.PostedRows(0),
                 QStringList({Expected(u"rule.flag.on"_s), Expected(u"rule.org.501"_s)}));
        QCOMPARE(dialog.PostedRows(1), QStringList{Expected(u"rule.flag.off"_s)});
    }

    void AnAuditThatWasRefusedIsNotTakenForStored()
    {
        Dialog dialog(NoRules());
        dialog.OnSave().Code(u"0"_s);
        dialog.Show([&] {
            dialog.Tick();
            dialog.Choose(1);
            dialog.Press(u"btnSave"_s);
            dialog.Tick();
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.server.Posts().size(), 1);
    }

    void ApplyDisablesItselfWhateverTheOutcome_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QStringList>("boxes");
        QTest::newRow("stored") << u"1"_s << QStringList();
        QTest::newRow("failure") << u"0"_s << QStringList{NotSet};
        QTest::newRow("another refusal") << u"-1"_s << QStringList();
        QTest::newRow("unknown code") << u"7"_s << QStringList();
    }
    void ApplyDisablesItselfWhateverTheOutcome()
    {
        QFETCH(QString, code);
        QFETCH(QStringList, boxes);
        Dialog dialog(FlagOnly(u"1"_s));
        dialog.OnSave().Code(code);
        dialog.Show([&] {
            dialog.Tick();
            QVERIFY(dialog.ApplyEnabled());
            dialog.Press(u"btnSave"_s);
            QVERIFY(!dialog.ApplyEnabled());
            QVERIFY(dialog.Form().isVisible());
            QVERIFY(dialog.Form().focusWidget());
            dialog.Tick();
            QVERIFY(dialog.ApplyEnabled());
        });
        QCOMPARE(dialog.Boxes(), boxes);
    }

    void TickedWithoutAnOrganisationApplyAsksForItAndSendsNothing()
    {
        Dialog dialog(NoRules());
        dialog.Show([&] {
            dialog.Tick();
            dialog.Press(u"btnSave"_s);
            QCOMPARE(dialog.Boxes(), QStringList{ChooseOrg});
            QVERIFY(dialog.Form().isVisible());
            QVERIFY(!dialog.ApplyEnabled());
        });
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void OkDeliberatelyClosesWithOkAlsoWithoutAnOrganisation()
    {
        Dialog dialog(NoRules());
        const TModalResult result = dialog.Show([&] {
            dialog.Tick();
            dialog.Press(u"BtnOk"_s);
            QVERIFY(!dialog.Form().isVisible());
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(dialog.Boxes(), QStringList{ChooseOrg});
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void OkDeliberatelyClosesWithOkAlsoAfterARefusedSave()
    {
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.OnSave().Code(u"0"_s);
        const TModalResult result = dialog.Show([&] {
            dialog.Press(u"BtnOk"_s);
            QVERIFY(!dialog.Form().isVisible());
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(dialog.Boxes(), QStringList{NotSet});
    }

    void ServerFailureLeavesTheDialogOpenAndUsable_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("confirm") << u"BtnOk"_s;
        QTest::newRow("apply") << u"btnSave"_s;
    }
    void ServerFailureLeavesTheDialogOpenAndUsable()
    {
        QFETCH(QString, button);
        Dialog dialog(Audit(u"1"_s, u"501"_s));
        dialog.OnSave().DatabaseDown().Times(1);
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Choose(0);
            dialog.Press(button);
            QCOMPARE(dialog.hook.Boxes().size(), 1);
            QVERIFY(dialog.hook.Boxes().first().text.contains(u"数据库不可用"_s));
            QVERIFY(dialog.Form().isVisible());
            QCOMPARE(dialog.Org().text(), u"市第二医院"_s);
            QVERIFY(dialog.ApplyEnabled());
            dialog.Press(button);
        });
        QCOMPARE(dialog.server.Posts().size(), 2);
        QCOMPARE(dialog.PostedRows(1),
                 QStringList({Expected(u"rule.flag.on"_s), Expected(u"rule.org.502"_s)}));
        QCOMPARE(dialog.hook.Boxes().size(), 1);
    }

    void NameQueryThatFailsDoesNotSwitchTheAuditOff()
    {
        Dialog dialog(Audit(u"1"_s, u"503"_s));
        dialog.server.OnQueryExact(UniRuleSql::OrgName(u"503"_s)).DatabaseDown();
        dialog.Show([&] {
            QCOMPARE(dialog.hook.Boxes().size(), 1);
            QVERIFY(dialog.Flag().isChecked());
            QVERIFY(dialog.Org().isEnabled());
            QVERIFY(!dialog.ApplyEnabled());
        });
    }

    void ButtonIsDisabledWhileItsPostRuns_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("confirm") << u"BtnOk"_s;
        QTest::newRow("apply") << u"btnSave"_s;
    }
    void ButtonIsDisabledWhileItsPostRuns()
    {
        QFETCH(QString, button);
        Dialog dialog(FlagOnly(u"1"_s));
        dialog.OnSave().Code(u"1"_s);
        bool enabled = true;
        dialog.Show([&] {
            dialog.Tick();
            auto *pressed = Child<QPushButton>(&dialog.Form(), button);
            connect(&dialog.server, &ScriptedServer::RequestArrived, pressed,
                    [&enabled, pressed] { enabled = pressed->isEnabled(); });
            dialog.Press(button);
        });
        QVERIFY(!enabled);
    }

    void CancelAndEscSaveNothing_data()
    {
        QTest::addColumn<bool>("esc");
        QTest::newRow("button") << false;
        QTest::newRow("Esc") << true;
    }
    void CancelAndEscSaveNothing()
    {
        QFETCH(bool, esc);
        Dialog dialog(FlagOnly(u"1"_s));
        const TModalResult result = dialog.Show([&] {
            dialog.Tick();
            if (esc)
                Test::Press(&dialog.Flag(), Qt::Key_Escape);
            else
                dialog.Press(u"BtnClose"_s);
            QVERIFY(!dialog.Form().isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(dialog.server.Posts().isEmpty());
        QVERIFY(dialog.Boxes().isEmpty());
    }
};

QTEST_MAIN(UniRuleConfigureTest)
#include "UniRuleConfigureTest.moc"
