#include "screens/RollBackScreen.h"

#include "controls/ImageComboBox.h"
#include "frame/Guards.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

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

} // namespace

class TraRollBackTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Layout --------------------------------------------------------------------------------

    void CaptionsAreExact()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
        for (int tab = 0; tab < 3; ++tab) {
            QCOMPARE(screen.Pages(tab).PageSizeSet(), u"50,100,200"_s);
            QCOMPARE(screen.Pages(tab).PageSize(), 50);
            QCOMPARE(screen.Pages(tab).ShowAllLimit(), 1000);
            QVERIFY(!screen.Pages(tab).ShowSelectAll());
        }
    }

    void MenusOfferTheRollbacksOfTheirTab()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
        const QDate today = QDate::currentDate();
        for (const TabNames &tab : RollBackTabs()) {
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
        RollBackScreen screen;
        screen.form->MakeEmbedded();
        screen.form->show();
        screen.ShowTab(tab);
        Click(screen.form, button);
        QTRY_VERIFY(screen.form.isNull());
    }

    // --- Queries -------------------------------------------------------------------------------

    void OrderQuerySendsItsFiltersAndFocusesTheList()
    {
        RollBackScreen screen;
        Type(screen.form, u"edCode"_s, u" dd "_s);
        Type(screen.form, u"edMed"_s, u"阿莫 "_s);
        Type(screen.form, u"edOrg"_s, u" 医院"_s);
        CheckQuery(screen, 0, u"BtnQuery"_s, u"rollback.orders.full"_s);
        QCOMPARE(screen.RowsOf(0).RecNo(), 0);
        QCOMPARE(screen.Grid(0).currentIndex().row(), 0);
    }

    void ReturnQuerySendsItsFiltersAndFocusesTheList()
    {
        RollBackScreen screen;
        screen.ShowTab(1);
        Type(screen.form, u"edPurCode1"_s, u" dd "_s);
        Type(screen.form, u"edOrgInfo2"_s, u"医院y "_s);
        Type(screen.form, u"edProductName1"_s, u" 阿莫x"_s);
        Child<ImageComboBox>(screen.form, u"cbState"_s)->SetEditValue(u"2"_s);
        CheckQuery(screen, 1, u"btnReturnQuery"_s, u"rollback.returns.full"_s);
    }

    void ReceiptQuerySendsItsFiltersAndFocusesTheList()
    {
        RollBackScreen screen;
        screen.ShowTab(2);
        Type(screen.form, u"edCode2"_s, u" dd "_s);
        Type(screen.form, u"edProductName2"_s, u"阿莫 "_s);
        Type(screen.form, u"edOrg2"_s, u" 医院"_s);
        CheckQuery(screen, 2, u"btnReceiveQuery"_s, u"rollback.receipts.full"_s);
    }

    void QueryWithoutRowsFocusesTheOrderListButAFilterOfTheOtherTabs()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
        for (int tab = 0; tab < 3; ++tab) {
            screen.Query(tab);
            Click(&screen.Pages(tab), u"btnNext"_s);
            QCOMPARE(screen.server.LastQuery().page, 2);
            QCOMPARE(screen.server.LastQuery().pageSize, 50);
        }
    }

    void EmptyDatesAddNoCondition()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
        const QStringList filters{u"edCode"_s, u"cbState"_s, u"edOrg2"_s};
        for (int tab = 0; tab < 3; ++tab) {
            screen.ShowTab(tab);
            const DisableWhile running(Child<QAction>(screen.form, RollBackTabs().at(tab).query));
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
        RollBackScreen screen;
        QTest::keyClicks(Child<QLineEdit>(screen.form, u"edCode"_s), u"DD 1"_s);
        QCOMPARE(Child<QLineEdit>(screen.form, u"edCode"_s)->text(), u"DD 1"_s);
        QVERIFY(screen.server.Queries().isEmpty());
    }

    void QueryActionsAreDisabledWhileTheyRun()
    {
        RollBackScreen screen;
        QStringList actions;
        for (const TabNames &tab : RollBackTabs())
            actions << tab.query;
        QCOMPARE(screen.DisabledAtRequests(*screen.form, actions,
                                           [&] {
                                               for (int tab = 0; tab < 3; ++tab)
                                                   screen.Query(tab);
                                           }),
                 actions);
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        RollBackScreen screen;
        screen.Query(0);
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown().Times(1);
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
        RollBackScreen screen;
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
        RollBackScreen screen;
        screen.Query(0);
        QCOMPARE(screen.Enabled(), RollBackActions().mid(0, 2));
        screen.Query(1);
        QCOMPARE(screen.Enabled(), RollBackActions().mid(0, 3));
        screen.Query(2);
        QCOMPARE(screen.Enabled(), RollBackActions());
    }

    void ReturnRollbackFollowsTheStateOfTheCurrentRow()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
        screen.Query(1);
        screen.RowsOf(1).SetRecNo(1);
        QVERIFY(!ActionEnabled(screen.form, u"ActionBuyerReturn"_s));
        screen.Force(u"ActionBuyerReturn"_s);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void ForcedRollbackWithoutRowsDoesNothingAndSaysNothing()
    {
        RollBackScreen screen;
        for (const QString &action : RollBackActions())
            screen.Force(action);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(screen.server.Posts().isEmpty());
    }

private:
    /// Sets the dates, clicks `button` and compares what is asked and shown.
    static void CheckQuery(RollBackScreen &screen, int tab, const QString &button,
                           const QString &expected)
    {
        screen.SetDates(tab, QDate(2024, 3, 5).startOfDay(), QDate(2024, 3, 12).startOfDay());
        Click(screen.form, button);
        const auto query = screen.server.LastQuery();
        QCOMPARE(query.sql, Expected(expected));
        QCOMPARE(query.page, 1);
        QCOMPARE(query.pageSize, 50);
        QCOMPARE(query.queryType, 2);
        QCOMPARE(screen.Pages(tab).RecordCount(), 120);
        QCOMPARE(screen.Focused(), RollBackTabs().at(tab).grid);
    }
};

QTEST_MAIN(TraRollBackTest)
#include "TraRollBackTest.moc"
