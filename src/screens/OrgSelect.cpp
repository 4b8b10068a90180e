#include "screens/OrgSelect.h"

#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/OrgTypes.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/Ticks.h"
#include "ui_OrgSelect.h"

namespace Qel {

using namespace Qt::StringLiterals;

QString OrgSelectSql(const QString &baseSql, bool multiSelect, const TOrgFilter &filter)
{
    QString sql = (multiSelect ? u"SELECT '0' AS SELECTED,A.* FROM ("_s : u"SELECT A.* FROM ("_s) +
                  baseSql + u") A WHERE 1=1 "_s +
                  AndLike(u" A.ORG_CODE,A.ORG_NAME,A.ORG_ABBR,A.ORG_NAME_PY "_s, filter.text);
    if (filter.typeText.trimmed() != AllOrgTypes)
        sql += u" and A.ORG_TYPE= "_s + Quoted(filter.typeValue);
    return sql + u" ORDER BY A.ORG_NAME "_s;
}

TFrmOrgSelect::TFrmOrgSelect(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmOrgSelect>())
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnCancel);
    ui_->cbType->SetItems(OrgTypeFilter());
    ui_->cbType->SetEditValue(u"0"_s);
    ui_->GridQueryView->SetDataSet(&cdsQuery);
    ui_->GridQueryView->SetValueList(u"ORG_TYPE", OrgTypes());
    ui_->PageGuide1->Reset();

    const auto query = [this] { ui_->BtnQuery->click(); };
    const auto select = [this] { ui_->BtnSelect->click(); };
    Handle(ui_->BtnQuery, &QPushButton::clicked, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->BtnSelect, &QPushButton::clicked, &TFrmOrgSelect::BtnSelectClick);
    Handle(ui_->BtnCancel, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmOrgSelect::PageGuide1ChangePage);
    Handle(ui_->PageGuide1, &TPageGuide::SelectAll,
           [this](bool checked) { TickAll(cdsQuery, checked); });
    Handle(ui_->GridQueryView, &DataGrid::RowActivated, select);
    Handle(ui_->GridQueryView, &DataGrid::RowDoubleClicked, select);
    Handle(&cdsQuery, &ClientDataSet::Changed,
           [this] { SetEnabledByRule(ui_->BtnSelect, !cdsQuery.IsEmpty()); });
    HandleKey(ui_->edOrg, Qt::Key_Return, query);
}

TFrmOrgSelect::~TFrmOrgSelect() = default;

void TFrmOrgSelect::SetOrgText(const QString &text)
{
    ui_->edOrg->setText(text);
}

void TFrmOrgSelect::FormShow()
{
    ui_->PageGuide1->SetShowSelectAll(MultiSelect);
    ui_->GridQueryView->SetColumnVisible(u"SELECTED", MultiSelect);
    ui_->edOrg->setFocus();
    if (!ui_->edOrg->text().isEmpty())
        ui_->BtnQuery->click();
}

void TFrmOrgSelect::PageGuide1ChangePage()
{
    {
        const DisableWhile running(ui_->BtnQuery);
        QueryPage(OrgSelectSql(BaseSql, MultiSelect,
                               {.text = ui_->edOrg->text(),
                                .typeText = ui_->cbType->currentText(),
                                .typeValue = ui_->cbType->EditValue()}),
                  cdsQuery, *ui_->PageGuide1);
    }
    FocusAfterQuery(ui_->PageGuide1->RecordCount() >= 1, ui_->GridQueryView, ui_->edOrg);
}

void TFrmOrgSelect::BtnSelectClick()
{
    if (cdsQuery.IsEmpty())
        return;
    if (MultiSelect && TickedRows(cdsQuery).isEmpty())
        return InfoBox(u"请勾选要选择的记录！"_s, u"提示"_s);
    if (!MultiSelect)
        TakeCurrentRow();
    SetModalResult(TModalResult::Ok);
}

void TFrmOrgSelect::TakeCurrentRow()
{
    OrgId = cdsQuery.FieldText(u"ORG_ID");
    OrgCode = cdsQuery.FieldText(u"ORG_CODE");
    OrgName = cdsQuery.FieldText(u"ORG_NAME");
    OrgAbbr = cdsQuery.FieldText(u"ORG_ABBR");
    OrgNamePy = cdsQuery.FieldText(u"ORG_NAME_PY");
    OrgNameWb = cdsQuery.FieldText(u"ORG_NAME_WB");
    OrgType = cdsQuery.FieldText(u"ORG_TYPE");
}

} // namespace Qel
