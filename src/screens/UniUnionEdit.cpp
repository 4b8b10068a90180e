#include "screens/UniUnionEdit.h"

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
#include "ui_UniUnionEdit.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr ResultMessage SaveMessages[]{
    {u"-2", TBoxIcon::Information, u"机构已存在！", u"提示"},
    {u"-1", TBoxIcon::Information, u"集团编码重复！", u"提示"},
    {u"0", TBoxIcon::Information, u"保存失败！", u"提示"},
};

} // namespace

QString UniUnionCode::Query(bool topLevel, const QString &parentId)
{
    // Both look at ENABLE_FLAG, not at LAST_OPERATE: a code is free again when its group is
    // disabled.
    if (topLevel)
        return u" SELECT NVL(MAX(Union_CODE)+1,'1') AS CODE  FROM Uni_Union "
               " WHERE PARENT_ID IS NULL    AND ENABLE_FLAG <> 'D'"_s;
    return u" SELECT nvl(Max(Union_CODE)+1,'01') AS CODE  FROM Uni_Union  WHERE PARENT_ID="_s +
           Quoted(parentId) + u"   AND ENABLE_FLAG <> 'D'"_s;
}

TUnionHandOver ChildOfCurrentRow(const ClientDataSet &unions)
{
    TUnionHandOver handOver;
    handOver.parentId = unions.FieldText(u"Union_ID");
    handOver.parentCode = unions.FieldText(u"Union_CODE");
    handOver.parentName = unions.FieldText(u"Union_NAME");
    return handOver;
}

TUnionHandOver UnionOfCurrentRow(const ClientDataSet &unions)
{
    const auto field = [&unions](QStringView name) { return unions.FieldText(name); };
    const auto [parentCode, ownCode] = TreeCode::Split(field(u"Union_CODE"));
    const QString parentId = field(u"PARENT_ID");
    const int parent = parentCode.isEmpty() ? -1 : unions.Find(u"UNION_ID", {parentId});
    return {
        .mode = TUnionHandOver::Mode::Modify,
        .unionId = field(u"Union_ID"),
        .parentId = parentId,
        .parentCode = parentCode,
        .parentName = parent < 0 ? QString() : unions.TextAt(parent, u"Union_NAME"),
        .code = ownCode,
        .name = field(u"Union_NAME"),
        .type = field(u"Union_TYPE"),
        .regionId = field(u"REGION_ID"),
        .regionName = field(u"REGION_NAME"),
        .masterOrgId = field(u"MASTER_ORGID"),
        .masterOrgName = field(u"MASTER_ORGNAME"),
        .remark = field(u"REMARK"),
    };
}

TFrmUniUnionEdit::TFrmUniUnionEdit(QWidget *owner, ClientDataSet &unions,
                                   const TUnionHandOver &handOver)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniUnionEdit>())
    , unions_(unions)
    , handOver_(handOver)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnClose);

    Handle(ui_->BtnSave, &QPushButton::clicked, &TFrmUniUnionEdit::BtnSaveClick);
    Handle(ui_->BtnClose, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(new DigitGuard(ui_->edUnion_CODE), &DigitGuard::LeftWithIllegal,
           [] { WarningBox(u"编码中含有非法字符！"_s, u"警告"_s); });
    Handle(ui_->edRegionName, &ButtonEdit::ButtonClicked,
           [this] { PickRegion(this, *ui_->edRegionName); });
    Handle(ui_->edMasterOrgName, &ButtonEdit::ButtonClicked,
           [this] { PickOrg(this, u"SELECT * FROM BAS_ORG "_s, *ui_->edMasterOrgName); });
}

TFrmUniUnionEdit::~TFrmUniUnionEdit() = default;

