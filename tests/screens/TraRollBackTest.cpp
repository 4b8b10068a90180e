#include "screens/TraRollBack.h"

#include "controls/DataGrid.h"
#include "controls/DateEdit.h"
#include "controls/ImageComboBox.h"
#include "frame/Guards.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QDateTime From = QDate(2024, 3, 5).startOfDay();
const QDateTime To = QDate(2024, 3, 12).startOfDay();

/// Lines 8001 .. of the orders DD-001 ..; the statement selects no STATE.
RowSet Orders(int count = 3)
{
    QList<QStringList> rows;
    for (int row = 1; row <= count; ++row) {
        const QString number = QString::number(row).rightJustified(3, u'0');
        rows << QStringList{u"8"_s + number, u"DD-"_s + number, u"市第一医院"_s, u"10"_s};
    }
    return Rows({u"ORD_ITEM_ID"_s, u"ORD_CODE"_s, u"BUY_NAME"_s, u"ORD_QTY"_s}, rows);
}

/// Returns 6001 .., by their states.
RowSet Returns(const QStringList &states = {u"0"_s, u"1"_s, u"2"_s, u"7"_s})
{
    QList<QStringList> rows;
    for (const QString &state : states)
        rows << QStringList{QString::number(6001 + rows.size()), state, u"阿莫西林胶囊"_s};
    return Rows({u"RETURN_ID"_s, u"CONFIRM_FLAG"_s, u"PRODUCT_NAME"_s}, rows);
}

/// Deliveries 5001 ..
RowSet Receipts(int count = 3)
{
    QList<QStringList> rows;
    for (int row = 0; row < count; ++row)
        rows << QStringList{QString::number(5001 + row), u"头孢呋辛酯片"_s};
    return Rows({u"SEND_ID"_s, u"PRODUCT_NAME"_s}, rows);
}

/// What a tab consists of, by name.
struct TabNames
{
    QString query;
    QString grid;
    QString pages;
    QString from;
    QString to;
};

const QList<TabNames> Tabs{
    {u"ActionBuyerOrderQuery"_s, u"GridBuyerOrder"_s, u"PageGuide1"_s, u"edBuyerOrderStart"_s,
     u"edBuyerOrderEnd"_s},
    {u"ActionBuyerReturnQuery"_s, u"GridReturn"_s, u"PageGuide2"_s, u"dtReceiveDateFrom1"_s,
     u"dtReceiveDateTo1"_s},
    {u"ActionBuyerReceiveQuery"_s, u"GridReceive"_s, u"PageGuide3"_s, u"dtReceiveDateFrom"_s,
     u"dtReceiveDateTo"_s},
};

const QStringList RollBackActions{u"ActionBuyerOrderRollBack"_s, u"ActionBuyerOrderRollBackItem"_s,
                                  u"ActionBuyerReturn"_s, u"ActionBuyerReceiveRollBark"_s};

/// The screen, shown, and a server that knows some rows for each tab, 120 in all. Questions are
/// answered with their default button.
class Screen : public ScreenFixture
{
public:
    Screen()
        : form(new TFrmTraRollBack)
    {
        AnswerQueries(Orders(), Returns(), Receipts());
        ShowScreen(*form);
    }
    ~Screen() { delete form; }

    void AnswerQueries(const RowSet &orders, const RowSet &returns, const RowSet &receipts,
                       qint64 total = 120)
    {
        server.OnQuery(u"FROM TRA_ORDER A"_s).Answer(orders, total);
        server.OnQuery(u"TRA_RETURN A"_s).Answer(returns, total);
        server.OnQuery(u"FROM TRA_SEND A"_s).Answer(receipts, total);
    }
    void AnswerPost(const QString &method, const QString &code)
    {
        server.OnPost(u"com.business.rollback.BusDataRollBack"_s, method).Code(code);
    }
    void ShowTab(int tab) { Child<QTabWidget>(form, u"cxPageControl1"_s)->setCurrentIndex(tab); }
    void Query(int tab)
    {
        ShowTab(tab);
        Trigger(form, Tabs[tab].query);
    }
    DataGrid &Grid(int tab) { return *Child<DataGrid>(form, Tabs[tab].grid); }
    ClientDataSet &RowsOf(int tab) { return *Grid(tab).DataSet(); }
    TPageGuide &Pages(int tab) { return *Child<TPageGuide>(form, Tabs[tab].pages); }
    void SetDates(int tab, const QDateTime &from, const QDateTime &to)
    {
        Child<DateEdit>(form, Tabs[tab].from)->SetValue(from);
        Child<DateEdit>(form, Tabs[tab].to)->SetValue(to);
    }
    void SayNo()
    {
        hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
    }
    QStringList Enabled()
    {
        QStringList enabled;
        for (const QString &action : RollBackActions) {
            if (ActionEnabled(form, action))
                enabled << action;
        }
        return enabled;
    }
    /// As code could, whatever the screen's rule says.
    void Force(const QString &action)
    {
        auto *forced = Child<QAction>(form, action);
        forced->setEnabled(true);
        forced->trigger();
    }
    QString Focused() const { return form->focusWidget()->objectName(); }

    QPointer<TFrmTraRollBack> form;
};

QStringList ColumnsOf(const DataGrid &grid)
{
    QStringList columns;
    for (const GridColumn &column : grid.Model()->Columns())
        columns << column.field + u' ' + column.caption +
                       (grid.IsColumnVisible(column.field) ? u""_s : u" hidden"_s);
    return columns;
}

QStringList Column(const DataGrid &grid, QStringView field)
{
    QStringList cells;
    for (int row = 0; row < grid.DataSet()->RecordCount(); ++row)
        cells << grid.DataSet()->TextAt(row, field);
    return cells;
}

