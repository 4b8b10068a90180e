#include "screens/PrcUniPrice.h"

#include "frame/ActionBinding.h"
#include "frame/Choices.h"
#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/Ticks.h"
#include "screens/PriceTypes.h"
#include "ui_PrcUniPrice.h"

#include <QCloseEvent>
#include <QScopeGuard>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

const QString &Manager()
{
    static const QString name = u"com.business.admin.UniPrice"_s;
    return name;
}

/// The edited products. Prices of hidden slots are sent too.
QList<Wire::NamedValues> PostedPrices(const ClientDataSet &products, const TQuote &quote)
{
    QList<Wire::NamedValues> rows;
    for (const int recNo : TickedRows(products)) {
        const auto text = [&](QStringView field) { return products.TextAt(recNo, field); };
        Wire::NamedValues row{
            {u"PRICE_ID"_s, text(u"PRICE_ID")},    {u"UNION_ID"_s, quote.unionId},
            {u"SALE_ORGID"_s, quote.saleOrgId},    {u"SEND_ORGID"_s, quote.saleOrgId},
            {u"PRODUCT_ID"_s, text(u"ProductID")}, {u"COST_PRICE"_s, text(u"COST_PRICE")}};
        for (int number = 1; number <= PriceSlots; ++number) {
            const QString column = PriceColumn(PriceSlot(number));
            row.append({column, text(column)});
        }
        row.append({u"LAST_OPERATE"_s, u"1"_s});
        row.append({u"LAST_USER"_s, RunParam().UserName});
        rows.append(row);
    }
    return rows;
}

QList<Wire::NamedValues> PostedBuyers(const ClientDataSet &buyers, const TQuote &quote)
{
    QList<Wire::NamedValues> rows;
    for (const int recNo : TickedRows(buyers))
        rows.append({{u"BUY_ORGID"_s, buyers.TextAt(recNo, u"ORG_ID")},
                     {u"SALE_ORGID"_s, quote.saleOrgId},
                     {u"UNION_ID"_s, quote.unionId},
                     {u"PRICE_TYPE_ID"_s, buyers.TextAt(recNo, u"PRICE_TYPE_ID")},
                     {u"LAST_USER"_s, RunParam().UserName}});
    return rows;
}

/// Products that had no price row learn the key of the one that the server made.
void TakePriceIds(ClientDataSet &products)
{
    const ControlsSuspender suspend(products);
    const ClientDataSet::Bookmark current = products.GetBookmark();
    for (int row = 0; row < PostedCount(); ++row) {
        if (products.Locate(u"ProductID", {PostedValue(u"PRODUCT_ID", row)}))
            EditRow(products, {{u"PRICE_ID"_s, PostedValue(u"PRICE_ID", row)}});
    }
    products.GotoBookmark(current);
}

/// Selects the first item; whoever listens to the box hears of it.
void SelectFirst(ImageComboBox &box)
{
    if (box.count() > 0)
        box.setCurrentIndex(0);
}

} // namespace

TFrmPrcUniPrice::TFrmPrcUniPrice(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmPrcUniPrice>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->cxPageControl2->setCurrentWidget(ui_->cxTabSheet2);
    ui_->UniPriceGrid->SetDataSet(&cdsProductPrice);
    ui_->GridPriceType->SetDataSet(&cdsPriceTypeSet);
    ui_->GridUniOrg->SetDataSet(&cdsUniOrg);

    Handle(ui_->cxUnion, &ImageComboBox::EditValueChanged, &TFrmPrcUniPrice::cxUnionChange);
    Handle(ui_->cxUniOrg, &ImageComboBox::EditValueChanged, &TFrmPrcUniPrice::cxUniOrgChange);

    Handle(ui_->BtnQuery, &QPushButton::clicked, &TFrmPrcUniPrice::BtnQueryClick);
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmPrcUniPrice::PageGuide1ChangePage);
    Handle(ui_->UniPriceGrid, &BandedGrid::CellValidating, &TFrmPrcUniPrice::MarkWhenChanged);
    Handle(ui_->btnSave, &QPushButton::clicked, &TFrmPrcUniPrice::btnSaveClick);
    Handle(ui_->BtnClose, &QPushButton::clicked, &TFrmPrcUniPrice::close);
    for (QWidget *filter : {ui_->cxInformation, ui_->cxFactory})
        HandleKey(filter, Qt::Key_Return, [this] { ui_->BtnQuery->click(); });

    Handle(ui_->cxButton1, &QPushButton::clicked, &TFrmPrcUniPrice::cxButton1Click);
    Handle(ui_->btnOrgQuery, &QPushButton::clicked, &TFrmPrcUniPrice::btnOrgQueryClick);
    Handle(ui_->cxButton4, &QPushButton::clicked, &TFrmPrcUniPrice::cxButton4Click);
    Handle(ui_->cxButton2, &QPushButton::clicked,
           [this] { ui_->cxPageControl2->setCurrentWidget(ui_->cxTabSheet2); });
    HandleKey(ui_->edKey, Qt::Key_Return, [this] { ui_->btnOrgQuery->click(); });
    cdsUniOrg.SetFieldChangeHandler(u"PRICE_TYPE_ID"_s,
                                    [this] { cdsUniOrg.SetFieldText(u"SELECTED", u"1"_s); });
}

