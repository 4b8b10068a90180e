#include "screens/TraRollBack.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "ui_TraRollBack.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr int DaysShown = 7; // of the date ranges at first

constexpr ResultMessage ReturnMessages[]{
    {u"-1", TBoxIcon::Warning, u"卖方已开票不能回退！", u"警告"},
    {u"-2", TBoxIcon::Warning, u"卖方已确认退货不能回退！", u"警告"},
    {u"0", TBoxIcon::Error, u"回退当前退货记录失败！", u"错误"},
};

constexpr ResultMessage ReceiptMessages[]{
    {u"-1", TBoxIcon::Warning, u"发票已经验收不能回退！", u"警告"},
    {u"0", TBoxIcon::Error, u"回退当前验收记录失败！", u"错误"},
};

/// A rollback as it is asked for and sent.
struct RollBack
{
    QAction *action; ///< held disabled while the request runs
    QString question;
    QString method;
    Wire::NamedValues record; ///< what names it; the operator is added
    std::span<const ResultMessage> messages;
    std::function<void()> onSuccess;
};

/// The code of the answer; empty if the operator said no.
QString AskAndSend(const RollBack &rollBack)
{
    if (!QuestionBox(rollBack.question, u"提示"_s))
        return {};
    const DisableWhile running(rollBack.action);
    const QString code = PostRow(u"com.business.rollback.BusDataRollBack"_s, rollBack.method,
                                 WithLastUser(rollBack.record));
    if (code == u"1")
        rollBack.onSuccess();
    ShowResultMessage(code, rollBack.messages);
    return code;
}

} // namespace

TFrmTraRollBack::TFrmTraRollBack(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmTraRollBack>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->GridBuyerOrder->SetValueList(u"STATE", {{u"0"_s, u"未配送"_s}, {u"1"_s, u"已配送"_s}});
    ui_->GridReturn->SetValueList(
        u"CONFIRM_FLAG", {{u"0"_s, u"未响应"_s}, {u"1"_s, u"已确认"_s}, {u"2"_s, u"已拒绝"_s}});

    tabs_ = MakeTabs();
    for (const Tab &tab : tabs_)
        BindTab(tab);
    Handle(ui_->ActionBuyerOrderRollBack, &QAction::triggered,
           &TFrmTraRollBack::ActionBuyerOrderRollBackExecute);
    Handle(ui_->ActionBuyerOrderRollBackItem, &QAction::triggered,
           &TFrmTraRollBack::ActionBuyerOrderRollBackItemExecute);
    Handle(ui_->ActionBuyerReturn, &QAction::triggered, &TFrmTraRollBack::ActionBuyerReturnExecute);
    Handle(ui_->ActionBuyerReceiveRollBark, &QAction::triggered,
           &TFrmTraRollBack::ActionBuyerReceiveRollBarkExecute);
    Handle(ui_->ActionClose, &QAction::triggered, &TFrmTraRollBack::close);
}

TFrmTraRollBack::~TFrmTraRollBack() = default;

// --- The tabs ------------------------------------------------------------------------------------

std::array<TFrmTraRollBack::Tab, 3> TFrmTraRollBack::MakeTabs()
{
    return {
        Tab{.query = ui_->ActionBuyerOrderQuery,
            .filters = {ui_->edCode, ui_->edMed, ui_->edOrg, ui_->edBuyerOrderStart,
                        ui_->edBuyerOrderEnd},
            .statement =
                [this] {
                    return TraRollBackSql::Orders({.orderCode = ui_->edCode->text(),
                                                   .product = ui_->edMed->text(),
                                                   .org = ui_->edOrg->text(),
                                                   .from = DateIn(*ui_->edBuyerOrderStart),
                                                   .to = DateIn(*ui_->edBuyerOrderEnd)});
                },
            .rows = &cdsBuyerOrder,
            .grid = ui_->GridBuyerOrder,
            .pages = ui_->PageGuide1,
            .focusWhenEmpty = ui_->GridBuyerOrder},
        Tab{.query = ui_->ActionBuyerReturnQuery,
            .filters = {ui_->edPurCode1, ui_->edOrgInfo2, ui_->edProductName1,
                        ui_->dtReceiveDateFrom1, ui_->dtReceiveDateTo1, ui_->cbState},
            .statement =
                [this] {
                    return TraRollBackSql::Returns({.orderCode = ui_->edPurCode1->text(),
                                                    .product = ui_->edProductName1->text(),
                                                    .org = ui_->edOrgInfo2->text(),
                                                    .from = DateIn(*ui_->dtReceiveDateFrom1),
                                                    .to = DateIn(*ui_->dtReceiveDateTo1),
                                                    .state = ui_->cbState->EditValue()});
                },
            .rows = &cdsReturn,
            .grid = ui_->GridReturn,
            .pages = ui_->PageGuide2,
            .focusWhenEmpty = ui_->edProductName1},
        Tab{.query = ui_->ActionBuyerReceiveQuery,
            .filters = {ui_->edCode2, ui_->edProductName2, ui_->edOrg2, ui_->dtReceiveDateFrom,
                        ui_->dtReceiveDateTo},
            .statement =
                [this] {
                    return TraRollBackSql::Receipts({.orderCode = ui_->edCode2->text(),
                                                     .product = ui_->edProductName2->text(),
                                                     .org = ui_->edOrg2->text(),
                                                     .from = DateIn(*ui_->dtReceiveDateFrom),
                                                     .to = DateIn(*ui_->dtReceiveDateTo)});
                },
            .rows = &cdsReceive,
            .grid = ui_->GridReceive,
            .pages = ui_->PageGuide3,
            .focusWhenEmpty = ui_->edCode2},
    };
}

