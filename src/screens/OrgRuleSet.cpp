#include "screens/OrgRuleSet.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "ui_OrgRuleSet.h"

#include <QRegularExpressionValidator>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

// The room of list and rules at first.
constexpr int ListWidth = 600;
constexpr int RulesWidth = 520;

constexpr QStringView DefaultDays = u"6";

constexpr ResultMessage SaveMessages[]{
    {u"-1", TBoxIcon::Error, u"该机构已存在交易规则！", u"错误"},
    {u"0", TBoxIcon::Error, u"设置失败！", u"错误"},
    {u"1", TBoxIcon::Information, u"设置成功！", u"提示"},
};

int FindRule(const ClientDataSet &rules, const QString &code)
{
    return rules.IsEmpty() ? -1 : rules.Find(u"RULE_CODE", {code});
}

/// Empty for a rule that the organisation has not.
QString RuleValue(const ClientDataSet &rules, const QString &code)
{
    return rules.TextAt(FindRule(rules, code), u"RULE_VALUE");
}

QString NameOfOrg(const QString &orgId)
{
    if (orgId.isEmpty())
        return {};
    ClientDataSet org;
    QueryAll(OrgRuleSql::OrgName(orgId), org, TQueryType::Detail);
    return org.FieldText(u"ORG_NAME");
}

/// Sets a radio button, also back to a group in which none is chosen, which a click cannot do.
void SetChosen(QRadioButton &button, bool chosen)
{
    button.setAutoExclusive(false);
    button.setChecked(chosen);
    button.setAutoExclusive(true);
}

/// A minus that no digit follows is no number: as good as an empty field.
QString DaysIn(const QLineEdit &edit)
{
    const QString days = edit.text().trimmed();
    return days == u"-" ? QString() : days;
}

QString Flag(bool isOn)
{
    return isOn ? u"1"_s : u"0"_s;
}

struct Rule
{
    QString code;
    QString name;
    QString value;
    QString valueType; ///< "B": "1" or "0"; "S": a text
};

Wire::NamedValues PostedRule(const QString &orgId, const Rule &rule)
{
    return {
        {u"ORG_ID"_s, orgId},
        {u"RULE_CODE"_s, rule.code},
        {u"RULE_NAME"_s, rule.name},
        {u"RULE_VALUE"_s, rule.value},
        {u"VALUE_TYPE"_s, rule.valueType},
        {u"REMARK"_s, QString()},
        {u"ENABLE_FLAG"_s, u"1"_s},
        {u"LAST_OPERATE"_s, u"1"_s},
        {u"LAST_USER"_s, RunParam().UserName},
    };
}

} // namespace

QString OrgRuleSql::Organisations(const QString &text)
{
    return u"SELECT * FROM BAS_ORG WHERE ENABLE_FLAG= '1' and last_operate <> 'D' "_s +
           AndLike(u"ORG_CODE, ORG_NAME, ORG_ABBR,ORG_NAME_PY,ORG_NAME_WB"_s, text);
}

QString OrgRuleSql::Rules(const QString &orgId)
{
    return u"SELECT * FROM UNI_ORG_RULE WHERE ORG_ID="_s + Quoted(orgId);
}

QString OrgRuleSql::Superior(const QString &orgId)
{
    return u" SELECT A.PARENT_ORGID , B.ORG_NAME  FROM BAS_ORG_AFFILIATION A, "
           "       BAS_ORG B   WHERE A.ORG_ID="_s +
           Quoted(orgId) + u"   AND A.PARENT_ORGID=B.ORG_ID"_s;
}

QString OrgRuleSql::OrgName(const QString &orgId)
{
    return u" SELECT ORG_ID,ORG_NAME  FROM BAS_ORG  WHERE ORG_ID="_s + Quoted(orgId);
}