TFrmPrcUniPrice::~TFrmPrcUniPrice() = default;

void TFrmPrcUniPrice::FormShow()
{
    SetProductCaptions(FormParam(), *ui_->UniPriceGrid);
    ui_->cxInformation->setFocus();
    FillUnions();
}

// --- Group and quoting organisation --------------------------------------------------------------

/// Only the groups that the operator is assigned to.
void TFrmPrcUniPrice::FillUnions()
{
    ClientDataSet unions;
    QueryAll(PrcUniPriceSql::Unions(RunParam().UserId), unions, TQueryType::List);
    if (unions.IsEmpty())
        return;
    ui_->cxUnion->SetItems(ChoicesOf(unions, u"UNION_ID", u"UNION_NAME"));
    SelectFirst(*ui_->cxUnion);
}

void TFrmPrcUniPrice::cxUnionChange()
{
    quote_.unionId = ui_->cxUnion->EditValue();
    cdsUniOrg.Close();
    cdsPriceTypeSet.Close();
    ui_->cxUniOrg->ClearItems(); // which is a change of the organisation, to none
    ClientDataSet sellers;
    QueryAll(PrcUniPriceSql::Sellers(quote_.unionId), sellers, TQueryType::List);
    ui_->cxUniOrg->SetItems(ChoicesOf(sellers, u"ORG_ID", u"ORG_NAME"));
    SelectFirst(*ui_->cxUniOrg);
    SetEnabledByRule(ui_->btnSave, false);
}

void TFrmPrcUniPrice::cxUniOrgChange()
{
    ui_->UniPriceGrid->FinishEditing();
    quote_.saleOrgId = ui_->cxUniOrg->EditValue();
    cdsProductPrice.Close();
    SetEnabledByRule(ui_->btnSave, false);
    ui_->PageGuide1->SetRecordCount(0);
    cdsPriceType.Close();
    cdsPriceTypeSet.Close();
    ShowPriceColumns();
    if (ui_->cxUniOrg->currentIndex() >= 0)
        ReadPriceTypes();
}

// --- Product prices ------------------------------------------------------------------------------

void TFrmPrcUniPrice::BtnQueryClick()
{
    if (ui_->cxUnion->currentIndex() < 0)
        return InfoBox(u"请选择集团！"_s, u"提示"_s);
    if (ui_->cxUniOrg->currentIndex() < 0)
        return InfoBox(u"请选择报价企业！"_s, u"提示"_s);
    if (!cdsPriceType.IsActive())
        ReadPriceTypes(); // which failed before: nothing is known of this seller's types
    if (cdsPriceType.IsEmpty()) {
        InfoBox(u"企业价格类型未维护，请到价格类型维护页面先维护！"_s, u"提示"_s);
        ui_->cxPageControl2->setCurrentWidget(ui_->cxTabSheet3);
        return;
    }
    ui_->PageGuide1->QueryFirstPage();
}

void TFrmPrcUniPrice::PageGuide1ChangePage()
{
    ui_->UniPriceGrid->FinishEditing();
    {
        const DisableWhile running(ui_->BtnQuery);
        SetEnabledByRule(ui_->btnSave, false);
        QueryPage(PrcUniPriceSql::Products(quote_, {.information = ui_->cxInformation->text(),
                                                    .factory = ui_->cxFactory->text(),
                                                    .status = ui_->cxStatus->EditValue(),
                                                    .productClass = FormParam()}),
                  cdsProductPrice, *ui_->PageGuide1);
    }
    FocusAfterQuery(!cdsProductPrice.IsEmpty(), ui_->UniPriceGrid, ui_->cxInformation);
}

/// A price that is edited for the first time makes its column one whose changes mark their row,
/// from then on and in every list that is loaded later.
void TFrmPrcUniPrice::MarkWhenChanged(const QString &field)
{
    cdsProductPrice.SetFieldChangeHandler(field, [this] {
        cdsProductPrice.SetFieldText(u"SELECTED", u"1"_s);
        SetEnabledByRule(ui_->btnSave, true);
    });
}

