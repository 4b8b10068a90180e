#include "screens/MrgOrgAffiliationEdit.h"

#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/DigitGuard.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/ResultMessages.h"
#include "frame/TreeCode.h"
#include "screens/Pickers.h"
#include "ui_MrgOrgAffiliationEdit.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr ResultMessage SaveMessages[]{
    {u"-2", TBoxIcon::Information, u"已存在该机构，不能保存！", u"提示"},
    {u"-1", TBoxIcon::Information, u"编码重复！", u"提示"},
    {u"0", TBoxIcon::Information, u"保存失败！", u"提示"},
};

} // namespace

QString AffiliationCode::Query(bool topLevel, const QString &parentOrgId)
{
    if (topLevel)
        return u" SELECT NVL(MAX(TREE_CODE)+1,'1') AS CODE  FROM BAS_ORG_AFFILIATION "
               " WHERE PARENT_ORGID IS NULL and enable_flag <>'D' "_s;
    return u" SELECT nvl(Max(TREE_CODE)+1,'01') AS CODE  FROM BAS_ORG_AFFILIATION "
           " WHERE PARENT_ORGID="_s +
           Quoted(parentOrgId) + u" and enable_flag <>'D' "_s;
}

QString AffiliationCode::Level(const QString &code)
{
    const qsizetype below = code.size() - TreeCode::TopLength;
    if (below < 0 || below % TreeCode::StepLength != 0 || code.size() > TreeCode::MaxLength)
        return u"0"_s;
    return QString::number(below / TreeCode::StepLength + 1);
}

TFrmMrgOrgAffiliationEdit::TFrmMrgOrgAffiliationEdit(QWidget *owner, ClientDataSet &list,
                                                     const TAffiliation &place)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmMrgOrgAffiliationEdit>())
    , list_(list)
    , place_(place)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnClose);

    Handle(ui_->BtnSave, &QPushButton::clicked, &TFrmMrgOrgAffiliationEdit::BtnSaveClick);
    Handle(ui_->BtnClose, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(new DigitGuard(ui_->edTREE_CODE), &DigitGuard::LeftWithIllegal,
           &TFrmMrgOrgAffiliationEdit::RejectIllegalCode);
    Handle(ui_->edOrgName, &ButtonEdit::ButtonClicked,
           &TFrmMrgOrgAffiliationEdit::PickOrganisation);
    HandleKey(ui_->edOrgName, Qt::Key_Return, &TFrmMrgOrgAffiliationEdit::PickOrganisation);
}

TFrmMrgOrgAffiliationEdit::~TFrmMrgOrgAffiliationEdit() = default;

void TFrmMrgOrgAffiliationEdit::FormShow()
{
    ui_->edParentCode->setText(place_.parentCode);
    ui_->edParentName->setText(place_.parentName);
    SetOwnCode(place_.code);
    if (place_.codeFixed) {
        ui_->edTREE_CODE->setReadOnly(true);
        ui_->edTREE_CODE->setFrame(false); // looks as the superior's code does
        ui_->edTREE_CODE->setFocusPolicy(Qt::ClickFocus);
    }
    ui_->edOrgName->SetChoice(place_.orgId, place_.orgName);
    ui_->edOrgName->setFocus();
    if (place_.mode == TAffiliation::Mode::Insert)
        ProposeCode();
}

void TFrmMrgOrgAffiliationEdit::SetOwnCode(const QString &code)
{
    place_.code = code;
    ui_->edTREE_CODE->setText(code);
}

void TFrmMrgOrgAffiliationEdit::ProposeCode()
{
    ClientDataSet next;
    DataModule().SoapCtrl().SQLQuery(AffiliationCode::Query(IsTopLevel(), place_.parentOrgId), 0, 0,
                                     next, TQueryType::Detail);
    SetOwnCode(TreeCode::Propose(IsTopLevel(), next.FieldText(u"CODE")));
}

/// The field gets back what the dialog had put there.
void TFrmMrgOrgAffiliationEdit::RejectIllegalCode()
{
    ui_->edTREE_CODE->setText(place_.code);
    WarningBox(u"编码中含有非法字符！"_s, u"警告"_s);
    ui_->edTREE_CODE->setFocus();
}

void TFrmMrgOrgAffiliationEdit::PickOrganisation()
{
    PickOrg(this, u"SELECT * FROM BAS_ORG WHERE LAST_OPERATE<>'D' "_s, *ui_->edOrgName,
            &place_.orgAbbr);
}

bool TFrmMrgOrgAffiliationEdit::InputIsComplete()
{
    const QString code = ui_->edTREE_CODE->text().trimmed();
    // A click on the button comes before the field's own check.
    if (!DigitGuard::IsDigits(code)) {
        RejectIllegalCode();
        return false;
    }
    QString missing;
    if (code.isEmpty())
        missing = u"请输入机构编码！"_s;
    else if (IsTopLevel() && code.size() != TreeCode::TopLength)
        missing = u"请输入 4 位编码！"_s;
    else if (!IsTopLevel() && code.size() != TreeCode::StepLength)
        missing = u"请输入 2 位编码！"_s;
    else if (ui_->edOrgName->ChosenValue().isEmpty())
        missing = u"请选择机构！"_s;
    if (!missing.isEmpty())
        InfoBox(missing, u"提示"_s);
    return missing.isEmpty();
}

void TFrmMrgOrgAffiliationEdit::BtnSaveClick()
{
    if (!InputIsComplete())
        return;
    const DisableWhile running(ui_->BtnSave);
    const QString ownCode = ui_->edTREE_CODE->text().trimmed();
    const QString code = place_.parentCode + ownCode;
    const QString result =
        PostRow(u"com.business.basedata.OrgAffiliationManager"_s, u"insertUpdateOrgAffiliation"_s,
                WithLastAndLogUser({
                    {u"ID"_s, place_.id},
                    {u"ORG_ID"_s, ui_->edOrgName->ChosenValue()},
                    {u"PARENT_ORGID"_s, place_.parentOrgId},
                    {u"TREE_CODE"_s, code},
                    {u"TREE_LEVEL"_s, AffiliationCode::Level(code)},
                }));
    ShowResultMessage(result, SaveMessages);
    if (result != u"1")
        return;
    place_.orgId = ui_->edOrgName->ChosenValue();
    place_.orgName = ui_->edOrgName->text();
    place_.code = ownCode;
    if (place_.mode == TAffiliation::Mode::Modify)
        return SetModalResult(TModalResult::Ok);
    AppendToList();
    ui_->edOrgName->ClearChoice();
    ui_->edOrgName->setFocus();
    ProposeCode();
}

void TFrmMrgOrgAffiliationEdit::AppendToList()
{
    const QString code = place_.parentCode + place_.code;
    AppendRow(list_, {
                         {u"ID"_s, PostedValue(u"ID")},
                         {u"ORG_ID"_s, place_.orgId},
                         {u"PARENT_ORGID"_s, place_.parentOrgId},
                         {u"TREE_CODE"_s, code},
                         {u"TREE_LEVEL"_s, AffiliationCode::Level(code)},
                         {u"ORG_NAME"_s, place_.orgName},
                         {u"ORG_ABBR"_s, place_.orgAbbr},
                     });
}

} // namespace Qel