TFrmOrgRuleSet::TFrmOrgRuleSet(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmOrgRuleSet>())
{
    ui_->setupUi(this);
    ui_->splitter->setSizes({ListWidth, RulesWidth});
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->GridRuleView->SetDataSet(&cdsOrg);
    // A minus can be typed, so that it can be answered.
    ui_->ORG_DDYXQ_TS->setValidator(
        new QRegularExpressionValidator(QRegularExpression(u"-?[0-9]{0,4}"_s), this));

    Handle(ui_->ActQuery, &QAction::triggered, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->ActModify, &QAction::triggered, &TFrmOrgRuleSet::ActModifyExecute);
    Handle(ui_->ActGetOrg, &QAction::triggered, &TFrmOrgRuleSet::ActGetOrgExecute);
    Handle(ui_->ActSave, &QAction::triggered, &TFrmOrgRuleSet::ActSaveExecute);
    Handle(ui_->ActClose, &QAction::triggered, &TFrmOrgRuleSet::close);
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmOrgRuleSet::PageGuide1ChangePage);
    Handle(&cdsOrg, &ClientDataSet::Changed, &TFrmOrgRuleSet::UpdateActions);
    Handle(ui_->GridRuleView, &DataGrid::clicked, [this] { ui_->ActModify->trigger(); });
    Handle(ui_->GridRuleView, &DataGrid::RowActivated, [this] { ui_->ActModify->trigger(); });
    Handle(ui_->ORG_SJJGSH, &QCheckBox::clicked, &TFrmOrgRuleSet::ORG_SJJGSHClick);
    Handle(ui_->ORG_SJJGSH_ID, &ButtonEdit::ButtonClicked, [this] { ui_->ActGetOrg->trigger(); });
    for (QCheckBox *box : {ui_->ORG_DDYXQ, ui_->ORG_HASH_PRODUCT, ui_->ORG_HASH_ORG, ui_->ORG_LCML})
        Handle(box, &QCheckBox::clicked, &TFrmOrgRuleSet::ORG_DDYXQClick);
    HandleKey(ui_->edInfo, Qt::Key_Return, [this] { ui_->ActQuery->trigger(); });
}

TFrmOrgRuleSet::~TFrmOrgRuleSet() = default;

void TFrmOrgRuleSet::FormShow()
{
    UpdateActions();
    ui_->cxPageControl1->setCurrentIndex(0);
    ORG_SJJGSHClick();
    ui_->edInfo->setFocus();
}

void TFrmOrgRuleSet::UpdateActions()
{
    SetEnabledByRule(ui_->ActModify, !cdsOrg.IsEmpty());
}

void TFrmOrgRuleSet::PageGuide1ChangePage()
{
    {
        const DisableWhile running(ui_->ActQuery);
        QueryPage(OrgRuleSql::Organisations(ui_->edInfo->text()), cdsOrg, *ui_->PageGuide1);
    }
    FocusAfterQuery(!cdsOrg.IsEmpty(), ui_->GridRuleView, ui_->edInfo);
}

// --- The rules that hang together ----------------------------------------------------------------

/// Without approval there is no superior: the id goes with the name.
void TFrmOrgRuleSet::ORG_SJJGSHClick()
{
    const bool isOn = ui_->ORG_SJJGSH->isChecked();
    SetEnabledByRule(ui_->ActGetOrg, isOn);
    SetEnabledByRule(ui_->ORG_SJJGSH_ID, isOn);
    if (!isOn)
        ui_->ORG_SJJGSH_ID->ClearChoice();
}

void TFrmOrgRuleSet::ORG_DDYXQClick()
{
    const bool isOn = ui_->ORG_DDYXQ->isChecked();
    SetEnabledByRule(ui_->ORG_DDYXQ_TS, isOn);
    if (isOn && DaysIn(*ui_->ORG_DDYXQ_TS).isEmpty())
        ui_->ORG_DDYXQ_TS->setText(DefaultDays.toString());
}

// --- Loading -------------------------------------------------------------------------------------

/// Asks for everything before it changes anything: if a query fails, the panel still shows the
/// rules of the organisation that it names.
void TFrmOrgRuleSet::ActModifyExecute()
{
    const DisableWhile running(ui_->ActModify);
    const QString orgId = cdsOrg.FieldText(u"ORG_ID");
    ClientDataSet rules;
    QueryAll(OrgRuleSql::Rules(orgId), rules, TQueryType::Detail);
    // Written as ORG_SJJGSH_ID, read as ORG_SJJGSH_ORGID: the server files it under the other code.
    const QString superiorName = NameOfOrg(RuleValue(rules, u"ORG_SJJGSH_ORGID"_s));

    currentOrgId_ = orgId;
    ui_->lbOrgName->setText(cdsOrg.FieldText(u"ORG_NAME"));
    ShowRules(rules, superiorName);
}