void TFrmUniUnionEdit::FormShow()
{
    ui_->edParentCode->setText(handOver_.parentCode);
    ui_->edParentName->setText(handOver_.parentName);
    ui_->edUnion_CODE->setMaxLength(IsTopLevel() ? TreeCode::TopLength : TreeCode::StepLength);
    ui_->edUnion_CODE->setText(handOver_.code);
    ui_->edUnion_NAME->setText(handOver_.name);
    ui_->cbUnion_TYPE->SetEditValue(handOver_.type);
    ui_->edRegionName->SetChoice(handOver_.regionId, handOver_.regionName);
    ui_->edMasterOrgName->SetChoice(handOver_.masterOrgId, handOver_.masterOrgName);
    ui_->cxREMARK->setPlainText(handOver_.remark);
    ui_->edUnion_CODE->setFocus();
    if (handOver_.mode == TUnionHandOver::Mode::Modify)
        return;
    ClientDataSet next;
    DataModule().SoapCtrl().SQLQuery(UniUnionCode::Query(IsTopLevel(), handOver_.parentId), 0, 0,
                                     next, TQueryType::Detail);
    ui_->edUnion_CODE->setText(TreeCode::Propose(IsTopLevel(), next.FieldText(u"CODE")));
    ui_->edUnion_NAME->setFocus();
}

bool TFrmUniUnionEdit::InputIsComplete()
{
    const QString code = ui_->edUnion_CODE->text().trimmed();
    if (code.isEmpty()) {
        InfoBox(u"请输入集团编码！"_s, u"提示"_s);
        return false;
    }
    if (IsTopLevel() && code.size() != TreeCode::TopLength) {
        WarningBox(u"请输入 4 位集团编码！"_s, u"警告"_s);
        return false;
    }
    if (!IsTopLevel() && code.size() != TreeCode::StepLength) {
        WarningBox(u"请输入 2 位集团编码！"_s, u"警告"_s);
        return false;
    }
    if (ui_->edUnion_NAME->text().trimmed().isEmpty()) {
        InfoBox(u"请输入集团名称！"_s, u"提示"_s);
        return false;
    }
    if (ui_->edMasterOrgName->ChosenValue().isEmpty()) {
        WarningBox(u"请选择主管机构！"_s, u"警告"_s);
        return false;
    }
    return true;
}

void TFrmUniUnionEdit::BtnSaveClick()
{
    if (!InputIsComplete())
        return;
    const DisableWhile running(ui_->BtnSave);
    const Wire::NamedValues values = PostedValues();
    const QString code =
        PostRow(u"com.business.admin.UniUnion"_s, u"insert_update_UniUnion"_s, values);
    ShowResultMessage(code, SaveMessages);
    if (code != u"1")
        return;
    StoreInTable(values);
    SetModalResult(TModalResult::Ok);
}

Wire::NamedValues TFrmUniUnionEdit::PostedValues() const
{
    return WithLastAndLogUser({
        {u"UNION_ID"_s, handOver_.unionId},
        {u"PARENT_ID"_s, handOver_.parentId},
        {u"UNION_CODE"_s, handOver_.parentCode.trimmed() + ui_->edUnion_CODE->text().trimmed()},
        {u"UNION_NAME"_s, ui_->edUnion_NAME->text().trimmed()},
        {u"UNION_TYPE"_s, ui_->cbUnion_TYPE->EditValue()},
        {u"REGION_ID"_s, ui_->edRegionName->ChosenValue()},
        {u"MASTER_ORGID"_s, ui_->edMasterOrgName->ChosenValue()},
        {u"REMARK"_s, ui_->cxREMARK->toPlainText().trimmed()},
    });
}

void TFrmUniUnionEdit::StoreInTable(const Wire::NamedValues &posted)
{
    Wire::NamedValues row = posted;
    row.first().second = PostedValue(u"UNION_ID");
    row.append({u"REGION_NAME"_s, ui_->edRegionName->text()});
    row.append({u"MASTER_ORGNAME"_s, ui_->edMasterOrgName->text()});
    if (handOver_.mode == TUnionHandOver::Mode::Insert)
        AppendRow(unions_, row);
    else
        EditRow(unions_, row);
}

} // namespace Qel
