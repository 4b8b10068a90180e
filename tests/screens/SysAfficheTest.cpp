#include "screens/AfficheScreen.h"

#include "frame/Guards.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QDateTime Start = QDate(2024, 3, 5).startOfDay();
const QDateTime End = QDate(2024, 3, 12).startOfDay();
const QString Operator = u"700001"_s;

TAfficheFilter Filter(const TAfficheFilter &filter)
{
    TAfficheFilter complete = filter;
    if (complete.userId.isEmpty())
        complete.userId = Operator;
    if (complete.audienceText.isEmpty())
        complete.audienceText = u"全部"_s;
    return complete;
}

} // namespace

Q_DECLARE_METATYPE(Qel::TAfficheFilter)

class SysAfficheTest : public QObject
{
    Q_OBJECT

private slots:
    // --- The statement -------------------------------------------------------------------------

    void StatementsAreExact_data()
    {
        QTest::addColumn<TAfficheFilter>("filter");
        const auto filter = [](const char *name, const TAfficheFilter &value) {
            QTest::newRow(name) << Filter(value);
        };
        filter("affiches.all", {.title = u"  "_s});
        filter("affiches.quoteduser", {.userId = u"70'1"_s});
        filter("affiches.public", {.audienceText = u"公开"_s, .audienceValue = u"0"_s});
        filter("affiches.buyers", {.audienceText = u"买方"_s, .audienceValue = u"1"_s});
        filter("affiches.salers", {.audienceText = u"卖方"_s, .audienceValue = u"2"_s});
        filter("affiches.from", {.start = Start});
        filter("affiches.to", {.end = End});
        filter("affiches.both", {.start = Start, .end = End});
        filter("affiches.sameday", {.start = Start, .end = Start});
        filter("affiches.title", {.title = u" ab'c% "_s});
        filter("affiches.full", {.start = Start,
                                 .end = End,
                                 .audienceText = u"买方"_s,
                                 .audienceValue = u"1"_s,
                                 .title = u"停业"_s});
    }
    void StatementsAreExact()
    {
        QFETCH(TAfficheFilter, filter);
        QCOMPARE(AffichesSql(filter), Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void TheAudienceAllIsToldByItsTextAndNeverByItsValue()
    {
        QCOMPARE(AffichesSql(Filter({.audienceText = u" 全部 "_s, .audienceValue = u"1"_s})),
                 Expected(u"affiches.all"_s));
        QCOMPARE(AffichesSql(Filter({.audienceText = u"公开"_s, .audienceValue = u"-1"_s})),
                 Expected(u"affiches.all"_s));
    }

    // --- Layout --------------------------------------------------------------------------------

    void CaptionsAreExact()
    {
        AfficheScreen screen;
        QCOMPARE(screen.form->windowTitle(), u"公告管理"_s);
        QVERIFY(!Child<QTabWidget>(screen.form, u"cxPageControl1"_s)->tabBar()->isVisible());
        const QList<std::pair<QString, QString>> labels{{u"lbStart"_s, u"创建日期"_s},
                                                        {u"lbEnd"_s, u"至"_s},
                                                        {u"lbFlag"_s, u"公告对象"_s},
                                                        {u"lbTitle"_s, u"公告标题"_s}};
        for (const auto &[name, caption] : labels)
            QCOMPARE(Caption(*screen.form, name), caption);
        const QList<std::pair<QString, QString>> buttons{
            {u"btnQuery"_s, u"查询"_s},  {u"btnNew"_s, u"新增"_s},   {u"btnModify"_s, u"修改"_s},
            {u"btnDelete"_s, u"删除"_s}, {u"btnCheck"_s, u"发布"_s}, {u"btnLog"_s, u"查看日志"_s},
            {u"btnClose"_s, u"返回"_s}};
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Caption(*screen.form, name), caption);
        const auto *flag = Child<ImageComboBox>(screen.form, u"edFlag"_s);
        QCOMPARE(flag->Items(), QStringList({u"-1|全部"_s, u"0|公开"_s, u"1|买方"_s, u"2|卖方"_s}));
        QCOMPARE(flag->currentText(), u"全部"_s);
    }

    void ColumnsAreExactAndReadOnly()
    {
        AfficheScreen screen;
        QCOMPARE(ColumnsOf(screen.Grid()),
                 QStringList(
                     {u"ENABLE_FLAG 状态"_s, u"START_DATE 开始时间"_s, u"END_DATE 结束时间"_s,
                      u"AFFICHE_TITLE 公告标题"_s, u"UNION_NAME 接收公告集团"_s,
                      u"PUBLIC_FLAG 是否公开"_s, u"BUYER_FLAG 买方接收"_s, u"SALER_FLAG 卖方接收"_s,
                      u"CREATE_USER 创建人"_s, u"CHECK_USER 审核人"_s, u"CHECK_DATE 发布时间"_s}));
        screen.Query();
        for (int column = 0; column < screen.Grid().model()->columnCount(); ++column)
            QVERIFY(!screen.Grid().model()->index(0, column).flags().testFlag(Qt::ItemIsEditable));
        ClickCell(screen.Grid(), 0, u"SALER_FLAG");
        QCOMPARE(screen.Listed().FieldText(u"SALER_FLAG"), u"0"_s);
    }

    void StatesAreShownAsTextsAndFlagsAsTicks()
    {
        AfficheScreen screen;
        screen.Query();
        const auto cell = [&](int row, QStringView field) {
            return screen.Grid().model()->index(row, screen.Grid().ColumnIndex(field));
        };
        QCOMPARE(cell(0, u"ENABLE_FLAG").data().toString(), u"已发布"_s);
        QCOMPARE(cell(1, u"ENABLE_FLAG").data().toString(), u"未发布"_s);
        QCOMPARE(cell(0, u"PUBLIC_FLAG").data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QCOMPARE(cell(0, u"SALER_FLAG").data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    }

    void MenuHasALogItemThatIsBoundToNothingAndUnavailable()
    {
        AfficheScreen screen;
        screen.Query();
        QStringList items;
        for (const QAction *action : screen.Grid().actions())
            items << (action->isSeparator() ? u"-"_s : action->text());
        QCOMPARE(items, QStringList({u"发布"_s, u"-"_s, u"新增"_s, u"-"_s, u"修改"_s, u"删除"_s,
                                     u"-"_s, u"查看日志"_s}));
        QAction *log = screen.Grid().actions().last();
        QVERIFY(log != Child<QAction>(screen.form, u"ActionLog"_s));
        QVERIFY(!log->isEnabled());
        log->setEnabled(true);
        log->trigger();
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void StylingPassReplacesTheLayoutsPagingValues()
    {
        AfficheScreen screen;
        QCOMPARE(screen.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(screen.Pages().PageSize(), 50);
        QCOMPARE(screen.Pages().ShowAllLimit(), 1000);
        QVERIFY(!screen.Pages().ShowSelectAll());
    }

    // --- Show, query ---------------------------------------------------------------------------

    void ShowPresetsFifteenDaysAndQueriesNothing()
    {
        AfficheScreen screen;
        const QDate today = QDate::currentDate();
        QCOMPARE(Child<DateEdit>(screen.form, u"edStart"_s)->Value(),
                 today.addDays(-15).startOfDay());
        QCOMPARE(Child<DateEdit>(screen.form, u"edEnd"_s)->Value(), today.startOfDay());
        QCOMPARE(FocusName(*screen.form), u"edTitle"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Enabled(), u"New"_s);
    }

    void EnterInEachFilterQueriesTheFirstPage_data()
    {
        QTest::addColumn<QString>("filter");
        for (const QString &filter : {u"edStart"_s, u"edEnd"_s, u"edFlag"_s, u"edTitle"_s})
            QTest::newRow(qPrintable(filter)) << filter;
    }
    void EnterInEachFilterQueriesTheFirstPage()
    {
        QFETCH(QString, filter);
        AfficheScreen screen;
        screen.SetDates(Start.date(), End.date());
        Type(screen.form, u"edTitle"_s, u" 停业 "_s);
        Child<ImageComboBox>(screen.form, u"edFlag"_s)->SetEditValue(u"1"_s);
        Press(screen.form, filter, Qt::Key_Return);
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"affiches.full"_s)});
        QCOMPARE(screen.server.LastQuery().page, 1);
        QCOMPARE(screen.server.LastQuery().pageSize, 50);
        QCOMPARE(screen.server.LastQuery().queryType, 2);
        QCOMPARE(screen.Pages().RecordCount(), 120);
    }

    void EnterInAFilterDoesNothingWhileTheQueryIsDisabled()
    {
        AfficheScreen screen;
        const DisableWhile held(Child<QAction>(screen.form, u"ActionQuery"_s));
        Press(screen.form, u"edTitle"_s, Qt::Key_Return);
        QVERIFY(screen.server.Queries().isEmpty());
    }

    void DateTypedBesideThePagingBarCounts()
    {
        AfficheScreen screen;
        screen.SetDates({}, {});
        auto *start = Child<DateEdit>(screen.form, u"edStart"_s);
        start->setFocus();
        start->home(false);
        QTest::keyClicks(start, u"20240305"_s);
        screen.Pages().QueryFirstPage();
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"affiches.from"_s)});
    }

    void StartDateEqualToEndDateIsAccepted()
    {
        AfficheScreen screen;
        screen.SetDates(Start.date(), Start.date());
        screen.Query();
        QVERIFY(screen.Boxes().isEmpty());
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"affiches.sameday"_s)});
    }

    void StartOneDayAfterTheEndIsRefusedWithTheMessageAndNoQuery()
    {
        AfficheScreen screen;
        screen.SetDates(End.date().addDays(1), End.date());
        Trigger(screen.form, u"ActionQuery"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|开始时间不能大于结束时间|Ok"_s});
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(FocusName(*screen.form), u"edStart"_s);
        QVERIFY(ActionEnabled(screen.form, u"ActionQuery"_s));
    }

    void EmptyDatesLeaveTheRangeOpen_data()
    {
        QTest::addColumn<QDate>("start");
        QTest::addColumn<QDate>("end");
        QTest::newRow("affiches.all") << QDate() << QDate();
        QTest::newRow("affiches.from") << Start.date() << QDate();
        QTest::newRow("affiches.to") << QDate() << End.date();
    }
    void EmptyDatesLeaveTheRangeOpen()
    {
        QFETCH(QDate, start);
        QFETCH(QDate, end);
        AfficheScreen screen;
        screen.SetDates(start, end);
        screen.Query();
        QVERIFY(screen.Boxes().isEmpty());
        QCOMPARE(screen.server.LastQuery().sql,
                 Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void EachPageIsAskedForByItsNumber()
    {
        AfficheScreen screen;
        screen.Query();
        Click(&screen.Pages(), u"btnNext"_s);
        QCOMPARE(screen.server.LastQuery().page, 2);
        screen.Query();
        QCOMPARE(screen.server.LastQuery().page, 1);
    }

    void FocusGoesIntoTheGridOrBackToTheTitle()
    {
        AfficheScreen screen;
        screen.Query();
        QCOMPARE(FocusName(*screen.form), u"gridMasterView"_s);
        screen.AnswerQueries(NoAffiches());
        screen.Query();
        QCOMPARE(FocusName(*screen.form), u"edTitle"_s);
        QCOMPARE(screen.Pages().RecordCount(), 0);
        QCOMPARE(screen.Enabled(), u"New"_s);
    }

    void QueryIsDisabledWhileItRuns()
    {
        AfficheScreen screen;
        const QStringList disabled = screen.DisabledAtRequests(
            *screen.form, {u"ActionQuery"_s, u"ActionClose"_s}, [&] { screen.Query(); });
        QCOMPARE(disabled, QStringList{u"ActionQuery"_s});
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        AfficheScreen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown();
        Trigger(screen.form, u"ActionQuery"_s);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QCOMPARE(screen.hook.Boxes().first().icon, TBoxIcon::Error);
        QCOMPARE(screen.Enabled(), u"New"_s);
        screen.AnswerQueries(Affiches());
        screen.Query();
        QCOMPARE(screen.Listed().RecordCount(), 3);
    }

    void PublishingIsOfferedForAnUnpublishedRowOnly()
    {
        AfficheScreen screen;
        screen.Query();
        QCOMPARE(screen.Enabled(), u"New Modify Delete Log"_s);
        screen.Listed().SetRecNo(1);
        QCOMPARE(screen.Enabled(), u"New Modify Delete Check Log"_s);
        screen.Listed().SetRecNo(0);
        QCOMPARE(screen.Enabled(), u"New Modify Delete Log"_s);
    }

    // --- Keys and mouse ------------------------------------------------------------------------

    void EnterOnAnEmptyListWritesANewOne()
    {
        AfficheScreen screen;
        screen.AnswerQueries(NoAffiches());
        screen.Query();
        QString title;
        screen.InDialog([&] { Press(&screen.Grid(), Qt::Key_Return); },
                        [&](QWidget *editor) {
                            title = editor->windowTitle();
                            QVERIFY(Child<DateEdit>(editor, u"edStart"_s)->IsEmpty());
                        });
        QCOMPARE(title, u"公告维护"_s);
    }

    void EnterOnAnEmptyListDoesNotLookWhetherNewIsEnabled()
    {
        AfficheScreen screen;
        Child<QAction>(screen.form, u"ActionNew"_s)->setEnabled(false);
        bool opened = false;
        screen.InDialog([&] { Press(&screen.Grid(), Qt::Key_Return); },
                        [&](QWidget *) { opened = true; });
        QVERIFY(opened);
    }

    void EnterAndDoubleClickModifyTheRow_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("Enter") << true;
        QTest::newRow("double click") << false;
    }
    void EnterAndDoubleClickModifyTheRow()
    {
        QFETCH(bool, byKey);
        AfficheScreen screen;
        screen.Query(1);
        QString title;
        screen.InDialog(
            [&] {
                if (byKey)
                    return Press(&screen.Grid(), Qt::Key_Return);
                const QModelIndex cell = screen.Grid().model()->index(1, 3);
                const QPoint place = screen.Grid().visualRect(cell).center();
                QTest::mouseClick(screen.Grid().viewport(), Qt::LeftButton, {}, place);
                QTest::mouseDClick(screen.Grid().viewport(), Qt::LeftButton, {}, place);
            },
            [&](QWidget *editor) { title = Child<QLineEdit>(editor, u"edTitle"_s)->text(); });
        QCOMPARE(title, u"停业通知"_s);
    }

    void EnterAndDoubleClickDoNothingWhileModifyIsDisabled()
    {
        AfficheScreen screen;
        screen.Query();
        Child<QAction>(screen.form, u"ActionModify"_s)->setEnabled(false);
        Press(&screen.Grid(), Qt::Key_Return);
        emit screen.Grid().RowDoubleClicked();
        QVERIFY(!QApplication::activeModalWidget());
    }

    // --- Log, close ----------------------------------------------------------------------------

    void LogOfTheCurrentAnnouncementIsShown()
    {
        AfficheScreen screen;
        screen.server.OnQuery(u"FROM SYS_UPDATE_LOG"_s)
            .Answer(Rows({u"USER_NAME"_s, u"OPTION_TYPE"_s, u"OPTION_DATE"_s},
                         {{u"张伟"_s, u"1"_s, u"2024-03-04 09:10:11"_s}}));
        screen.Query(1);
        screen.InDialog([&] { Click(screen.form, u"btnLog"_s); },
                        [&](QWidget *viewer) {
                            QCOMPARE(viewer->windowTitle(), u"查看日志"_s);
                            QCOMPARE(Child<DataGrid>(viewer, u"GridLog"_s)->model()->rowCount(), 1);
                        });
        QCOMPARE(screen.server.LastQuery().sql,
                 u" SELECT * FROM SYS_UPDATE_LOG  WHERE TABLE_NAME='SYS_AFFICHE'"
                 " AND KEY_ID1 = '9002' ORDER BY OPTION_DATE DESC"_s);
    }

    void BackClosesTheScreen()
    {
        AfficheScreen screen;
        Click(screen.form, u"btnClose"_s);
        QVERIFY(!screen.form || !screen.form->isVisible());
    }
};

QTEST_MAIN(SysAfficheTest)
#include "SysAfficheTest.moc"
