#include "screens/RollBackScreen.h"

#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString AskOrder = u"Question|提示|确定将订单“DD-002”整单回退吗？|Yes"_s;
const QString AskItem = u"Question|提示|确定将当前订单明细记录回退吗？|Yes"_s;
const QString AskReturn = u"Question|提示|确定将当前退货记录回退吗？|Yes"_s;
const QString AskReceipt = u"Question|提示|确定将当前验收记录回退吗？|Yes"_s;
const QString Delivered = u"Information|提示|订单已做配送，不能回退！|Ok"_s;

} // namespace

class TraRollBackAnswersTest : public QObject
{
    Q_OBJECT

private slots:
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
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
        RollBack(screen, code);
        QCOMPARE(screen.Boxes().size(), 1); // the question
        CheckUntouched(screen);
    }

    void NoEndsARollback_data() { AddRollBacks(); }
    void NoEndsARollback()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
        screen.Query(tab);
        // The last request is the post.
        QCOMPARE(
            screen.DisabledAtRequests(*screen.form, {button}, [&] { RollBack(screen, u"-1"_s); }),
            QStringList{button});
    }

    void FailedPostLosesNothing_data() { AddRollBacks(); }
    void FailedPostLosesNothing()
    {
        QFETCH(QString, method);
        RollBackScreen screen;
        screen.server.OnPost(method).DatabaseDown().Times(1);
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
        RollBackScreen screen;
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
        QCOMPARE(screen.Enabled(), RollBackActions().mid(0, 2));
    }

    void RollbackOfTheLastOrderEndsItsActions()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
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
        RollBackScreen screen;
        screen.Query(0);
        screen.ShowTab(1);
        Child<QWidget>(screen.form, u"edOrgInfo2"_s)->setFocus();
        screen.AnswerPost(u"DataRollBack"_s, code);
        Trigger(screen.form, u"ActionBuyerOrderRollBack"_s);
        QCOMPARE(screen.Focused(), focused);
    }

    void ReturnRollbackTakesTheRowOutWithoutANewQuery()
    {
        RollBackScreen screen;
        screen.Query(1);
        screen.AnswerPost(u"ReturnRollBack"_s, u"1"_s);
        Click(screen.form, u"cxButton3"_s);
        QCOMPARE(CellTexts(*screen.Grid(1).DataSet(), u"RETURN_ID"),
                 QStringList({u"6002"_s, u"6003"_s, u"6004"_s}));
        QCOMPARE(screen.Pages(1).RecordCount(), 119);
        QCOMPARE(screen.server.Queries().size(), 1);
        QCOMPARE(screen.Focused(), u"GridReturn"_s);
        QVERIFY(!ActionEnabled(screen.form, u"ActionBuyerReturn"_s)); // 6002 is confirmed
    }

    void ReturnRollbackOfTheLastRowOfAPageLeavesThePageEmpty()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
        screen.Query(2);
        screen.RowsOf(2).SetRecNo(2);
        screen.AnswerPost(u"ReceiveRollBack"_s, u"1"_s);
        Click(screen.form, u"btnReceiveExport"_s);
        QCOMPARE(CellTexts(*screen.Grid(2).DataSet(), u"SEND_ID"),
                 QStringList({u"5001"_s, u"5002"_s}));
        QCOMPARE(screen.RowsOf(2).RecNo(), 1);
        QCOMPARE(screen.Pages(2).RecordCount(), 119);
        QCOMPARE(screen.server.Queries().size(), 1);
        QCOMPARE(screen.Focused(), u"GridReceive"_s);
        QVERIFY(ActionEnabled(screen.form, u"ActionBuyerReceiveRollBark"_s));
    }

    void ReceiptRollbackOfTheLastRowEndsItsAction()
    {
        RollBackScreen screen;
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
        RollBackScreen screen;
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
    static void RollBack(RollBackScreen &screen, const QString &code)
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
    static void CheckUntouched(RollBackScreen &screen)
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

QTEST_MAIN(TraRollBackAnswersTest)
#include "TraRollBackAnswersTest.moc"