const QString AskOrder = u"Question|提示|确定将订单“DD-002”整单回退吗？|Yes"_s;
const QString AskItem = u"Question|提示|确定将当前订单明细记录回退吗？|Yes"_s;
const QString AskReturn = u"Question|提示|确定将当前退货记录回退吗？|Yes"_s;
const QString AskReceipt = u"Question|提示|确定将当前验收记录回退吗？|Yes"_s;
const QString Delivered = u"Information|提示|订单已做配送，不能回退！|Ok"_s;

/// The keys that reach a widget.
class KeySpy : public QObject
{
public:
    explicit KeySpy(QWidget *widget) { widget->installEventFilter(this); }
    const QList<int> &Keys() const { return keys_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress)
            keys_ << static_cast<QKeyEvent *>(event)->key();
        return QObject::eventFilter(watched, event);
    }

private:
    QList<int> keys_;
};

void AddFilterColumns()
{
    QTest::addColumn<TRollBackFilter>("filter");
}

void CompareWithExpected(const QString &sql)
{
    QCOMPARE(sql, Expected(QString::fromLatin1(QTest::currentDataTag())));
}

} // namespace

Q_DECLARE_METATYPE(Qel::TRollBackFilter)

class TraRollBackTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Statements ----------------------------------------------------------------------------

    void OrderStatementsAreExact_data()
    {
        AddFilterColumns();
        QTest::newRow("rollback.orders.none")
            << TRollBackFilter{.orderCode = u"  "_s, .product = u" "_s, .org = u" "_s};
        QTest::newRow("rollback.orders.code") << TRollBackFilter{.orderCode = u" dd-01 "_s};
        QTest::newRow("rollback.orders.product") << TRollBackFilter{.product = u" aM'c%; "_s};
        QTest::newRow("rollback.orders.org") << TRollBackFilter{.org = u"市yy"_s};
        QTest::newRow("rollback.orders.from") << TRollBackFilter{.from = From};
        QTest::newRow("rollback.orders.to") << TRollBackFilter{.to = To};
        QTest::newRow("rollback.orders.both") << TRollBackFilter{.from = From, .to = To};
        QTest::newRow("rollback.orders.full") << TRollBackFilter{
            .orderCode = u"dd"_s, .product = u"阿莫"_s, .org = u"医院"_s, .from = From, .to = To};
    }
    void OrderStatementsAreExact()
    {
        QFETCH(TRollBackFilter, filter);
        CompareWithExpected(TraRollBackSql::Orders(filter));
    }

    void ReturnStatementsAreExact_data()
    {
        AddFilterColumns();
        QTest::newRow("rollback.returns.none")
            << TRollBackFilter{.orderCode = u"  "_s, .product = u" "_s, .org = u" "_s};
        QTest::newRow("rollback.returns.product") << TRollBackFilter{.product = u" aM'c%; "_s};
        QTest::newRow("rollback.returns.org") << TRollBackFilter{.org = u" 市yy "_s};
        QTest::newRow("rollback.returns.code") << TRollBackFilter{.orderCode = u" dd-01 "_s};
        QTest::newRow("rollback.returns.both") << TRollBackFilter{.from = From, .to = To};
        QTest::newRow("rollback.returns.state") << TRollBackFilter{.state = u"0"_s};
        QTest::newRow("rollback.returns.full") << TRollBackFilter{.orderCode = u"dd"_s,
                                                                  .product = u"阿莫x"_s,
                                                                  .org = u"医院y"_s,
                                                                  .from = From,
                                                                  .to = To,
                                                                  .state = u"2"_s};
    }
    void ReturnStatementsAreExact()
    {
        QFETCH(TRollBackFilter, filter);
        CompareWithExpected(TraRollBackSql::Returns(filter));
    }

    void ReceiptStatementsAreExact_data()
    {
        AddFilterColumns();
        QTest::newRow("rollback.receipts.none")
            << TRollBackFilter{.orderCode = u"  "_s, .product = u" "_s, .org = u" "_s};
        QTest::newRow("rollback.receipts.product") << TRollBackFilter{.product = u" aM'c%; "_s};
        QTest::newRow("rollback.receipts.code") << TRollBackFilter{.orderCode = u" dd-01 "_s};
        QTest::newRow("rollback.receipts.from") << TRollBackFilter{.from = From};
        QTest::newRow("rollback.receipts.to") << TRollBackFilter{.to = To};
        QTest::newRow("rollback.receipts.both") << TRollBackFilter{.from = From, .to = To};
        QTest::newRow("rollback.receipts.org") << TRollBackFilter{.org = u"市yy"_s};
        QTest::newRow("rollback.receipts.full") << TRollBackFilter{
            .orderCode = u"dd"_s, .product = u"阿莫"_s, .org = u"医院"_s, .from = From, .to = To};
    }
    void ReceiptStatementsAreExact()
    {
        QFETCH(TRollBackFilter, filter);
        CompareWithExpected(TraRollBackSql::Receipts(filter));
    }

    void OneDateAloneIsAConditionForOrdersAndReceiptsAndNoneForReturns()
    {
        for (const TRollBackFilter &filter :
             {TRollBackFilter{.from = From}, TRollBackFilter{.to = To}}) {
            QVERIFY(TraRollBackSql::Orders(filter) != TraRollBackSql::Orders({}));
            QVERIFY(TraRollBackSql::Receipts(filter) != TraRollBackSql::Receipts({}));
            QCOMPARE(TraRollBackSql::Returns(filter), Expected(u"rollback.returns.none"_s));
        }
    }

    void DatesInTheWrongOrderAreSwapped()
    {
        const TRollBackFilter wrong{.from = To, .to = From};
        QCOMPARE(TraRollBackSql::Orders(wrong), Expected(u"rollback.orders.both"_s));
        QCOMPARE(TraRollBackSql::Returns(wrong), Expected(u"rollback.returns.both"_s));
        QCOMPARE(TraRollBackSql::Receipts(wrong), Expected(u"rollback.receipts.both"_s));
    }

    void AnyReturnStateButAllIsACondition()
    {
        QVERIFY(!TraRollBackSql::Returns({.state = u"-1"_s}).contains(u"CONFIRM_FLAG"));
        for (const auto &state : {u"0"_s, u"1"_s, u"2"_s})
            QVERIFY(TraRollBackSql::Returns({.state = state})
                        .contains(u" AND A.CONFIRM_FLAG='"_s + state + u"' "_s));
    }

    void TradeNameStandsTwiceAmongTheConditionsOfOrders()
    {
        QCOMPARE(TraRollBackSql::Orders({.product = u"x"_s}).count(u"UPPER(F.TRADE_NAME)"_s), 2);
    }

    void OnlyTheSellersNameOfAReturnIsMatchedAsTyped()
    {
        const QString sql = TraRollBackSql::Returns({.org = u"ab"_s});
        QCOMPARE(sql.count(u"'%ab%'"_s), 1);
        QVERIFY(sql.contains(u"AND ( C.ORG_NAME LIKE '%ab%'OR C.ORG_NAME_PY LIKE '%AB%'OR "_s));
        QCOMPARE(sql.count(u"'%AB%'"_s), 7);
    }

    void ReceiptsHaveNoOrder()
    {
        QVERIFY(!Expected(u"rollback.receipts.full"_s).contains(u"ORDER BY"));
        QVERIFY(!TraRollBackSql::Receipts({.org = u"x"_s}).contains(u"ORDER BY"));
    }

    // --- Layout --------------------------------------------------------------------------------

    void CaptionsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form->windowTitle(), u"业务数据回退"_s);
        const auto *tabs = Child<QTabWidget>(screen.form, u"cxPageControl1"_s);
        QCOMPARE(tabs->count(), 3);
        QCOMPARE(tabs->tabText(0), u"买方订单回退"_s);
        QCOMPARE(tabs->tabText(1), u"买方退货回退"_s);
        QCOMPARE(tabs->tabText(2), u"买方验收回退"_s);
        QCOMPARE(tabs->currentIndex(), 0);
        const QList<std::pair<QString, QString>> buttons{
            {u"BtnQuery"_s, u"查询"_s},
            {u"btnImport1"_s, u"整单回退"_s},
            {u"btnPrint1"_s, u"明细回退"_s},
            {u"cxButton2"_s, u"返回(&C)"_s},
            {u"btnReturnQuery"_s, u"查询"_s},
            {u"cxButton3"_s, u"退货记录回退"_s},
            {u"cxButton1"_s, u"返回(&C)"_s},
            {u"btnReceiveQuery"_s, u"查询"_s},
            {u"btnReceiveExport"_s, u"验收回退"_s},
            {u"btnReceiveClose"_s, u"返回(&C)"_s},
        };
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Child<QPushButton>(screen.form, name)->text(), caption);
    }

    void EachFilterHasItsLabel()
    {
        Screen screen;
        const QList<std::pair<QString, QString>> labels{
            {u"edCode"_s, u"订 单 号"_s},
            {u"edMed"_s, u"药品信息"_s},
            {u"edOrg"_s, u"机构名称"_s},
            {u"edBuyerOrderStart"_s, u"订单日期"_s},
            {u"edBuyerOrderEnd"_s, u"至"_s},
            {u"edPurCode1"_s, u"订 单 号"_s},
            {u"edOrgInfo2"_s, u"机构名称"_s},
            {u"edProductName1"_s, u"药品信息"_s},
            {u"dtReceiveDateFrom1"_s, u"退货日期"_s},
            {u"dtReceiveDateTo1"_s, u"至"_s},
            {u"cbState"_s, u"状态"_s},
            {u"edCode2"_s, u"订 单 号"_s},
            {u"edProductName2"_s, u"药品信息"_s},
            {u"edOrg2"_s, u"机构名称"_s},
            {u"dtReceiveDateFrom"_s, u"验收日期"_s},
            {u"dtReceiveDateTo"_s, u"至"_s},
        };
        QHash<QString, QString> shown;
        for (const auto *label : screen.form->findChildren<QLabel *>()) {
            if (label->buddy())
                shown.insert(label->buddy()->objectName(), label->text());
        }
        for (const auto &[filter, caption] : labels)
            QCOMPARE(shown.value(filter), caption);
    }

    void OrderColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(
            ColumnsOf(screen.Grid(0)),
            QStringList({u"ORD_CODE 订 单 号"_s, u"ORD_DATE 订单日期"_s, u"BUY_NAME 买方机构"_s,
                         u"SEND_NAME 卖方机构"_s, u"PRODUCT_NAME 通用名"_s, u"TRADE_NAME 商品名"_s,
                         u"FULL_SPEC 包装规格"_s, u"DOSE_NAME 剂型"_s, u"UNIT_NAME 计量单位"_s,
                         u"WRAP_NAME 包装材质"_s, u"FACTORY_NAME 生产企业"_s, u"HIT_PRICE 订购价"_s,
                         u"ORD_QTY 订购量"_s, u"STATE 状态 hidden"_s}));
    }

    void ReturnColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(
            ColumnsOf(screen.Grid(1)),
            QStringList({u"CONFIRM_FLAG 状态"_s, u"PRODUCT_NAME 通用名"_s, u"TRADE_NAME 商品名"_s,
                         u"FULL_SPEC 规格包装"_s, u"DOSE_NAME 剂型"_s, u"FACTORY_NAME 生产企业"_s,
                         u"SALE_NAME 卖方机构"_s, u"HIT_PRICE 供应价"_s,
                         u"CONFIRM_REMARK 备注 hidden"_s, u"RETURN_QTY 退货数量"_s,
                         u"RECEIVE_QTY 验收量"_s, u"INSURE_DATE 有效期"_s, u"LOT_NO 批号"_s,
                         u"UNIT_NAME 单位"_s, u"ORD_CODE 订 单 号"_s, u"BUY_NAME 买方机构"_s}));
    }

    void ReceiptColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(ColumnsOf(screen.Grid(2)),
                 QStringList(
                     {u"PRODUCT_NAME 通用名"_s, u"TRADE_NAME 商品名"_s, u"FULL_SPEC 规格/包装"_s,
                      u"DOSE_NAME 剂型"_s, u"WRAP_NAME 包装材质 hidden"_s,
                      u"FACTORY_NAME 生产企业"_s, u"HIT_TYPE 成交类型 hidden"_s,
                      u"HIT_PRICE 配送价(元)"_s, u"SALE_NAME 卖方机构"_s, u"SEND_QTY 配送量"_s,
                      u"ORD_QTY 采购量"_s, u"LOT_NO 产品批号"_s, u"ORD_CODE 订 单 号"_s,
                      u"ORD_DATE 订单日期"_s, u"INSURE_DATE 批号有效期"_s, u"RECEIVE_QTY 验收量"_s,
                      u"SELL_CODE 销售单号"_s, u"INVOICE_CODE 发票号"_s, u"BUY_NAME 买方机构"_s}));
    }

    void StatesShowTheirCaptionsAndNothingForAnUnknownOne()
    {
        Screen screen;
        screen.Query(1);
        QStringList shown;
        const int column = screen.Grid(1).ColumnIndex(u"CONFIRM_FLAG");
        for (int row = 0; row < 4; ++row)
            shown << screen.Grid(1).model()->index(row, column).data().toString();
        QCOMPARE(shown, QStringList({u"未响应"_s, u"已确认"_s, u"已拒绝"_s, u""_s}));
        const GridColumn &state = screen.Grid(0).Model()->Columns().last();
        QCOMPARE(state.values, ValueList({{u"0"_s, u"未配送"_s}, {u"1"_s, u"已配送"_s}}));
        const auto *filter = Child<ImageComboBox>(screen.form, u"cbState"_s);
        QCOMPARE(filter->Items(),
                 QStringList({u"-1|全部"_s, u"0|未响应"_s, u"1|已确认"_s, u"2|已拒绝"_s}));
        QCOMPARE(filter->EditValue(), u"-1"_s);
    }

    void PagingBarsTakeTheValuesOfTheStylingPass()
    {
        Screen screen;
        for (int tab = 0; tab < 3; ++tab) {
            QCOMPARE(screen.Pages(tab).PageSizeSet(), u"50,100,200"_s);
            QCOMPARE(screen.Pages(tab).PageSize(), 50);
            QCOMPARE(screen.Pages(tab).ShowAllLimit(), 1000);
            QVERIFY(!screen.Pages(tab).ShowSelectAll());
        }
    }

    void MenusOfferTheRollbacksOfTheirTab()
    {
        Screen screen;
        const QList<QStringList> expected{
            {u"整单回退"_s, u"明细回退"_s}, {u"退货记录回退"_s}, {u"验收回退"_s}};
        for (int tab = 0; tab < 3; ++tab) {
            QStringList menu;
            for (const QAction *action : screen.Grid(tab).actions())
                menu << action->text();
            QCOMPARE(menu, expected.at(tab));
        }
    }

    // --- Showing and closing -------------------------------------------------------------------

    void ShowingPresetsAWeekUntilTodayAndQueriesNothing()
    {
        Screen screen;
        const QDate today = QDate::currentDate();
        for (const TabNames &tab : Tabs) {
            QCOMPARE(Child<DateEdit>(screen.form, tab.from)->Value(),
                     today.addDays(-7).startOfDay());
            QCOMPARE(Child<DateEdit>(screen.form, tab.to)->Value(), today.startOfDay());
        }
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Enabled(), QStringList());
        QCOMPARE(screen.Focused(), u"edCode"_s);
    }

    void ReturnClosesAndFreesTheScreen_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("button");
        QTest::newRow("orders") << 0 << u"cxButton2"_s;
        QTest::newRow("returns") << 1 << u"cxButton1"_s;
        QTest::newRow("receipts") << 2 << u"btnReceiveClose"_s;
    }
    void ReturnClosesAndFreesTheScreen()
    {
        QFETCH(int, tab);
        QFETCH(QString, button);
        Screen screen;
        screen.form->MakeEmbedded();
        screen.form->show();
        screen.ShowTab(tab);
        Click(screen.form, button);
        QTRY_VERIFY(screen.form.isNull());
    }

    // --- Queries -------------------------------------------------------------------------------

    void OrderQuerySendsItsFiltersAndFocusesTheList()
    {
        Screen screen;
        Type(screen.form, u"edCode"_s, u" dd "_s);
        Type(screen.form, u"edMed"_s, u"阿莫 "_s);
        Type(screen.form, u"edOrg"_s, u" 医院"_s);
        CheckQuery(screen, 0, u"BtnQuery"_s, u"rollback.orders.full"_s);
        QCOMPARE(screen.RowsOf(0).RecNo(), 0);
        QCOMPARE(screen.Grid(0).currentIndex().row(), 0);
    }

    void ReturnQuerySendsItsFiltersAndFocusesTheList()
    {
        Screen screen;
        screen.ShowTab(1);
        Type(screen.form, u"edPurCode1"_s, u" dd "_s);
        Type(screen.form, u"edOrgInfo2"_s, u"医院y "_s);
        Type(screen.form, u"edProductName1"_s, u" 阿莫x"_s);
        Child<ImageComboBox>(screen.form, u"cbState"_s)->SetEditValue(u"2"_s);
        CheckQuery(screen, 1, u"btnReturnQuery"_s, u"rollback.returns.full"_s);
    }

    void ReceiptQuerySendsItsFiltersAndFocusesTheList()
    {
        Screen screen;
        screen.ShowTab(2);
        Type(screen.form, u"edCode2"_s, u" dd "_s);
        Type(screen.form, u"edProductName2"_s, u"阿莫 "_s);
        Type(screen.form, u"edOrg2"_s, u" 医院"_s);
        CheckQuery(screen, 2, u"btnReceiveQuery"_s, u"rollback.receipts.full"_s);
    }

    void QueryWithoutRowsFocusesTheOrderListButAFilterOfTheOtherTabs()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.AnswerQueries(Orders(0), Returns({}), Receipts(0), 0);
        const QStringList focused{u"GridBuyerOrder"_s, u"edProductName1"_s, u"edCode2"_s};
        for (int tab = 0; tab < 3; ++tab) {
            screen.Query(tab);
            QCOMPARE(screen.Pages(tab).RecordCount(), 0);
            QCOMPARE(screen.Focused(), focused.at(tab));
        }
        QCOMPARE(screen.Enabled(), QStringList());
    }

    void TurningAPageQueriesThatPage()
    {
        Screen screen;
        for (int tab = 0; tab < 3; ++tab) {
            screen.Query(tab);
            Click(&screen.Pages(tab), u"btnNext"_s);
            QCOMPARE(screen.server.LastQuery().page, 2);
            QCOMPARE(screen.server.LastQuery().pageSize, 50);
        }
    }

    void EmptyDatesAddNoCondition()
    {
        Screen screen;
        const QStringList expected{u"rollback.orders.none"_s, u"rollback.returns.none"_s,
                                   u"rollback.receipts.none"_s};
        for (int tab = 0; tab < 3; ++tab) {
            screen.SetDates(tab, {}, {});
            screen.Query(tab);
            QCOMPARE(screen.server.LastQuery().sql, Expected(expected.at(tab)));
        }
    }

    void ATypedDateCountsBeforeItsEditIsLeft()
    {
        Screen screen;
        screen.SetDates(0, {}, {});
        Type(screen.form, u"edBuyerOrderStart"_s, u"2024-03-05"_s);
        Press(screen.form, u"edBuyerOrderStart"_s, Qt::Key_Return);
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"rollback.orders.from"_s));
        Type(screen.form, u"edBuyerOrderStart"_s, {});
        Type(screen.form, u"edBuyerOrderEnd"_s, u"2024-03-12"_s);
        Click(&screen.Pages(0), u"btnNext"_s); // takes no focus from the edit
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"rollback.orders.to"_s));
    }

    void QuotePercentAndSemicolonTravelAsTyped()
    {
        Screen screen;
        const QList<QStringList> filters{{u"edCode"_s, u"edMed"_s, u"edOrg"_s},
                                         {u"edPurCode1"_s, u"edOrgInfo2"_s, u"edProductName1"_s},
                                         {u"edCode2"_s, u"edProductName2"_s, u"edOrg2"_s}};
        const QList<int> columns{12, 16, 12};
        for (int tab = 0; tab < 3; ++tab) {
            screen.ShowTab(tab);
            for (const QString &filter : filters.at(tab))
                Type(screen.form, filter, u"50%_';--"_s);
            screen.Query(tab);
            QCOMPARE(screen.server.LastQuery().sql.count(u"'%50%_'';--%'"_s), columns.at(tab));
        }
    }

    void EnterInAFilterAsksForItsTabsFirstPage_data()
    {
        QTest::addColumn<int>("tab");
        const QList<QStringList> filters{
            {u"edCode"_s, u"edMed"_s, u"edOrg"_s, u"edBuyerOrderStart"_s, u"edBuyerOrderEnd"_s},
            {u"edPurCode1"_s, u"edOrgInfo2"_s, u"edProductName1"_s, u"dtReceiveDateFrom1"_s,
             u"dtReceiveDateTo1"_s, u"cbState"_s},
            {u"edCode2"_s, u"edProductName2"_s, u"edOrg2"_s, u"dtReceiveDateFrom"_s,
             u"dtReceiveDateTo"_s}};
        for (int tab = 0; tab < 3; ++tab) {
            for (const QString &filter : filters.at(tab))
                QTest::newRow(qPrintable(filter)) << tab;
        }
    }
    void EnterInAFilterAsksForItsTabsFirstPage()
    {
        QFETCH(int, tab);
        Screen screen;
        screen.Query(tab);
        Click(&screen.Pages(tab), u"btnNext"_s);
        const QString statement = screen.server.LastQuery().sql;
        Press(screen.form, QString::fromLatin1(QTest::currentDataTag()), Qt::Key_Return);
        QCOMPARE(screen.server.Queries().size(), 3);
        QCOMPARE(screen.server.LastQuery().page, 1);
        QCOMPARE(screen.server.LastQuery().sql, statement);
    }

    void EnterInAFilterIsSwallowedAndDoesNothingWhileItsTabsQueryRuns()
    {
        Screen screen;
        const QStringList filters{u"edCode"_s, u"cbState"_s, u"edOrg2"_s};
        for (int tab = 0; tab < 3; ++tab) {
            screen.ShowTab(tab);
            const DisableWhile running(Child<QAction>(screen.form, Tabs[tab].query));
            auto *filter = Child<QWidget>(screen.form, filters.at(tab));
            const KeySpy behind(filter->parentWidget());
            Press(filter, Qt::Key_F12); // nobody's key
            Press(filter, Qt::Key_Return);
            Press(filter, Qt::Key_Enter);
            QCOMPARE(behind.Keys(), QList<int>{Qt::Key_F12});
        }
        QVERIFY(screen.server.Queries().isEmpty());
    }

    void OtherKeysReachTheFilter()
    {
        Screen screen;
        QTest::keyClicks(Child<QLineEdit>(screen.form, u"edCode"_s), u"DD 1"_s);
        QCOMPARE(Child<QLineEdit>(screen.form, u"edCode"_s)->text(), u"DD 1"_s);
        QVERIFY(screen.server.Queries().isEmpty());
    }

    void QueryActionsAreDisabledWhileTheyRun()
    {
        Screen screen;
        QStringList running;
        QObject::connect(&screen.server, &ScriptedServer::RequestArrived, screen.form, [&] {
            for (const TabNames &tab : Tabs) {
                if (!ActionEnabled(screen.form, tab.query))
                    running << tab.query;
            }
        });
        for (int tab = 0; tab < 3; ++tab)
            screen.Query(tab);
        QCOMPARE(running, QStringList({Tabs[0].query, Tabs[1].query, Tabs[2].query}));
        for (const TabNames &tab : Tabs)
            QVERIFY(ActionEnabled(screen.form, tab.query));
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        Screen screen;
        screen.Query(0);
        screen.server.ClearScripts();
        screen.server.OnAnyQuery()
            .Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s)
            .Times(1);
        screen.server.OnAnyQuery().Answer(Orders(), 3);
        screen.Query(0);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QCOMPARE(screen.Enabled(), QStringList());
        screen.Query(0);
        QCOMPARE(screen.RowsOf(0).RecordCount(), 3);
        QCOMPARE(screen.Enabled().size(), 2);
    }

    void TabsAreIndependent()
    {
        Screen screen;
        screen.Query(0);
        Click(&screen.Pages(0), u"btnNext"_s);
        screen.Query(2);
        QCOMPARE(screen.Pages(0).PageNumber(), 2);
        QCOMPARE(screen.RowsOf(0).RecordCount(), 3);
        QVERIFY(!screen.RowsOf(1).IsActive());
        QCOMPARE(screen.RowsOf(2).RecordCount(), 3);
        const qsizetype queries = screen.server.Queries().size();
        for (int tab = 0; tab < 3; ++tab)
            screen.ShowTab(tab);
        QCOMPARE(screen.server.Queries().size(), queries);
    }

    // --- Enabling ------------------------------------------------------------------------------

    void RollbacksAreOfferedForTheRowsThereAre()
    {
        Screen screen;
        screen.Query(0);
        QCOMPARE(screen.Enabled(), RollBackActions.mid(0, 2));
        screen.Query(1);
        QCOMPARE(screen.Enabled(), RollBackActions.mid(0, 3));
        screen.Query(2);
        QCOMPARE(screen.Enabled(), RollBackActions);
    }

    void ReturnRollbackFollowsTheStateOfTheCurrentRow()
    {
        Screen screen;
        screen.Query(1);
        QList<bool> offered;
        for (int row = 0; row < 4; ++row) {
            screen.Grid(1).selectRow(row);
            offered << Child<QPushButton>(screen.form, u"cxButton3"_s)->isEnabled();
        }
        QCOMPARE(offered, QList<bool>({true, false, true, true}));
    }

    void ForcedRollbackOfAConfirmedReturnDoesNothingAndSaysNothing()
    {
        Screen screen;
        screen.Query(1);
        screen.RowsOf(1).SetRecNo(1);
        QVERIFY(!ActionEnabled(screen.form, u"ActionBuyerReturn"_s));
        screen.Force(u"ActionBuyerReturn"_s);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void ForcedRollbackWithoutRowsDoesNothingAndSaysNothing()
    {
        Screen screen;
        for (const QString &action : RollBackActions)
            screen.Force(action);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(screen.server.Posts().isEmpty());
    }

    // --- Rollbacks -----------------------------------------------------------------------------

    void RollbacksPostTheCurrentRecord_data()
    {
        AddRollBackColumns();
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("expected");
        QTest::newRow("order") << u"btnImport1"_s << 0 << 1 << u"DataRollBack"_s << AskOrder
                               << u"rollback.post.order"_s;
        QTest::newRow("item") << u"btnPrint1"_s << 0 << 1 << u"DataRollBack"_s << AskItem
                              << u"rollback.post.item"_s;
        QTest::newRow("return") << u"cxButton3"_s << 1 << 0 << u"ReturnRollBack"_s << AskReturn
                                << u"rollback.post.return"_s;
        QTest::newRow("receipt") << u"btnReceiveExport"_s << 2 << 1 << u"ReceiveRollBack"_s
                                 << AskReceipt << u"rollback.post.receipt"_s;
    }
    void RollbacksPostTheCurrentRecord()
    {
        QFETCH(QString, question);
        QFETCH(QString, expected);
        Screen screen;
        RollBack(screen, u"1"_s);
        QCOMPARE(screen.Boxes(), QStringList{question});
        QCOMPARE(screen.server.Posts().size(), 1);
        QCOMPARE(RowTexts(screen.server.LastPost().rows), QStringList{Expected(expected)});
    }

    void AnswersAreTold_data()
    {
        AddRollBackColumns();
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("box");
        const auto add = [](const QString &button, int tab, int row, const QString &method,
                            const QString &code, const QString &box) {
            QTest::newRow(qPrintable(button + u' ' + code))
                << button << tab << row << method << code << box;
        };
        const QString data = u"DataRollBack"_s;
        add(u"btnImport1"_s, 0, 1, data, u"-1"_s, Delivered);
        add(u"btnImport1"_s, 0, 1, data, u"0"_s, u"Error|错误|回退订单“DD-002”失败！|Ok"_s);
        add(u"btnPrint1"_s, 0, 1, data, u"-1"_s, Delivered);
        add(u"btnPrint1"_s, 0, 1, data, u"0"_s, u"Error|错误|回退当前订单明细记录失败！|Ok"_s);
        const QString back = u"ReturnRollBack"_s;
        add(u"cxButton3"_s, 1, 0, back, u"-1"_s, u"Warning|警告|卖方已开票不能回退！|Ok"_s);
        add(u"cxButton3"_s, 1, 0, back, u"-2"_s, u"Warning|警告|卖方已确认退货不能回退！|Ok"_s);
        add(u"cxButton3"_s, 1, 0, back, u"0"_s, u"Error|错误|回退当前退货记录失败！|Ok"_s);
        const QString receipt = u"ReceiveRollBack"_s;
        add(u"btnReceiveExport"_s, 2, 1, receipt, u"-1"_s,
            u"Warning|警告|发票已经验收不能回退！|Ok"_s);
        add(u"btnReceiveExport"_s, 2, 1, receipt, u"0"_s,
            u"Error|错误|回退当前验收记录失败！|Ok"_s);
    }
    void AnswersAreTold()
    {
        QFETCH(QString, code);
        QFETCH(QString, box);
        Screen screen;
        RollBack(screen, code);
        QCOMPARE(screen.Boxes().mid(1), QStringList{box});
        CheckUntouched(screen);
    }

    void AnswersOutsideTheTableSayNothingAndTheRollbackIsOfferedAgain_data()
    {
        AddRollBackColumns();
        QTest::addColumn<QString>("code");
        const auto add = [](const QString &button, int tab, int row, const QString &method,
                            const QStringList &codes) {
            for (const QString &code : codes)
                QTest::newRow(qPrintable(button + u" \""_s + code + u'"'))
                    << button << tab << row << method << code;
        };
        // Codes are texts: "01" is not "1".
        add(u"btnImport1"_s, 0, 1, u"DataRollBack"_s, {u"2"_s, u"-2"_s, u"01"_s, u""_s});
        add(u"btnPrint1"_s, 0, 1, u"DataRollBack"_s, {u"2"_s, u"-2"_s});
        add(u"cxButton3"_s, 1, 0, u"ReturnRollBack"_s, {u"2"_s, u"-3"_s, u" 1"_s});
        add(u"btnReceiveExport"_s, 2, 1, u"ReceiveRollBack"_s, {u"2"_s, u"-2"_s});
    }
    void AnswersOutsideTheTableSayNothingAndTheRollbackIsOfferedAgain()
    {
        QFETCH(QString, code);
        Screen screen;
        RollBack(screen, code);
        QCOMPARE(screen.Boxes().size(), 1); // the question
        CheckUntouched(screen);
    }

    void NoEndsARollback_data() { AddRollBacks(); }
    void NoEndsARollback()
    {
        Screen screen;
        screen.SayNo();
        RollBack(screen, u"1"_s);
        QCOMPARE(screen.Boxes().size(), 1);
        QVERIFY(screen.server.Posts().isEmpty());
        CheckUntouched(screen);
    }

    void RollbackActionsAreDisabledWhileTheyRun_data() { AddRollBacks(); }
    void RollbackActionsAreDisabledWhileTheyRun()
    {
        QFETCH(QString, button);
        QFETCH(int, tab);
        Screen screen;
        screen.Query(tab);
        QList<bool> enabled;
        QObject::connect(&screen.server, &ScriptedServer::RequestArrived, screen.form,
                         [&] { enabled << Child<QPushButton>(screen.form, button)->isEnabled(); });
        RollBack(screen, u"-1"_s);
        QCOMPARE(enabled.last(), false);
        QVERIFY(Child<QPushButton>(screen.form, button)->isEnabled());
    }

    void FailedPostLosesNothing_data() { AddRollBacks(); }
    void FailedPostLosesNothing()
    {
        QFETCH(QString, method);
        Screen screen;
        screen.server.OnPost(method)
            .Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s)
            .Times(1);
        RollBack(screen, u"1"_s);
        QCOMPARE(screen.hook.Boxes().size(), 2); // the question and the failure
        CheckUntouched(screen);
    }

    void OrderRollbackQueriesTheFirstPageAgainAndFocusesTheOrders_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("order") << u"btnImport1"_s;
        QTest::newRow("item") << u"btnPrint1"_s;
    }
    void OrderRollbackQueriesTheFirstPageAgainAndFocusesTheOrders()
    {
        QFETCH(QString, button);
        Screen screen;
        screen.Query(0);
        Click(&screen.Pages(0), u"btnNext"_s);
        screen.RowsOf(0).SetRecNo(2);
        screen.AnswerPost(u"DataRollBack"_s, u"1"_s);
        Click(screen.form, button);
        QCOMPARE(screen.server.Queries().size(), 3);
        QCOMPARE(screen.server.LastQuery().page, 1);
        QCOMPARE(screen.Pages(0).PageNumber(), 1);
        QCOMPARE(screen.RowsOf(0).RecNo(), 0);
        QCOMPARE(screen.Focused(), u"GridBuyerOrder"_s);
        QCOMPARE(screen.Enabled(), RollBackActions.mid(0, 2));
    }

    void RollbackOfTheLastOrderEndsItsActions()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Orders(1)).Times(1);
        screen.server.OnAnyQuery().Answer(Orders(0));
        screen.AnswerPost(u"DataRollBack"_s, u"1"_s);
        screen.Query(0);
        Click(screen.form, u"btnImport1"_s);
        QCOMPARE(screen.Pages(0).RecordCount(), 0);
        QCOMPARE(screen.Enabled(), QStringList());
    }

    void RefusedOrderRollbackLeavesTheFocusSinceTheReturnListIsHidden()
    {
        Screen screen;
        screen.Query(0);
        screen.AnswerPost(u"DataRollBack"_s, u"-1"_s);
        Child<QPushButton>(screen.form, u"btnPrint1"_s)->setFocus();
        Click(screen.form, u"btnPrint1"_s);
        QCOMPARE(screen.Focused(), u"btnPrint1"_s);
    }

    void OrderRollbackTriggeredFromTheReturnTabFocusesTheReturnList_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("focused");
        QTest::newRow("1") << u"1"_s << u"GridReturn"_s;
        QTest::newRow("-1") << u"-1"_s << u"GridReturn"_s;
        QTest::newRow("0") << u"0"_s << u"edOrgInfo2"_s;
        QTest::newRow("2") << u"2"_s << u"edOrgInfo2"_s;
    }
    void OrderRollbackTriggeredFromTheReturnTabFocusesTheReturnList()
    {
        QFETCH(QString, code);
        QFETCH(QString, focused);
        Screen screen;
        screen.Query(0);
        screen.ShowTab(1);
        Child<QWidget>(screen.form, u"edOrgInfo2"_s)->setFocus();
        screen.AnswerPost(u"DataRollBack"_s, code);
        Trigger(screen.form, u"ActionBuyerOrderRollBack"_s);
        QCOMPARE(screen.Focused(), focused);
    }

    void ReturnRollbackTakesTheRowOutWithoutANewQuery()
    {
        Screen screen;
        screen.Query(1);
        screen.AnswerPost(u"ReturnRollBack"_s, u"1"_s);
        Click(screen.form, u"cxButton3"_s);
        QCOMPARE(Column(screen.Grid(1), u"RETURN_ID"),
                 QStringList({u"6002"_s, u"6003"_s, u"6004"_s}));
        QCOMPARE(screen.Pages(1).RecordCount(), 119);
        QCOMPARE(screen.server.Queries().size(), 1);
        QCOMPARE(screen.Focused(), u"GridReturn"_s);
        QVERIFY(!ActionEnabled(screen.form, u"ActionBuyerReturn"_s)); // 6002 is confirmed
    }

    void ReturnRollbackOfTheLastRowOfAPageLeavesThePageEmpty()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.AnswerQueries(Orders(), Returns({u"0"_s}), Receipts(), 51);
        screen.Query(1);
        Click(&screen.Pages(1), u"btnNext"_s);
        screen.AnswerPost(u"ReturnRollBack"_s, u"1"_s);
        Click(screen.form, u"cxButton3"_s);
        QVERIFY(screen.RowsOf(1).IsEmpty());
        QCOMPARE(screen.Pages(1).RecordCount(), 50);
        QCOMPARE(screen.server.Queries().size(), 2);
        QCOMPARE(screen.Enabled(), QStringList());
    }

    void ReceiptRollbackTakesTheRowOutWithoutANewQuery()
    {
        Screen screen;
        screen.Query(2);
        screen.RowsOf(2).SetRecNo(2);
        screen.AnswerPost(u"ReceiveRollBack"_s, u"1"_s);
        Click(screen.form, u"btnReceiveExport"_s);
        QCOMPARE(Column(screen.Grid(2), u"SEND_ID"), QStringList({u"5001"_s, u"5002"_s}));
        QCOMPARE(screen.RowsOf(2).RecNo(), 1);
        QCOMPARE(screen.Pages(2).RecordCount(), 119);
        QCOMPARE(screen.server.Queries().size(), 1);
        QCOMPARE(screen.Focused(), u"GridReceive"_s);
        QVERIFY(ActionEnabled(screen.form, u"ActionBuyerReceiveRollBark"_s));
    }

    void ReceiptRollbackOfTheLastRowEndsItsAction()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.AnswerQueries(Orders(), Returns(), Receipts(1), 1);
        screen.Query(2);
        screen.AnswerPost(u"ReceiveRollBack"_s, u"1"_s);
        Click(screen.form, u"btnReceiveExport"_s);
        QVERIFY(screen.RowsOf(2).IsEmpty());
        QCOMPARE(screen.Pages(2).RecordCount(), 0);
        QCOMPARE(screen.Enabled(), QStringList());
    }

    void OrderNumberInMessagesIsTakenAsItIs()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(
            Rows({u"ORD_ITEM_ID"_s, u"ORD_CODE"_s}, {{u"1"_s, u"%1<b>'%2"_s}}));
        screen.Query(0);
        screen.AnswerPost(u"DataRollBack"_s, u"0"_s);
        Click(screen.form, u"btnImport1"_s);
        QCOMPARE(screen.Boxes(),
                 QStringList({u"Question|提示|确定将订单“%1<b>'%2”整单回退吗？|Yes"_s,
                              u"Error|错误|回退订单“%1<b>'%2”失败！|Ok"_s}));
    }

