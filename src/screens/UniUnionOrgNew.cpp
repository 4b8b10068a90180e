#include "screens/UniUnionOrgNew.h"

#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/OrgTypes.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/Ticks.h"
#include "screens/MemberTypes.h"
#include "screens/Pickers.h"
#include "ui_UniUnionOrgNew.h"

#include <QSignalBlocker>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr int ChooseButton = 0; // of the region edit; the other one clears it

} // namespace

QString CandidatesSql(const TCandidateFilter &filter)
{
    const bool inRegion = !filter.regionId.isEmpty();
    QString sql =
        u" SELECT '0' AS SELECTED,    '0' AS BUYER_FLAG,    '0' AS SALER_FLAG, "
        "   '0' AS SENDER_FLAG,    '0' AS ADMIN_FLAG,    CAST('' AS CHAR(10)) AS ORG_TYPE_ID, "
        "   CAST(' ' AS VARCHAR2(100)) AS REMARK, "_s;
    sql += inRegion ? u"   C.REGION_NAME,    A.org_id, a.org_name  FROM"_s
                    : u"   A.org_id, a.org_name   FROM"_s;
    // The outer join with the null test keeps those that are no members.
    sql += u" BAS_ORG A,     (      SELECT ORG_ID FROM UNI_ORG "
           "     WHERE NVL(LAST_OPERATE, '0') <> 'D'        AND Union_ID="_s +
           Quoted(filter.unionId) + u"    ) B"_s;
    sql += inRegion ? u",     BAS_REGION C "_s : u" "_s;
    sql += u" WHERE A.ENABLE_FLAG= '1'    AND B.ORG_ID IS NULL    AND A.ORG_ID=B.ORG_ID(+) "_s;
    if (inRegion)
        sql += u"   AND A.REGION_ID= C.REGION_ID  AND A.REGION_ID="_s + Quoted(filter.regionId);
    sql += AndLike(u"A.ORG_CODE,A.ORG_NAME,A.ORG_ABBR,A.ORG_NAME_PY,A.ORG_NAME_WB "_s, filter.text,
                   u" and ");
    if (filter.typeText.trimmed() != AllOrgTypes)
        sql += u" and A.ORG_TYPE= "_s + Quoted(filter.typeValue);
    return sql + u" ORDER BY A.ORG_NAME "_s;
}

TFrmUniUnionOrgNew::TFrmUniUnionOrgNew(QWidget *owner, const QString &unionId)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniUnionOrgNew>())
    , unionId_(unionId)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnCancel);
    ui_->cbType->SetItems(OrgTypeFilter());
    ui_->cbType->SetEditValue(u"0"_s);
    ui_->GridQuery->SetDataSet(&cdsQuery);
    ui_->PageGuide1->Reset();

    const auto query = [this] { ui_->BtnQuery->click(); };
    const auto tickAll = [this](bool ticked) { TickAll(cdsQuery, ticked); };
    Handle(ui_->BtnQuery, &QPushButton::clicked, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->BtnSave, &QPushButton::clicked, &TFrmUniUnionOrgNew::BtnSaveClick);
    Handle(ui_->BtnCancel, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmUniUnionOrgNew::PageGuide1ChangePage);
    Handle(ui_->PageGuide1, &TPageGuide::SelectAll, tickAll);
    Handle(ui_->cbSelectAll, &QCheckBox::toggled, tickAll);
    Handle(ui_->bdRegion, &ButtonEdit::ButtonClicked, &TFrmUniUnionOrgNew::bdRegionButtonClick);
    Handle(&cdsQuery, &ClientDataSet::Changed,
           [this] { SetEnabledByRule(ui_->BtnSave, !cdsQuery.IsEmpty()); });
    HandleKey(ui_->edOrg, Qt::Key_Return, query);
    HandleKey(ui_->bdRegion, Qt::Key_Return, &TFrmUniUnionOrgNew::bdRegionEnter);
    cdsQuery.SetFieldChangeHandler(u"ORG_TYPE_ID"_s, [this] { colOrgTypeValueChanged(); });
}

