#include "screens/UniProduct.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MrgUpdateLog.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "frame/Ticks.h"
#include "ui_UniProduct.h"

#include <QCloseEvent>

#include <optional>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

QPointer<TFrmUniProduct> openInstance;

/// A move of ticked products: what is posted and what is said.
struct ProductMove
{
    QStringView method;
    QStringView nothingTicked;
    QStringView question; ///< %1: how many
    std::span<const ResultMessage> messages;
};

constexpr QStringView AllStates = u"全部"; ///< of the status box: no condition

constexpr ResultMessage MoveOutMessages[]{
    {u"0", TBoxIcon::Error, u"产品移出失败！", u"错误"},
};

constexpr ResultMessage MoveInMessages[]{
    {u"-1", TBoxIcon::Warning, u"该产品已存在！", u"警告"},
    {u"0", TBoxIcon::Error, u"产品移入失败！", u"错误"},
};

constexpr ProductMove MoveOut{u"move_out_Uni_Product", u"请选择要移出的产品！",
                              u"是否真的要移出 %1 条记录！", MoveOutMessages};

constexpr ProductMove MoveIn{u"move_in_Uni_Product", u"请选择要移入的产品！",
                             u"是否真的要移入 %1 条产品！", MoveInMessages};

QList<Wire::NamedValues> PostedProducts(const ClientDataSet &products, const QList<int> &ticked,
                                        const QString &unionId)
{
    QList<Wire::NamedValues> rows;
    for (const int recNo : ticked)
        rows.append(WithLastAndLogUser(
            {{u"UNION_ID"_s, unionId}, {u"PRODUCT_ID"_s, products.TextAt(recNo, u"PRODUCT_ID")}}));
    return rows;
}

/// Candidates belong to no group: their list has no UNION_ID.
bool LocateProduct(ClientDataSet &products, const QString &unionId, const QString &productId)
{
    return products.HasField(u"UNION_ID")
               ? products.Locate(u"UNION_ID;PRODUCT_ID", {unionId, productId})
               : products.Locate(u"PRODUCT_ID", {productId});
}

/// Walks the answer's rows in their order: a moved product leaves the list, a refused one is told
/// and stays, a failure is told and ends the walk, whatever the rows behind it say. False then.
bool TakeOutMoved(const ProductMove &move, const QString &unionId, ClientDataSet &products,
                  TPageGuide &pages)
{
    std::optional<ControlsSuspender> still(std::in_place, products);
    for (int row = 0; row < PostedCount(); ++row) {
        const QString code = PostedCode(row);
        if (code == u"1") {
            if (LocateProduct(products, unionId, PostedValue(u"PRODUCT_ID", row)))
                DeleteFromPage(products, pages);
            continue;
        }
        still.reset(); // behind the message the list shows how far the walk is
        ShowResultMessage(code, move.messages);
        if (code == u"0")
            return false;
        still.emplace(products);
    }
    return true;
}

void MoveTicked(const ProductMove &move, const QString &unionId, ClientDataSet &products,
                TPageGuide &pages, QAction *action)
{
    const QList<int> ticked = TickedRows(products);
    if (ticked.isEmpty())
        return InfoBox(move.nothingTicked.toString(), u"提示"_s);
    if (!QuestionBox(move.question.toString().arg(ticked.size()), u"系统提示"_s, true))
        return;
    const DisableWhile running(action);
    PostRows(u"com.business.admin.Uni_Product"_s, move.method.toString(),
             PostedProducts(products, ticked, unionId));
    const ClientDataSet::Bookmark current = products.GetBookmark();
    if (TakeOutMoved(move, unionId, products, pages))
        products.GotoBookmark(current);
}

} // namespace

QString UniProductSql::Catalogue(const QString &unionId, const TProductFilter &filter)
{
    const QString sql =
        u" SELECT A.*,    '0' AS SELECTED,    B.PRODUCT_SERIAL,    B.PRODUCT_NAME,    B.DOSE_NAME, "
        "   B.FULL_SPEC,    B.WRAP_NAME,    B.TRADE_NAME,    B.FACTORY_NAME,    B.FACTORY_ABBR "
        " FROM UNI_PRODUCT A,    BAS_PRODUCT B  WHERE A.Union_ID="_s +
        Quoted(unionId) +
        u"   AND A.PRODUCT_ID=B.PRODUCT_ID "
        "   AND nvl(A.LAST_OPERATE,'null') <> 'D' "_s +
        AndLike(u"B.PRODUCT_SERIAL, B.PRODUCT_NAME, B.PRODUCT_NAME_PY, B.PRODUCT_NAME_WB, "
                " B.TRADE_NAME, B.TRADE_NAME_PY, B.TRADE_NAME_WB"_s,
                filter.information) +
        AndLike(u"B.FACTORY_NAME, B.FACTORY_ABBR,B.FACTORY_NAME_PY"_s, filter.factory);
    if (filter.statusText.trimmed() == AllStates)
        return sql;
    return u"SELECT * FROM ("_s + sql + u") WHERE ENABLE_FLAG="_s + Quoted(filter.statusValue);
}

