#include "screens/UniUnionOrgEdit.h"

#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "screens/MemberTypes.h"
#include "ui_UniUnionOrgEdit.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

QStringList RolesOfCurrentRow(const ClientDataSet &rows)
{
    QStringList roles;
    for (const QStringView flag : RoleFlags)
        roles << rows.FieldText(flag);
    return roles;
}

} // namespace

TMemberHandOver MemberOfCurrentRow(const QString &unionId, const ClientDataSet &members)
{
    const auto field = [&members](QStringView name) { return members.FieldText(name); };
    return {
        .unionId = unionId,
        .orgId = field(u"ORG_ID"),
        .orgCode = field(u"ORG_CODE"),
        .orgName = field(u"ORG_NAME"),
        .orgTypeId = field(u"ORG_TYPE_ID"),
        .orgTypeName = field(u"ORG_TYPE_NAME"),
        .roles = RolesOfCurrentRow(members),
        .remark = field(u"REMARK"),
    };
}

TFrmUniUnionOrgEdit::TFrmUniUnionOrgEdit(QWidget *owner, const TMemberHandOver &handOver)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniUnionOrgEdit>())
    , handOver_(handOver)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnClose);

    Handle(ui_->BtnSave, &QPushButton::clicked, &TFrmUniUnionOrgEdit::BtnSaveClick);
    Handle(ui_->BtnClose, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->ed_orgtype, &ImageComboBox::activated, &TFrmUniUnionOrgEdit::ed_orgtypeCloseUp);
}

TFrmUniUnionOrgEdit::~TFrmUniUnionOrgEdit() = default;

void TFrmUniUnionOrgEdit::FormShow()
{
    ui_->edOrgName->setText(handOver_.orgName);
    ui_->edOrgName->setToolTip(handOver_.orgCode);
    ui_->edOrgName->setReadOnly(true);
    ui_->edOrgName->SetButtonEnabled(0, false);
    ShowRoles(handOver_.roles, handOver_.remark);
    // What the member has, even where that type is no longer among the group's.
    ui_->ed_orgtype->setPlaceholderText(handOver_.orgTypeName);
    ui_->ed_orgtype->setFocus();

    LoadMemberTypes(handOver_.unionId, cdsOrgType);
    ui_->ed_orgtype->SetItems(MemberTypeChoices(cdsOrgType));
    ui_->ed_orgtype->SetEditValue(handOver_.orgTypeId);
}

void TFrmUniUnionOrgEdit::ed_orgtypeCloseUp()
{
    if (cdsOrgType.Locate(u"ORG_TYPE_ID", {ui_->ed_orgtype->EditValue()}))
        ShowRoles(RolesOfCurrentRow(cdsOrgType), cdsOrgType.FieldText(u"REMARK"));
}

void TFrmUniUnionOrgEdit::ShowRoles(const QStringList &roles, const QString &remark)
{
    qsizetype role = 0;
    for (CheckBox *box : {ui_->ckBuy, ui_->ckSale, ui_->ckSend, ui_->ckAdmin})
        box->setChecked(roles.value(role++) == u"1");
    ui_->memoRemark->setPlainText(remark);
}

void TFrmUniUnionOrgEdit::BtnSaveClick()
{
    const DisableWhile running(ui_->BtnSave);
    const QString code =
        PostRow(u"com.business.admin.UniUnionOrg"_s, u"insert_update_UniUnionOrg"_s,
                WithLastAndLogUser({{u"UNION_ID"_s, handOver_.unionId},
                                    {u"ORG_ID"_s, handOver_.orgId},
                                    {u"ORG_TYPE_ID"_s, ui_->ed_orgtype->EditValue()}}));
    if (code != u"1")
        return InfoBox(u"保存失败！"_s, u"提示"_s);
    SetModalResult(TModalResult::Ok);
}

} // namespace Qel