TFrmUniUnionOrgNew::~TFrmUniUnionOrgNew() = default;

void TFrmUniUnionOrgNew::FormShow()
{
    setWindowTitle(u"新增成员"_s);
    ui_->edOrg->setFocus();
    LoadMemberTypes(unionId_, cdsOrgType);
    ui_->GridQuery->SetValueList(u"ORG_TYPE_ID", MemberTypeChoices(cdsOrgType));
}

void TFrmUniUnionOrgNew::PageGuide1ChangePage()
{
    {
        const DisableWhile running(ui_->BtnQuery);
        const QSignalBlocker untickedByCode(ui_->cbSelectAll);
        ui_->cbSelectAll->setChecked(false);
        QueryPage(CandidatesSql({.unionId = unionId_,
                                 .regionId = ui_->bdRegion->ChosenValue(),
                                 .text = ui_->edOrg->text(),
                                 .typeText = ui_->cbType->currentText(),
                                 .typeValue = ui_->cbType->EditValue()}),
                  cdsQuery, *ui_->PageGuide1);
    }
    ui_->lbRecordCount->setText(u"共有%1条记录。"_s.arg(ui_->PageGuide1->RecordCount()));
    FocusAfterQuery(ui_->PageGuide1->RecordCount() >= 1, ui_->GridQuery, ui_->edOrg);
}

void TFrmUniUnionOrgNew::bdRegionEnter()
{
    if (!ui_->bdRegion->ChosenValue().isEmpty() && !ui_->bdRegion->text().isEmpty())
        ui_->BtnQuery->click();
    else
        ui_->bdRegion->PressButton(ChooseButton);
}

void TFrmUniUnionOrgNew::bdRegionButtonClick(int button)
{
    if (button == ChooseButton)
        PickRegion(this, *ui_->bdRegion);
    else
        ui_->bdRegion->ClearChoice();
}

/// The roles are shown as the chosen type gives them; what is posted is the type alone.
void TFrmUniUnionOrgNew::colOrgTypeValueChanged()
{
    cdsQuery.SetFieldText(u"SELECTED", u"1"_s);
    if (cdsOrgType.IsEmpty() ||
        !cdsOrgType.Locate(u"ORG_TYPE_ID", {cdsQuery.FieldText(u"ORG_TYPE_ID")}))
        return;
    for (const QStringView flag : RoleFlags)
        cdsQuery.SetFieldText(flag, cdsOrgType.FieldText(flag));
    cdsQuery.SetFieldText(u"REMARK", cdsOrgType.FieldText(u"REMARK"));
}

void TFrmUniUnionOrgNew::BtnSaveClick()
{
    if (cdsQuery.IsEmpty())
        return;
    ui_->GridQuery->FinishEditing();
    const DisableWhile running(ui_->BtnSave);
    const ControlsSuspender detached(cdsQuery);
    QList<Wire::NamedValues> rows;
    for (const int recNo : TickedRows(cdsQuery)) {
        const QString type = cdsQuery.TextAt(recNo, u"ORG_TYPE_ID");
        if (type.isEmpty()) {
            cdsQuery.SetRecNo(recNo); // this one the operator has to look at
            return InfoBox(u"请选择成员机构类型！"_s, u"提示"_s);
        }
        rows.append(WithLogUser({{u"UNION_ID"_s, unionId_},
                                 {u"ORG_ID"_s, cdsQuery.TextAt(recNo, u"ORG_ID")},
                                 {u"ORG_TYPE_ID"_s, type}}));
    }
    if (rows.isEmpty())
        return InfoBox(u"请选择机构！"_s, u"提示"_s);
    if (!QuestionBox(u"是否要新增[%1]个成员"_s.arg(rows.size()), u"系统提示"_s))
        return;
    if (PostRows(u"com.business.admin.UniUnionOrg"_s, u"insert_update_UniUnionOrg"_s, rows) != u"1")
        return InfoBox(u"保存失败！"_s, u"提示"_s);
    SetModalResult(TModalResult::Ok);
}

} // namespace Qel