private:
    /// Clicks `button` with `dates` set and compares what was asked and what is shown then.
    static void CheckQuery(Screen &screen, int tab, const QString &button, const QString &expected)
    {
        screen.SetDates(tab, From, To);
        Click(screen.form, button);
        const auto query = screen.server.LastQuery();
        QCOMPARE(query.sql, Expected(expected));
        QCOMPARE(query.page, 1);
        QCOMPARE(query.pageSize, 50);
        QCOMPARE(query.queryType, 2);
        QCOMPARE(screen.Pages(tab).RecordCount(), 120);
        QCOMPARE(screen.Focused(), Tabs[tab].grid);
    }

    static void AddRollBackColumns()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("tab");
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("method");
    }
    static void AddRollBacks()
    {
        AddRollBackColumns();
        QTest::newRow("order") << u"btnImport1"_s << 0 << 1 << u"DataRollBack"_s;
        QTest::newRow("item") << u"btnPrint1"_s << 0 << 1 << u"DataRollBack"_s;
        QTest::newRow("return") << u"cxButton3"_s << 1 << 0 << u"ReturnRollBack"_s;
        QTest::newRow("receipt") << u"btnReceiveExport"_s << 2 << 1 << u"ReceiveRollBack"_s;
    }
    /// Queries the tab, makes the row current and clicks the button, all of the data row.
    static void RollBack(Screen &screen, const QString &code)
    {
        QFETCH(QString, button);
        QFETCH(int, tab);
        QFETCH(int, row);
        QFETCH(QString, method);
        screen.Query(tab);
        screen.RowsOf(tab).SetRecNo(row);
        screen.AnswerPost(method, code);
        screen.server.ClearRecords();
        Click(screen.form, button);
    }
    /// The list and its total are as the query gave them, and the rollback is offered.
    static void CheckUntouched(Screen &screen)
    {
        QFETCH(QString, button);
        QFETCH(int, tab);
        QFETCH(int, row);
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.RowsOf(tab).RecordCount(), tab == 1 ? 4 : 3);
        QCOMPARE(screen.RowsOf(tab).RecNo(), row);
        QCOMPARE(screen.Pages(tab).RecordCount(), 120);
        QVERIFY(Child<QPushButton>(screen.form, button)->isEnabled());
    }
};

QTEST_MAIN(TraRollBackTest)
#include "TraRollBackTest.moc"