QString UniProductSql::Candidates(const QString &unionId, const TProductFilter &filter)
{
    return u" SELECT '0' AS SELECTED,A.* FROM BAS_PRODUCT A,    ( SELECT A.PRODUCT_ID "
           "       FROM UNI_PRODUCT A        WHERE A.UNION_ID="_s +
           Quoted(unionId) +
           u"         AND nvl(A.LAST_OPERATE,'null') <> 'D' "
           "       ) B "
           " WHERE NVL(A.LAST_OPERATE,'NULL')<>'D' "
           "   AND A.PRODUCT_ID=B.PRODUCT_ID(+) "
           "   AND A.ENABLE_FLAG='1' "
           "   AND B.PRODUCT_ID IS  NULL "_s +
           AndLike(u"A.PRODUCT_SERIAL,A.PRODUCT_NAME, A.PRODUCT_NAME_PY, A.PRODUCT_NAME_WB, "
                   " A.TRADE_NAME, A.TRADE_NAME_PY, A.TRADE_NAME_WB"_s,
                   filter.information) +
           AndLike(u"A.FACTORY_NAME, A.FACTORY_ABBR, A.FACTORY_NAME_PY"_s, filter.factory);
}

TFrmUniProduct::TFrmUniProduct(QWidget *owner, const QString &unionId)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniProduct>())
    , unionId_(unionId)
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    setAttribute(Qt::WA_DeleteOnClose);
    SetCancelButton(ui_->BtnClose);
    ui_->GridOrgIn->SetDataSet(&cdsIn);
    ui_->GridOrgIn->SetValueList(
        u"ENABLE_FLAG", {{u"0"_s, u"未启用"_s}, {u"1"_s, u"已启用"_s}, {u"2"_s, u"已禁用"_s}});
    ui_->GridOut->SetDataSet(&cdsOut);

    Handle(ui_->ActionQueryIn, &QAction::triggered, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->ActionQueryOut, &QAction::triggered, [this] { ui_->PageGuide2->QueryFirstPage(); });
    Handle(ui_->ActionDelete, &QAction::triggered, &TFrmUniProduct::ActionDeleteExecute);
    Handle(ui_->ActionNew, &QAction::triggered, &TFrmUniProduct::ActionNewExecute);
    Handle(ui_->ActionLog, &QAction::triggered, &TFrmUniProduct::ActionLogExecute);
    for (QAction *back : {ui_->ActionCloseIn, ui_->ActionCloseOut})
        Handle(back, &QAction::triggered, &TFrmUniProduct::close);

    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmUniProduct::PageGuide1ChangePage);
    Handle(ui_->PageGuide2, &TPageGuide::ChangePage, &TFrmUniProduct::PageGuide2ChangePage);
    Handle(ui_->PageGuide1, &TPageGuide::SelectAll, [this](bool all) { TickAll(cdsIn, all); });
    Handle(ui_->PageGuide2, &TPageGuide::SelectAll, [this](bool all) { TickAll(cdsOut, all); });
    Handle(&cdsIn, &ClientDataSet::Changed, &TFrmUniProduct::UpdateInActions);
    Handle(&cdsOut, &ClientDataSet::Changed, &TFrmUniProduct::UpdateOutActions);
    for (QWidget *filter : {ui_->cxInformation, ui_->cxFactory})
        HandleKey(filter, Qt::Key_Return, [this] { ui_->ActionQueryIn->trigger(); });
    for (QWidget *filter : {ui_->cxInformation1, ui_->cxFactory1})
        HandleKey(filter, Qt::Key_Return, [this] { ui_->ActionQueryOut->trigger(); });

    openInstance = this;
}

TFrmUniProduct::~TFrmUniProduct() = default;

TFrmUniProduct *TFrmUniProduct::Instance()
{
    return openInstance;
}

void TFrmUniProduct::FormShow()
{
    UpdateInActions();
    UpdateOutActions();
    ui_->cxInformation->setFocus();
}

void TFrmUniProduct::closeEvent(QCloseEvent *event)
{
    TFrmBaseForm::closeEvent(event);
    if (event->isAccepted() && openInstance == this)
        openInstance.clear();
}

void TFrmUniProduct::UpdateInActions()
{
    for (QAction *action : {ui_->ActionDelete, ui_->ActionLog})
        SetEnabledByRule(action, !cdsIn.IsEmpty());
}

void TFrmUniProduct::UpdateOutActions()
{
    SetEnabledByRule(ui_->ActionNew, !cdsOut.IsEmpty());
}

void TFrmUniProduct::PageGuide1ChangePage()
{
    {
        const DisableWhile running(ui_->ActionQueryIn);
        QueryPage(UniProductSql::Catalogue(unionId_, {.information = ui_->cxInformation->text(),
                                                      .factory = ui_->cxFactory->text(),
                                                      .statusText = ui_->cxEnable->currentText(),
                                                      .statusValue = ui_->cxEnable->EditValue()}),
                  cdsIn, *ui_->PageGuide1);
    }
    FocusIfPossible(ui_->GridOrgIn);
}

void TFrmUniProduct::PageGuide2ChangePage()
{
    {
        const DisableWhile running(ui_->ActionQueryOut);
        QueryPage(UniProductSql::Candidates(unionId_, {.information = ui_->cxInformation1->text(),
                                                       .factory = ui_->cxFactory1->text()}),
                  cdsOut, *ui_->PageGuide2);
    }
    FocusIfPossible(ui_->GridOut);
}

void TFrmUniProduct::ActionDeleteExecute()
{
    MoveTicked(MoveOut, unionId_, cdsIn, *ui_->PageGuide1, ui_->ActionDelete);
}

void TFrmUniProduct::ActionNewExecute()
{
    MoveTicked(MoveIn, unionId_, cdsOut, *ui_->PageGuide2, ui_->ActionNew);
}

void TFrmUniProduct::ActionLogExecute()
{
    TFrmMrgUpdateLog(
        this, {u"UNI_PRODUCT"_s, cdsIn.FieldText(u"UNION_ID"), cdsIn.FieldText(u"PRODUCT_ID")})
        .ShowModal();
}

} // namespace Qel