void TFrmTraRollBack::BindTab(const Tab &tab)
{
    tab.grid->SetDataSet(tab.rows);
    Handle(tab.query, &QAction::triggered, [&tab] { tab.pages->QueryFirstPage(); });
    Handle(tab.pages, &TPageGuide::ChangePage, [this, &tab] { LoadPage(tab); });
    Handle(tab.rows, &ClientDataSet::Changed, &TFrmTraRollBack::UpdateActions);
    Handle(tab.rows, &ClientDataSet::CurrentChanged, &TFrmTraRollBack::UpdateActions);
    for (QWidget *filter : tab.filters)
        HandleKey(filter, Qt::Key_Return, &TFrmTraRollBack::CustomKeyPress);
}

void TFrmTraRollBack::LoadPage(const Tab &tab)
{
    {
        const DisableWhile running(tab.query);
        QueryPage(tab.statement(), *tab.rows, *tab.pages);
    }
    FocusAfterQuery(!tab.rows->IsEmpty(), tab.grid, tab.focusWhenEmpty);
}

void TFrmTraRollBack::CustomKeyPress()
{
    tabs_.at(size_t(ui_->cxPageControl1->currentIndex())).query->trigger();
}

void TFrmTraRollBack::FormShow()
{
    PresetDates(*ui_->edBuyerOrderStart, *ui_->edBuyerOrderEnd, DaysShown);
    PresetDates(*ui_->dtReceiveDateFrom1, *ui_->dtReceiveDateTo1, DaysShown);
    PresetDates(*ui_->dtReceiveDateFrom, *ui_->dtReceiveDateTo, DaysShown);
    UpdateActions();
    ui_->edCode->setFocus();
}

void TFrmTraRollBack::UpdateActions()
{
    for (QAction *action : {ui_->ActionBuyerOrderRollBack, ui_->ActionBuyerOrderRollBackItem})
        SetEnabledByRule(action, !cdsBuyerOrder.IsEmpty());
    SetEnabledByRule(ui_->ActionBuyerReturn, CanRollBackReturn());
    SetEnabledByRule(ui_->ActionBuyerReceiveRollBark, !cdsReceive.IsEmpty());
}

// --- Rollbacks -----------------------------------------------------------------------------------

void TFrmTraRollBack::ActionBuyerOrderRollBackExecute()
{
    if (cdsBuyerOrder.IsEmpty())
        return;
    const QString order = cdsBuyerOrder.FieldText(u"ORD_CODE");
    RollBackOrder(ui_->ActionBuyerOrderRollBack, u"1"_s, u"确定将订单“%1”整单回退吗？"_s.arg(order),
                  u"回退订单“%1”失败！"_s.arg(order));
}

void TFrmTraRollBack::ActionBuyerOrderRollBackItemExecute()
{
    if (cdsBuyerOrder.IsEmpty())
        return;
    RollBackOrder(ui_->ActionBuyerOrderRollBackItem, u"0"_s, u"确定将当前订单明细记录回退吗？"_s,
                  u"回退当前订单明细记录失败！"_s);
}

void TFrmTraRollBack::RollBackOrder(QAction *action, const QString &allFlag,
                                    const QString &question, const QString &failure)
{
    const ResultMessage messages[]{
        {u"-1", TBoxIcon::Information, u"订单已做配送，不能回退！", u"提示"},
        {u"0", TBoxIcon::Error, failure, u"错误"},
    };
    // A whole order is named by one of its lines too: the server finds it from there.
    const QString code =
        AskAndSend({.action = action,
                    .question = question,
                    .method = u"DataRollBack"_s,
                    .record = {{u"ORD_ITEM_ID"_s, cdsBuyerOrder.FieldText(u"ORD_ITEM_ID")},
                               {u"ALL_FLAG"_s, allFlag}},
                    .messages = messages,
                    .onSuccess = [this] { ui_->ActionBuyerOrderQuery->trigger(); }});
    // Of all lists that of the returns: hidden while orders are shown, it leaves the focus alone.
    if (code == u"1" || code == u"-1")
        FocusIfPossible(ui_->GridReturn);
}

bool TFrmTraRollBack::CanRollBackReturn() const
{
    return !cdsReturn.IsEmpty() && cdsReturn.FieldText(u"CONFIRM_FLAG") != u"1";
}

void TFrmTraRollBack::ActionBuyerReturnExecute()
{
    if (!CanRollBackReturn())
        return;
    AskAndSend({.action = ui_->ActionBuyerReturn,
                .question = u"确定将当前退货记录回退吗？"_s,
                .method = u"ReturnRollBack"_s,
                .record = {{u"RETURN_ID"_s, cdsReturn.FieldText(u"RETURN_ID")}},
                .messages = ReturnMessages,
                .onSuccess = [this] { DropRow(tabs_[1]); }});
}

void TFrmTraRollBack::ActionBuyerReceiveRollBarkExecute()
{
    if (cdsReceive.IsEmpty())
        return;
    AskAndSend({.action = ui_->ActionBuyerReceiveRollBark,
                .question = u"确定将当前验收记录回退吗？"_s,
                .method = u"ReceiveRollBack"_s,
                .record = {{u"SEND_ID"_s, cdsReceive.FieldText(u"SEND_ID")}},
                .messages = ReceiptMessages,
                .onSuccess = [this] { DropRow(tabs_[2]); }});
}

void TFrmTraRollBack::DropRow(const Tab &tab)
{
    DeleteFromPage(*tab.rows, *tab.pages);
    FocusIfPossible(tab.grid);
}

} // namespace Qel
