#include "screens/TraBuyCatalogUser.h"

#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const TBuyCatalog WesternDrugs{u"71"_s, u"西药库"_s, u"501"_s};

const QStringList AssignedColumns{u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s,
                                  u"RELATION_FLAG"_s};
const QStringList UnassignedColumns = AssignedColumns.first(4);

RowSet Assigned()
{
    return Rows(AssignedColumns,
                {{u"801"_s, u"zhou"_s, u"周杰"_s, u"市第一医院"_s, u"1"_s},
                 {u"802"_s, u"wu"_s, u"吴敏"_s, u"市第一医院"_s, Null()}}); // stored as "0"
}

RowSet Unassigned()
{
    return Rows(UnassignedColumns, {{u"803"_s, u"li"_s, u"李平"_s, u"市第一医院"_s},
                                    {u"804"_s, u"qian"_s, u"钱云"_s, u"市第一医院"_s}});
}

/// The dialog for drug store 71 of organisation 501, two of whose users are assigned; the list
/// that opened it shows these and one of another drug store.
class Dialog : public ScreenFixture
{
public:
    explicit Dialog(const RowSet &assigned = Assigned(), const RowSet &unassigned = Unassigned())
        : form(nullptr, listed, WesternDrugs)
    {
        server.OnQuery(u"A.RELATION_FLAG    FROM (SELECT"_s).Answer(assigned);
        server.OnQuery(u"A.USER_ID(+)"_s).Answer(unassigned);
        hook.SetAnswer([](const TMessageBox &) { return TBoxButton::Yes; });
        listed.Open(Rows({u"KEY_ID"_s, u"CATALOG_ID"_s, u"USER_ID"_s, u"BUY_ORGID"_s,
                          u"USER_CODE"_s, u"USER_NAME"_s, u"RELATION_FLAG"_s},
                         {{u"1"_s, u"71"_s, u"801"_s, u"501"_s, u"zhou"_s, u"周杰"_s, u"1"_s},
                          {u"2"_s, u"72"_s, u"801"_s, u"501"_s, u"zhou"_s, u"周杰"_s, u"1"_s},
                          {u"3"_s, u"71"_s, u"802"_s, u"501"_s, u"wu"_s, u"吴敏"_s, u"0"_s}}));
        ShowScreen(form);
        server.ClearRecords();
    }

    void AnswerSubmit(const QString &code)
    {
        for (const QString &method :
             {u"insertUpdateTraUserBuyCatalog"_s, u"deleteTraUserBuyCatalog"_s})
            server.OnPost(u"com.business.admin.TraBuyCatalog"_s, method).Code(code);
    }
    void Submit() { Trigger(&form, u"ActionUpdate"_s); }
    void MoveIn(const QString &user)
    {
        QVERIFY(SlaveRows().Locate(u"USER_ID", {user}));
        Trigger(&form, u"ActionMove"_s);
    }
    void MoveOut(const QString &user)
    {
        QVERIFY(MasterRows().Locate(u"USER_ID", {user}));
        Trigger(&form, u"ActionDelete"_s);
    }

    DataGrid &MasterGrid() { return *Child<DataGrid>(&form, u"GridMasterView"_s); }
    DataGrid &SlaveGrid() { return *Child<DataGrid>(&form, u"GridSlaveView"_s); }
    ClientDataSet &MasterRows() { return *MasterGrid().DataSet(); }
    ClientDataSet &SlaveRows() { return *SlaveGrid().DataSet(); }
    QString In() { return CellTexts(MasterRows(), u"USER_ID").join(u' '); }
    QString Out() { return CellTexts(SlaveRows(), u"USER_ID").join(u' '); }
    /// "71/801=1": drug store, user and link of each row of the opener's list.
    QString Listed()
    {
        QStringList rows;
        for (int recNo = 0; recNo < listed.RecordCount(); ++recNo)
            rows << listed.TextAt(recNo, u"CATALOG_ID") + u'/' + listed.TextAt(recNo, u"USER_ID") +
                        u'=' + listed.TextAt(recNo, u"RELATION_FLAG");
        return rows.join(u' ');
    }

    ClientDataSet listed;
    TFrmTraBuyCatalogUser form;
};

const QString AskSubmit = u"Question|提示|是否真的要提交该数据？|No"_s;
const QString AskMoveOut = u"Question|提示|是否真的要移出该用户？|Yes"_s;

} // namespace

class TraBuyCatalogUserTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact_data()
    {
        QTest::addColumn<QString>("sql");
        const TBuyCatalog quoted{u"7'1"_s, u"库"_s, u"5'01"_s};
        QTest::newRow("assigned.of71") << BuyCatalogUserSql::Assigned(WesternDrugs);
        QTest::newRow("unassigned.of71") << BuyCatalogUserSql::Unassigned(WesternDrugs);
        QTest::newRow("assigned.quoted") << BuyCatalogUserSql::Assigned(quoted);
        QTest::newRow("unassigned.quoted") << BuyCatalogUserSql::Unassigned(quoted);
    }
    void StatementsAreExact()
    {
        QFETCH(QString, sql);
        QCOMPARE(sql, Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void TheFlagExpressionIsSentAsWritten()
    {
        QVERIFY(BuyCatalogUserSql::Assigned(WesternDrugs)
                    .contains(u"DECODE(RELATION_FLAG, NULL, '0', '1', RELATION_FLAG)"_s));
    }

    void DisabledUsersStandOnNeitherTab()
    {
        for (const QString &sql : {BuyCatalogUserSql::Assigned(WesternDrugs),
                                   BuyCatalogUserSql::Unassigned(WesternDrugs)})
            QVERIFY(sql.contains(u" AND B.ENABLE_FLAG = '1' "_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Dialog dialog;
        QCOMPARE(dialog.form.windowTitle(), u"用户可操作药库"_s);
        QCOMPARE(Child<QLabel>(&dialog.form, u"lbRoleName"_s)->text(), u"当前药库：西药库"_s);
        const auto *tabs = Child<QTabWidget>(&dialog.form, u"cxPageControl1"_s);
        QCOMPARE(tabs->tabText(0), u"已分配用户"_s);
        QCOMPARE(tabs->tabText(1), u"未分配用户"_s);
        QCOMPARE(tabs->currentIndex(), 0);
        QCOMPARE(Caption(dialog.form, u"btnAdd"_s), u"移入"_s);
        QCOMPARE(Caption(dialog.form, u"btnDel"_s), u"移出"_s);
        QCOMPARE(Caption(dialog.form, u"btnSave"_s), u"提交"_s);
        QCOMPARE(Caption(dialog.form, u"btnClose"_s), u"返回"_s);
        QCOMPARE(Caption(dialog.form, u"btnClose1"_s), u"返回"_s);
        QCOMPARE(ColumnsOf(dialog.MasterGrid()),
                 QStringList({u"USER_CODE 用户编码"_s, u"USER_NAME 用户名"_s,
                              u"ORG_NAME 所属机构"_s, u"RELATION_FLAG 启用药库品种关联"_s}));
        QCOMPARE(
            ColumnsOf(dialog.SlaveGrid()),
            QStringList({u"USER_CODE 用户编码"_s, u"USER_NAME 用户名"_s, u"ORG_NAME 所属机构"_s}));
        for (const GridColumn &column : ParseGridColumns(dialog.MasterGrid().Columns()))
            QCOMPARE(column.IsEditable(), column.field == u"RELATION_FLAG"_s);
    }

    void ShowAsksForBothTabsUnpaged()
    {
        ScreenFixture fixture;
        ClientDataSet listed;
        fixture.server.OnAnyQuery().Answer(Rows(AssignedColumns, {}));
        TFrmTraBuyCatalogUser form(nullptr, listed, WesternDrugs);
        ShowScreen(form);
        QCOMPARE(fixture.server.Statements(),
                 QStringList({Expected(u"assigned.of71"_s), Expected(u"unassigned.of71"_s)}));
        for (const auto &query : fixture.server.Queries()) {
            QCOMPARE(query.page, 0);
            QCOMPARE(query.pageSize, 0);
            QCOMPARE(query.queryType, 2);
        }
    }

    // --- Moves -----------------------------------------------------------------------------------

    void MovedInAUserStandsAmongTheAssignedWithoutTheLink()
    {
        Dialog dialog;
        dialog.MoveIn(u"803"_s);
        QCOMPARE(dialog.In(), u"801 802 803"_s);
        QCOMPARE(dialog.Out(), u"804"_s);
        QCOMPARE(dialog.MasterRows().FieldText(u"USER_NAME"), u"李平"_s);
        QCOMPARE(dialog.MasterRows().FieldText(u"ORG_NAME"), u"市第一医院"_s);
        QCOMPARE(dialog.MasterRows().FieldText(u"RELATION_FLAG"), u"0"_s);
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void MovingTheSameUserInTwiceIsRefused()
    {
        // As after a colleague's work between the two queries: the user stands on both tabs.
        Dialog dialog(Assigned(),
                      Rows(UnassignedColumns, {{u"801"_s, u"zhou"_s, u"周杰"_s, u"市一"_s}}));
        Trigger(&dialog.form, u"ActionMove"_s);
        QCOMPARE(dialog.Boxes(), QStringList{u"Information|提示|已经添加了该用户！|Ok"_s});
        QCOMPARE(dialog.In(), u"801 802"_s);
        QCOMPARE(dialog.Out(), u"801"_s);
    }

    void MoveOutAsksAndMovesBack()
    {
        Dialog dialog;
        dialog.MoveOut(u"801"_s);
        QCOMPARE(dialog.Boxes(), QStringList{AskMoveOut});
        QCOMPARE(dialog.In(), u"802"_s);
        QCOMPARE(dialog.Out(), u"803 804 801"_s);
        QCOMPARE(dialog.SlaveRows().FieldText(u"USER_CODE"), u"zhou"_s);
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void ANoToMovingOutLeavesTheUser()
    {
        Dialog dialog;
        dialog.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        dialog.MoveOut(u"801"_s);
        QCOMPARE(dialog.In(), u"801 802"_s);
        QCOMPARE(dialog.Out(), u"803 804"_s);
    }

    void EmptyListsAskNothingAndMoveNobody()
    {
        Dialog dialog(Rows(AssignedColumns, {}), Rows(UnassignedColumns, {}));
        Trigger(&dialog.form, u"ActionMove"_s);
        Trigger(&dialog.form, u"ActionDelete"_s);
        QVERIFY(dialog.Boxes().isEmpty());
    }

    void ADoubleClickMovesTheUser()
    {
        Dialog dialog;
        auto *tabs = Child<QTabWidget>(&dialog.form, u"cxPageControl1"_s);
        const auto doubleClick = [](DataGrid &grid) {
            const QPoint cell = grid.visualRect(grid.model()->index(0, 1)).center();
            QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, cell);
            QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, cell);
        };
        doubleClick(dialog.MasterGrid());
        QCOMPARE(dialog.In(), u"802"_s);
        tabs->setCurrentIndex(1);
        doubleClick(dialog.SlaveGrid());
        QCOMPARE(dialog.In(), u"802 803"_s);
    }

    void TheLinkIsTicked()
    {
        Dialog dialog;
        ClickCell(dialog.MasterGrid(), 1, u"RELATION_FLAG");
        QCOMPARE(dialog.MasterRows().TextAt(1, u"RELATION_FLAG"), u"1"_s);
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    // --- Submitting ------------------------------------------------------------------------------

    void SubmitAsksWithNoAsDefaultAndANoPostsNothing()
    {
        Dialog dialog;
        dialog.hook.SetAnswer({}); // Enter
        dialog.Submit();
        QCOMPARE(dialog.Boxes(), QStringList{AskSubmit});
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void TheWholeAssignedListIsPostedFromFirstToLastInOnePost()
    {
        Dialog dialog;
        dialog.AnswerSubmit(u"1"_s);
        dialog.MoveIn(u"803"_s);
        dialog.Submit();
        QCOMPARE(dialog.server.Posts().size(), 1);
        QCOMPARE(dialog.server.LastPost().method, u"insertUpdateTraUserBuyCatalog"_s);
        QCOMPARE(RowTexts(dialog.server.LastPost().rows),
                 QStringList({Expected(u"cataloguser.first"_s), Expected(u"cataloguser.second"_s),
                              Expected(u"cataloguser.movedin"_s)}));
        QCOMPARE(dialog.Boxes(), QStringList{AskSubmit});
    }

    void AnEmptyAssignedListPostsTheOtherMethodAndNoUserIsLeft()
    {
        Dialog dialog;
        dialog.AnswerSubmit(u"1"_s);
        dialog.MoveOut(u"801"_s);
        dialog.MoveOut(u"802"_s);
        dialog.Submit();
        QCOMPARE(dialog.server.Posts().size(), 1);
        QCOMPARE(dialog.server.LastPost().method, u"deleteTraUserBuyCatalog"_s);
        QCOMPARE(RowTexts(dialog.server.LastPost().rows),
                 QStringList{Expected(u"cataloguser.none"_s)});
        QCOMPARE(dialog.Listed(), u"72/801=1"_s);
    }

    void AnAssignedListThatCouldNotBeReadCannotBeSubmittedAsAnEmptyOne()
    {
        ScreenFixture fixture;
        ClientDataSet listed;
        fixture.server.OnAnyQuery().Error(500, u"sql.failed"_s, u"坏了"_s, u"R1"_s);
        fixture.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::Yes; });
        TFrmTraBuyCatalogUser form(nullptr, listed, WesternDrugs);
        ShowScreen(form);
        QVERIFY(!Child<DataGrid>(&form, u"GridMasterView"_s)->DataSet()->IsActive());
        QVERIFY(!ActionEnabled(&form, u"ActionUpdate"_s));
        Child<QAction>(&form, u"ActionUpdate"_s)->trigger();
        QVERIFY(fixture.server.Posts().isEmpty());
    }

    void TheOpenersListIsBroughtInStep()
    {
        Dialog dialog;
        dialog.AnswerSubmit(u"1"_s);
        dialog.MoveOut(u"801"_s);
        ClickCell(dialog.MasterGrid(), 0, u"RELATION_FLAG"); // of 802
        dialog.MoveIn(u"803"_s);
        dialog.Submit();
        QCOMPARE(dialog.Listed(), u"72/801=1 71/802=1 71/803=0"_s);
        QCOMPARE(dialog.listed.TextAt(2, u"KEY_ID"), u"4"_s);
        QCOMPARE(dialog.listed.TextAt(2, u"BUY_ORGID"), u"501"_s);
        QCOMPARE(dialog.listed.TextAt(2, u"USER_CODE"), u"li"_s);
        QCOMPARE(dialog.listed.TextAt(2, u"USER_NAME"), u"李平"_s);
    }

    void TheOpenersCurrentRowStaysCurrent()
    {
        Dialog dialog;
        dialog.AnswerSubmit(u"1"_s);
        dialog.listed.SetRecNo(1);
        dialog.MoveIn(u"803"_s);
        dialog.Submit();
        QCOMPARE(dialog.listed.RecNo(), 1);
    }

    void AListThatIsNotOpenStaysClosed()
    {
        Dialog dialog;
        dialog.AnswerSubmit(u"1"_s);
        dialog.listed.Close();
        dialog.Submit();
        QVERIFY(!dialog.listed.IsActive());
    }

    void ARefusedSubmitSaysSoAndLeavesBothListsAsEdited_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("failed") << u"0"_s;
        QTest::newRow("a user disabled meanwhile") << u"-1"_s;
        QTest::newRow("the drug store deleted meanwhile") << u"-2"_s;
        QTest::newRow("any other") << u"7"_s;
    }
    void ARefusedSubmitSaysSoAndLeavesBothListsAsEdited()
    {
        QFETCH(QString, code);
        Dialog dialog;
        dialog.AnswerSubmit(code);
        dialog.MoveIn(u"803"_s);
        dialog.Submit();
        QCOMPARE(dialog.Boxes(), QStringList({AskSubmit, u"Information|提示|提交数据失败！|Ok"_s}));
        QCOMPARE(dialog.In(), u"801 802 803"_s);
        QCOMPARE(dialog.Listed(), u"71/801=1 72/801=1 71/802=0"_s);
        QVERIFY(ActionEnabled(&dialog.form, u"ActionUpdate"_s)); // to be submitted again
    }

    void SubmitRestsWhileItsPostRuns()
    {
        Dialog dialog;
        dialog.AnswerSubmit(u"1"_s);
        QCOMPARE(
            dialog.DisabledAtRequests(dialog.form, {u"ActionUpdate"_s}, [&] { dialog.Submit(); }),
            QStringList{u"ActionUpdate"_s});
    }

    void ClosingWithoutSubmittingDiscardsTheMoves_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("back") << u"btnClose"_s;
        QTest::newRow("back on the other tab") << u"btnClose1"_s;
        QTest::newRow("Esc") << QString();
    }
    void ClosingWithoutSubmittingDiscardsTheMoves()
    {
        QFETCH(QString, way);
        ScreenFixture fixture;
        ClientDataSet listed;
        fixture.server.OnQuery(u"A.RELATION_FLAG    FROM (SELECT"_s).Answer(Assigned());
        fixture.server.OnQuery(u"A.USER_ID(+)"_s).Answer(Unassigned());
        TFrmTraBuyCatalogUser form(nullptr, listed, WesternDrugs);
        const TModalResult result = ShowModally(form, [&](QWidget *dialog) {
            Trigger(dialog, u"ActionMove"_s);
            Child<QTabWidget>(dialog, u"cxPageControl1"_s)
                ->setCurrentIndex(way == u"btnClose1"_s ? 1 : 0);
            if (way.isEmpty())
                Press(dialog, u"GridMasterView"_s, Qt::Key_Escape);
            else
                Click(dialog, way);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(fixture.server.Posts().isEmpty());
    }
};

QTEST_MAIN(TraBuyCatalogUserTest)
#include "TraBuyCatalogUserTest.moc"