void TFrmPrcUniPrice::btnSaveClick()
{
    ui_->UniPriceGrid->FinishEditing();
    const DisableWhile running(ui_->btnSave);
    SetEnabledByRule(ui_->btnSave, false);
    if (cdsProductPrice.IsEmpty())
        return;
    const QList<Wire::NamedValues> rows = PostedPrices(cdsProductPrice, quote_);
    if (rows.isEmpty())
        return WarningBox(u"没有需要保存的数据！"_s, u"警告"_s);
    auto unsaved = qScopeGuard([this] { SetEnabledByRule(ui_->btnSave, true); });
    if (PostRows(Manager(), u"insertUpdatePrcUniPriceProduct"_s, rows) != u"1")
        return WarningBox(u"保存失败！"_s, u"警告"_s);
    unsaved.dismiss();
    TakePriceIds(cdsProductPrice);
    WarningBox(u"保存成功！"_s, u"警告"_s);
}

void TFrmPrcUniPrice::closeEvent(QCloseEvent *event)
{
    bool leaves = IsHandlerRunning(); // then it closes, and asks, when that has ended
    if (!leaves)
        Guarded([&] { leaves = MayLeave(); });
    if (leaves)
        TFrmBaseForm::closeEvent(event);
    else
        event->ignore();
}

bool TFrmPrcUniPrice::MayLeave()
{
    ui_->UniPriceGrid->FinishEditing();
    return !ui_->btnSave->isEnabled() ||
           QuestionBox(u"价格修改尚未保存，是否确定退出！"_s, u"提示"_s);
}

// --- Price types ---------------------------------------------------------------------------------

void TFrmPrcUniPrice::ReadPriceTypes()
{
    QueryAll(PrcUniPriceSql::PriceTypes(quote_), cdsPriceType, TQueryType::List);
    BuildPriceTypeTable(cdsPriceType, cdsPriceTypeSet);
    ShowPriceColumns();
}

/// A slot's price has its column while its type is switched on.
void TFrmPrcUniPrice::ShowPriceColumns()
{
    for (int number = 1; number <= PriceSlots; ++number) {
        const QString slot = PriceSlot(number);
        const QString column = PriceColumn(slot);
        const std::optional<QString> name = EnabledPriceName(cdsPriceType, slot);
        ui_->UniPriceGrid->SetColumnCaption(column, name.value_or(QString()));
        ui_->UniPriceGrid->SetColumnVisible(column, name.has_value());
    }
}

void TFrmPrcUniPrice::cxButton1Click()
{
    ui_->GridPriceType->FinishEditing();
    const QList<Wire::NamedValues> rows = PostedPriceTypes(cdsPriceTypeSet, quote_);
    if (rows.isEmpty())
        return;
    {
        const DisableWhile running(ui_->cxButton1);
        if (PostRows(Manager(), u"insertUpdatePrcUniPriceType"_s, rows) != u"1")
            return InfoBox(u"保存失败！"_s, u"提示"_s);
        ReadPriceTypes();
        ui_->GridUniOrg->SetValueList(u"PRICE_TYPE_ID", PriceTypeChoices(cdsPriceType));
    }
    InfoBox(u"保存成功！"_s, u"提示"_s);
}

void TFrmPrcUniPrice::btnOrgQueryClick()
{
    {
        const DisableWhile running(ui_->btnOrgQuery);
        QueryAll(PrcUniPriceSql::Buyers(quote_, ui_->edKey->text()), cdsUniOrg, TQueryType::List);
        if (!cdsUniOrg.IsEmpty())
            ui_->GridUniOrg->SetValueList(u"PRICE_TYPE_ID", PriceTypeChoices(cdsPriceType));
    }
    FocusAfterQuery(!cdsUniOrg.IsEmpty(), ui_->GridUniOrg, ui_->edKey);
}

void TFrmPrcUniPrice::cxButton4Click()
{
    ui_->GridUniOrg->FinishEditing();
    if (cdsUniOrg.IsEmpty())
        return;
    const QList<Wire::NamedValues> rows = PostedBuyers(cdsUniOrg, quote_);
    if (rows.isEmpty())
        return InfoBox(u"请选择要保存的记录！"_s, u"提示"_s);
    {
        const DisableWhile running(ui_->cxButton4);
        if (PostRows(Manager(), u"insertUpdatePrcUniPriceOrg"_s, rows) != u"1")
            return InfoBox(u"保存失败!"_s, u"提示"_s);
        TickAll(cdsUniOrg, false);
    }
    InfoBox(u"保存成功!"_s, u"提示"_s);
}

} // namespace Qel