void TFrmOrgRuleSet::ShowRules(const ClientDataSet &rules, const QString &superiorName)
{
    ui_->lbOrgRule->setText(rules.IsEmpty() ? u"未设置"_s : u"已设置"_s);
    ui_->ORG_SJJGSH->setChecked(RuleValue(rules, u"ORG_SJJGSH"_s) == u"1");
    ui_->ORG_SJJGSH_ID->SetChoice(RuleValue(rules, u"ORG_SJJGSH_ORGID"_s), superiorName);
    ui_->ORG_DDYXQ->setChecked(RuleValue(rules, u"ORG_DDYXQ"_s) == u"1");
    ui_->ORG_DDYXQ_TS->setText(RuleValue(rules, u"ORG_DDYXQ_TS"_s));
    const bool hasInvoiceRule = FindRule(rules, u"ORG_HPTX"_s) >= 0;
    const bool withInvoice = RuleValue(rules, u"ORG_HPTX"_s) == u"1";
    SetChosen(*ui_->rbHPTXAdd, withInvoice);
    SetChosen(*ui_->rbHPTXUnAdd, hasInvoiceRule && !withInvoice);
    ORG_SJJGSHClick();
    ORG_DDYXQClick();
}

void TFrmOrgRuleSet::ActGetOrgExecute()
{
    const DisableWhile running(ui_->ActGetOrg);
    ClientDataSet superior;
    QueryAll(OrgRuleSql::Superior(currentOrgId_), superior, TQueryType::Detail);
    if (superior.IsEmpty())
        return InfoBox(u"不存在上级审核机构！"_s, u"提示"_s);
    ui_->ORG_SJJGSH_ID->SetChoice(superior.FieldText(u"PARENT_ORGID"),
                                  superior.FieldText(u"ORG_NAME"));
}

// --- Saving --------------------------------------------------------------------------------------

void TFrmOrgRuleSet::ActSaveExecute()
{
    if (currentOrgId_.isEmpty())
        return InfoBox(u"请指定一个机构"_s, {});
    const DisableWhile running(ui_->ActSave);
    if (!CanSave())
        return;
    const QString code =
        PostRows(u"com.business.admin.RuleManager"_s, u"insertUpdateOrgRule"_s, PostedRules());
    if (code == u"1")
        ui_->lbOrgRule->setText(u"已设置"_s);
    ShowResultMessage(code, SaveMessages);
}

bool TFrmOrgRuleSet::CanSave()
{
    QString problem;
    if (ui_->ORG_DDYXQ->isChecked() && DaysIn(*ui_->ORG_DDYXQ_TS).toInt() < 0)
        problem = u"订单有效期天数不能小于零！"_s;
    else if (ui_->ORG_SJJGSH->isChecked() && ui_->ORG_SJJGSH_ID->ChosenValue().isEmpty())
        problem = u"上级审核机构不能为空！"_s;
    if (!problem.isEmpty())
        InfoBox(problem, u"提示"_s);
    return problem.isEmpty();
}

QList<Wire::NamedValues> TFrmOrgRuleSet::PostedRules() const
{
    const bool hasSuperior = ui_->ORG_SJJGSH->isChecked();
    QList<Rule> rules{{u"ORG_SJJGSH"_s, u"是否启用上级机构审核！"_s, Flag(hasSuperior), u"B"_s}};
    if (hasSuperior)
        rules.append(
            {u"ORG_SJJGSH_ID"_s, u"上级审核机构ID"_s, ui_->ORG_SJJGSH_ID->ChosenValue(), u"S"_s});
    rules.append(
        {u"ORG_DDYXQ"_s, ui_->ORG_DDYXQ->text(), Flag(ui_->ORG_DDYXQ->isChecked()), u"B"_s});
    rules.append({u"ORG_DDYXQ_TS"_s, ui_->lbDDYXQ_TS->text(), DaysIn(*ui_->ORG_DDYXQ_TS), u"S"_s});
    rules.append(
        {u"ORG_HPTX"_s, ui_->GRP_HPTX->title(), Flag(ui_->rbHPTXAdd->isChecked()), u"B"_s});

    QList<Wire::NamedValues> rows;
    for (const Rule &rule : rules)
        rows.append(PostedRule(currentOrgId_, rule));
    return rows;
}

} // namespace Qel
