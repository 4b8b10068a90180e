#include "screens/UniRuleConfigure.h"

#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "screens/Pickers.h"
#include "ui_UniRuleConfigure.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

struct TUnionRule
{
    QStringView code;
    QStringView name;
    QStringView valueType; ///< "B": "1" or "0"; "S": a text
};

constexpr TUnionRule AuditFlag{u"UNI_JTCGDSH", u"集团审核启用标志", u"B"};
constexpr TUnionRule AuditOrg{u"UNI_JTCGDSH_ORGID", u"集团审核机构ID", u"S"};

constexpr ResultMessage SaveMessages[]{
    {u"0", TBoxIcon::Error, u"设置失败！", u"错误"},
};

int FindRule(const ClientDataSet &rules, const TUnionRule &rule)
{
    return rules.IsEmpty() ? -1 : rules.Find(u"RULE_CODE", {rule.code.toString()});
}

/// Empty for a rule that the group has not.
QString RuleValue(const ClientDataSet &rules, const TUnionRule &rule)
{
    return rules.TextAt(FindRule(rules, rule), u"RULE_VALUE");
}

Wire::NamedValues PostedRule(const QString &unionId, const TUnionRule &rule, const QString &value)
{
    return {
        {u"UNION_ID"_s, unionId},
        {u"RULE_CODE"_s, rule.code.toString()},
        {u"RULE_NAME"_s, rule.name.toString()},
        {u"RULE_VALUE"_s, value},
        {u"VALUE_TYPE"_s, rule.valueType.toString()},
        {u"ENABLE_FLAG"_s, u"1"_s},
        {u"REMARK"_s, QString()},
        {u"LAST_OPERATE"_s, u"1"_s},
        {u"LAST_USER"_s, RunParam().UserName},
    };
}

} // namespace

QString UniRuleSql::Rules(const QString &unionId)
{
    return u"SELECT * FROM UNI_Union_RULE WHERE Union_ID="_s + Quoted(unionId);
}

QString UniRuleSql::OrgName(const QString &orgId)
{
    return u"SELECT ORG_NAME FROM BAS_ORG WHERE ORG_ID="_s + Quoted(orgId);
}

QString UniRuleSql::Members(const QString &unionId)
{
    return u" SELECT    A.*   FROM UNI_UNION C,    UNI_ORG B,    BAS_ORG A  WHERE C.UNION_ID="_s +
           Quoted(unionId) +
           u"   AND C.UNION_ID=B.UNION_ID    AND B.ORG_ID=A.ORG_ID    AND B.LAST_OPERATE <> 'D' "_s;
}

TFrmUniRuleConfigure::TFrmUniRuleConfigure(QWidget *owner, const QString &unionId)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniRuleConfigure>())
    , unionId_(unionId)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnClose);

    Handle(ui_->JTCGDSH_FLAG, &QCheckBox::toggled, &TFrmUniRuleConfigure::JTCGDSH_FLAGClick);
    Handle(ui_->UNI_JTCGDSH_Org, &ButtonEdit::ButtonClicked,
           &TFrmUniRuleConfigure::UNI_JTCGDSH_OrgButtonClick);
    Handle(ui_->btnSave, &QPushButton::clicked, &TFrmUniRuleConfigure::btnSaveClick);
    Handle(ui_->BtnOk, &QPushButton::clicked, &TFrmUniRuleConfigure::BtnOkClick);
    Handle(ui_->BtnClose, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
}

TFrmUniRuleConfigure::~TFrmUniRuleConfigure() = default;

void TFrmUniRuleConfigure::FormShow()
{
    ui_->JTCGDSH_FLAG->setFocus();
    QueryAll(UniRuleSql::Rules(unionId_), cdsUniRule, TQueryType::Detail);
    const QString auditOrg = RuleValue(cdsUniRule, AuditOrg);
    ui_->UNI_JTCGDSH_Org->SetChoice(auditOrg, {});
    ui_->JTCGDSH_FLAG->setChecked(RuleValue(cdsUniRule, AuditFlag) == u"1");
    SetEnabledByRule(ui_->btnSave, false);
    if (auditOrg.isEmpty())
        return;
    ClientDataSet org;
    QueryAll(UniRuleSql::OrgName(auditOrg), org, TQueryType::Detail);
    ui_->UNI_JTCGDSH_Org->SetChoice(auditOrg, org.FieldText(u"ORG_NAME"));
}

void TFrmUniRuleConfigure::JTCGDSH_FLAGClick()
{
    SetEnabledByRule(ui_->UNI_JTCGDSH_Org, ui_->JTCGDSH_FLAG->isChecked());
    SetEnabledByRule(ui_->btnSave, true);
}

void TFrmUniRuleConfigure::UNI_JTCGDSH_OrgButtonClick()
{
    ButtonEdit &edit = *ui_->UNI_JTCGDSH_Org;
    const QString before = edit.ChosenValue();
    // Two organisations may bear one name: the id tells whether there is something to apply.
    if (PickOrg(this, UniRuleSql::Members(unionId_), edit) && edit.ChosenValue() != before)
        SetEnabledByRule(ui_->btnSave, true);
}

void TFrmUniRuleConfigure::btnSaveClick()
{
    const DisableWhile running(ui_->btnSave);
    Save();
    SetEnabledByRule(ui_->btnSave, false);
}

void TFrmUniRuleConfigure::BtnOkClick()
{
    const DisableWhile running(ui_->BtnOk);
    Save();
    SetModalResult(TModalResult::Ok);
}

void TFrmUniRuleConfigure::Save()
{
    if (ui_->JTCGDSH_FLAG->isChecked() && ui_->UNI_JTCGDSH_Org->ChosenValue().isEmpty())
        return InfoBox(u"请选择审核机构！"_s, u"提示"_s);
    const QList<Wire::NamedValues> rules = ChangedRules();
    if (rules.isEmpty())
        return;
    const QString code =
        PostRows(u"com.business.admin.RuleManager"_s, u"insertUpdateUnionRule"_s, rules);
    ShowResultMessage(code, SaveMessages);
    if (code == u"1")
        StoreInTable(rules);
}

/// Switching off keeps the audit organisation on the server; a group that never had the rule gets
/// none by it.
QList<Wire::NamedValues> TFrmUniRuleConfigure::ChangedRules() const
{
    if (ui_->JTCGDSH_FLAG->isChecked())
        return {PostedRule(unionId_, AuditFlag, u"1"_s),
                PostedRule(unionId_, AuditOrg, ui_->UNI_JTCGDSH_Org->ChosenValue())};
    if (FindRule(cdsUniRule, AuditFlag) >= 0)
        return {PostedRule(unionId_, AuditFlag, u"0"_s)};
    return {};
}

void TFrmUniRuleConfigure::StoreInTable(const QList<Wire::NamedValues> &posted)
{
    for (const Wire::NamedValues &rule : posted) {
        const QString &code = rule.at(1).second; // RULE_CODE
        if (!cdsUniRule.IsEmpty() && cdsUniRule.Locate(u"RULE_CODE", {code}))
            EditRow(cdsUniRule, rule);
        else
            AppendRow(cdsUniRule, rule);
    }
}

} // namespace Qel
