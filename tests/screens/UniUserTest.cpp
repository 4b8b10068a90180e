#include "screens/UniUser.h"

#include "screens/ScreenFixture.h"
#include "screens/UniUserAdd.h"
#include "screens/Unions.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

QStringList Group(const QString &id, const QString &parent, const QString &code,
                  const QString &name, const QString &region = {}, const QString &master = {})
{
    return {id, parent, code, name, u"2"_s, u""_s, u""_s, u""_s, region, master};
}

/// 0013 with sub-group 001309, then 0014 and 0015.
RowSet Groups()
{
    return Rows(UnionColumns(),
                {Group(u"10"_s, Null(), u"0013"_s, u"华北联合体"_s),
                 Group(u"11"_s, u"10"_s, u"001309"_s, u"石家庄小组"_s),
                 Group(u"12"_s, Null(), u"0014"_s, u"华东联合体"_s, u"上海市"_s, u"长征医院"_s),
                 Group(u"13"_s, Null(), u"0015"_s, u"西南联合体"_s)});
}

/// Top-level groups with these names; ids count from 1.
RowSet Named(const QStringList &names)
{
    QList<QStringList> rows;
    for (const QString &name : names) {
        const QString id = QString::number(rows.size() + 1);
        rows << Group(id, Null(), u"000"_s + id, name);
    }
    return Rows(UnionColumns(), rows);
}

RowSet Users(const QString &unionId, int count)
{
    const QStringList names{u"张伟"_s, u"李娜"_s, u"王芳"_s};
    QList<QStringList> rows;
    for (int at = 0; at < count; ++at)
        rows << QStringList{u"70"_s + QString::number(at + 1),
                            unionId,
                            u"user"_s + QString::number(at + 1),
                            names[at],
                            at == 1 ? u"0"_s : u"1"_s,
                            u"采购员"_s,
                            u"市第一医院"_s};
    return Rows({u"USER_ID"_s, u"UNION_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ENABLE_FLAG"_s,
                 u"REMARK"_s, u"ORG_NAME"_s},
                rows);
}

/// The screen, shown, and a server that knows four groups: 10 has two users, 11 none, 12 and 13
/// three.
class Screen : public ScreenFixture
{
public:
    explicit Screen(const RowSet &groups = Groups())
    {
        server.OnQuery(u"FROM UNI_UNION A"_s).Answer(groups);
        server.OnQueryExact(Expected(u"unionusers.of10"_s)).Answer(Users(u"10"_s, 2));
        server.OnQueryExact(UnionUsersSql(u"11"_s)).Answer(Users(u"11"_s, 0));
        for (const auto &id : {u"12"_s, u"13"_s})
            server.OnQueryExact(UnionUsersSql(id)).Answer(Users(id, 3));
        server.OnQuery(u"FROM UNI_USER_UNION A"_s).Answer(Users(u"1"_s, 1));
        server.OnQuery(u"SELECT '0' AS SELECTED"_s)
            .Answer(Rows(
                {u"SELECTED"_s, u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ENABLE_FLAG"_s,
                 u"REMARK"_s, u"ORG_NAME"_s},
                {{u"1"_s, u"801"_s, u"zhou"_s, u"周杰"_s, u"1"_s, u"药剂科"_s, u"市第二医院"_s},
                 {u"1"_s, u"802"_s, u"wu"_s, u"吴敏"_s, u"1"_s, u""_s, u"百草药房"_s}}));
        ShowScreen(form);
    }

    void Query() { Trigger(&form, u"ActionQuery"_s); }
    void Search(const QString &text)
    {
        Type(&form, u"edInfo"_s, text);
        Press(&Tree(), Qt::Key_F3);
    }
    DataTree &Tree() { return *Child<DataTree>(&form, u"TreeGrid"_s); }
    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridUserView"_s); }
    ClientDataSet &Listed() { return *Grid().DataSet(); }
    QString FocusedId() { return Tree().NodeText(Tree().FocusedNode(), u"UNION_ID"); }
    bool Enabled(const QString &action) { return ActionEnabled(&form, action); }
    /// Focuses a group and waits until its users are asked for.
    void Focus(const QString &unionId)
    {
        const int before = int(server.Queries().size());
        Tree().FocusNode(Tree().DataSet()->Find(u"UNION_ID", {unionId}));
        QTRY_VERIFY(server.Queries().size() > before && Listed().IsActive());
    }
    void AnswerMoveOut(const QString &code)
    {
        server.OnPost(u"com.business.admin.UniUser"_s, u"deleteUniUser"_s).Code(code);
    }
    void MoveOut() { Trigger(&form, u"ActionDelete"_s); }
    /// Opens the picker, lists its two ticked candidates and moves them in: results as "1 801".
    void MoveIn(const QStringList &results)
    {
        server.OnPost(u"com.business.admin.UniUser"_s, u"insertUniUser"_s)
            .Results(ResultRows(u"USER_ID"_s, results));
        ModalVisitor visitor([](QWidget *picker) {
            QCOMPARE(picker->windowTitle(), u"选择用户"_s);
            Click(picker, u"btnQuery"_s);
            Click(picker, u"btnSelect"_s);
            picker->close();
        });
        Trigger(&form, u"ActionNew"_s);
    }

    TFrmUniUser form;
};

const QString AskZhangWei = u"Question|提示|确定将用户“张伟”移出“华北联合体”吗？|Yes"_s;
const QString MoveOutFailed = u"Error|错误|移出用户失败！|Ok"_s;

} // namespace

class UniUserTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(UnionUsersSql(u"10"_s), Expected(u"unionusers.of10"_s));
        QCOMPARE(UnionUsersSql(u"1'0"_s), Expected(u"unionusers.quotedgroup"_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form.windowTitle(), u"用户可操作集团设置"_s);
        QCOMPARE(Child<QTabWidget>(&screen.form, u"cxPageControl1"_s)->tabText(0), u"集团管理"_s);
        QCOMPARE(Caption(screen.form, u"lbInfo"_s), u"集团名称"_s);
        QCOMPARE(Caption(screen.form, u"BtnQuery"_s), u"查询"_s);
        QCOMPARE(Caption(screen.form, u"BtnNew"_s), u"移入用户"_s);
        QCOMPARE(Caption(screen.form, u"BtnDelete"_s), u"移出用户"_s);
        QCOMPARE(Caption(screen.form, u"BtnClose"_s), u"返回"_s);
        QCOMPARE(ColumnsOf(screen.Tree()),
                 QStringList({u"UNION_CODE 编码"_s, u"UNION_NAME 集团名称"_s,
                              u"REGION_NAME 所属区域"_s, u"MASTER_ORGNAME 主管机构"_s}));
        QCOMPARE(ColumnsOf(screen.Grid()),
                 QStringList({u"USER_CODE 登录名"_s, u"USER_NAME 用户名"_s, u"ORG_NAME 机构名称"_s,
                              u"REMARK 备注"_s, u"ENABLE_FLAG 启用标志"_s}));
    }

    void EnabledColumnShowsTheCaption()
    {
        Screen screen;
        screen.Query();
        const int column = screen.Grid().ColumnIndex(u"ENABLE_FLAG");
        QCOMPARE(screen.Grid().model()->index(0, column).data().toString(), u"启用"_s);
        QCOMPARE(screen.Grid().model()->index(1, column).data().toString(), u"禁用"_s);
    }

    void BothListsShowAllTheirColumnsInTheHostsFirstWindow()
    {
        Screen screen;
        screen.form.resize(1280, 720);
        screen.Query();
        QTRY_COMPARE(screen.form.width(), 1280);
        QCOMPARE(screen.Grid().horizontalScrollBar()->maximum(), 0);
        QCOMPARE(screen.Tree().horizontalScrollBar()->maximum(), 0);
    }

    void ListOffersMovingInAndOutInItsMenu()
    {
        Screen screen;
        QStringList menu;
        for (const QAction *action : screen.Grid().actions())
            menu << action->objectName();
        QCOMPARE(menu, QStringList({u"ActionNew"_s, u"ActionDelete"_s}));
    }

    void ForcedMoveInWithoutGroupsDoesNothingAndSaysNothing()
    {
        Screen screen;
        auto *action = Child<QAction>(&screen.form, u"ActionNew"_s);
        action->setEnabled(true);
        action->trigger();
        QVERIFY(screen.hook.Boxes().isEmpty());
    }

    void ShowFocusesTheFilterAndQueriesNothing()
    {
        Screen screen;
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        QVERIFY(screen.Enabled(u"ActionQuery"_s));
        QVERIFY(!screen.Enabled(u"ActionNew"_s));
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
    }

    void QueryLoadsGroupsThenTheUsersOfTheFirst()
    {
        Screen screen;
        Type(&screen.form, u"edInfo"_s, u" ab'c "_s);
        Press(&screen.form, u"edInfo"_s, Qt::Key_Return);
        QCOMPARE(screen.server.Statements(),
                 QStringList({Expected(u"groups.filtered"_s), Expected(u"unionusers.of10"_s)}));
        for (const auto &query : screen.server.Queries()) {
            QCOMPARE(query.page, 0);
            QCOMPARE(query.pageSize, 0);
        }
        QCOMPARE(screen.FocusedId(), u"10"_s);
        QVERIFY(screen.Tree().IsExpanded(0));
        QCOMPARE(FocusName(screen.form), u"TreeGrid"_s);
        QCOMPARE(screen.Listed().RecordCount(), 2);
        QVERIFY(screen.Enabled(u"ActionNew"_s));
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
        QCoreApplication::processEvents();
        QCOMPARE(screen.server.Queries().size(), 2); // filling the tree loads nothing by itself
    }

    void BlankFilterListsEveryGroup()
    {
        Screen screen;
        Type(&screen.form, u"edInfo"_s, u"  "_s);
        screen.Query();
        QCOMPARE(screen.server.Statements().value(0), Expected(u"groups.all"_s));
    }

    void QueryThatFindsNoGroupDisablesBothActionsAndFocusesTheFilter_data()
    {
        QTest::addColumn<bool>("again");
        QTest::newRow("first query") << false;
        QTest::newRow("after one that found some") << true;
    }
    void QueryThatFindsNoGroupDisablesBothActionsAndFocusesTheFilter()
    {
        QFETCH(bool, again);
        Screen screen;
        if (again)
            screen.Query();
        screen.server.ClearScripts();
        screen.server.ClearRecords();
        screen.server.OnQuery(u"FROM UNI_UNION A"_s).Answer(Rows(UnionColumns(), {}));
        screen.Query();
        QVERIFY(!screen.Enabled(u"ActionNew"_s));
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        QVERIFY(screen.Enabled(u"ActionQuery"_s));
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(screen.Listed().IsEmpty());
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void GroupWithoutUsersLeavesMoveOutDisabled()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        QVERIFY(screen.Listed().IsEmpty());
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        QVERIFY(screen.Enabled(u"ActionNew"_s));
        screen.Focus(u"12"_s);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void FocusedGroupsUsersAreLoaded()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"12"_s);
        QCOMPARE(screen.server.LastQuery().sql, UnionUsersSql(u"12"_s));
        QCOMPARE(screen.Listed().FieldText(u"UNION_ID"), u"12"_s);
        QCOMPARE(screen.Listed().RecordCount(), 3);
    }

    void OnlyTheGroupWhereTheFocusRestsIsLoaded()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearRecords();
        for (int step = 0; step < 3; ++step)
            Press(&screen.Tree(), Qt::Key_Down);
        QTRY_VERIFY(!screen.server.Queries().isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(screen.server.Statements(), QStringList{UnionUsersSql(u"13"_s)});
    }

    void NobodyIsMovedOutUntilTheFocusedGroupsUsersAreThere()
    {
        Screen screen;
        screen.Query();
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
        Press(&screen.Tree(), Qt::Key_End); // the list still shows the users of the first group
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        QTRY_VERIFY(screen.Enabled(u"ActionDelete"_s));
        QCOMPARE(screen.Listed().FieldText(u"UNION_ID"), u"13"_s);
    }

    void GroupIdIsTrimmed()
    {
        Screen screen(Rows(UnionColumns(), {Group(u" 12 "_s, Null(), u"0014"_s, u"华东"_s)}));
        screen.Query();
        QCOMPARE(screen.server.LastQuery().sql, UnionUsersSql(u"12"_s));
    }

    void GroupWithoutAnIdLeavesTheListAsItIs()
    {
        Screen screen(Rows(UnionColumns(), {Group(u"10"_s, Null(), u"0013"_s, u"华北"_s),
                                            Group(u" "_s, Null(), u"0014"_s, u"无号"_s)}));
        screen.Query();
        screen.server.ClearRecords();
        Press(&screen.Tree(), Qt::Key_Down);
        QTRY_VERIFY(screen.Enabled(u"ActionDelete"_s));
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Listed().RecordCount(), 2);
    }

    void QueryActionIsDisabledWhileItRuns()
    {
        Screen screen;
        QCOMPARE(
            screen.DisabledAtRequests(screen.form, {u"ActionQuery"_s}, [&] { screen.Query(); }),
            QStringList(2, u"ActionQuery"_s));
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM UNI_UNION A"_s).DatabaseDown().Times(1);
        screen.Query();
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QVERIFY(screen.hook.Boxes().first().text.contains(u"数据库不可用"_s));
        QVERIFY(screen.Enabled(u"ActionQuery"_s));
        QVERIFY(!screen.Enabled(u"ActionNew"_s));
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        screen.server.OnQuery(u"FROM UNI_UNION A"_s).Answer(Groups());
        screen.server.OnQuery(u"FROM UNI_USER_UNION A"_s).Answer(Users(u"10"_s, 2));
        screen.Query();
        QCOMPARE(screen.Listed().RecordCount(), 2);
    }

    void MovingOutAsksAndPostsOneRow()
    {
        Screen screen;
        screen.AnswerMoveOut(u"1"_s);
        screen.Query();
        screen.server.ClearRecords();
        screen.MoveOut();
        QCOMPARE(screen.Boxes(), QStringList{AskZhangWei});
        QCOMPARE(screen.server.Posts().size(), 1);
        QCOMPARE(RowTexts(screen.server.LastPost().rows),
                 QStringList{Expected(u"uniuser.moveout"_s)});
        QCOMPARE(screen.Listed().RecordCount(), 1);
        QCOMPARE(screen.Listed().FieldText(u"USER_ID"), u"702"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void MovingOutPostsTheAssignmentToTheFocusedGroupOnly()
    {
        Screen screen;
        screen.AnswerMoveOut(u"1"_s);
        screen.Query();
        screen.Focus(u"12"_s);
        screen.MoveOut(); // user 701, who is in group 10 too
        QCOMPARE(screen.server.LastPost().Value(u"USER_ID"_s), u"701"_s);
        QCOMPARE(screen.server.LastPost().Value(u"UNION_ID"_s), u"12"_s);
        screen.Focus(u"10"_s);
        QCOMPARE(screen.Listed().Find(u"USER_ID", {u"701"_s}), 0);
    }

    void AnswerNoMovesNobodyOut()
    {
        Screen screen;
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        screen.Query();
        screen.MoveOut();
        QCOMPARE(screen.Boxes(), QStringList{AskZhangWei});
        QVERIFY(screen.server.Posts().isEmpty());
        QCOMPARE(screen.Listed().RecordCount(), 2);
    }

    void FailedRemovalIsToldAndKeepsTheRow()
    {
        Screen screen;
        screen.AnswerMoveOut(u"0"_s);
        screen.Query();
        screen.MoveOut();
        QCOMPARE(screen.Boxes(), QStringList({AskZhangWei, MoveOutFailed}));
        QCOMPARE(screen.Listed().RecordCount(), 2);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void AnyOtherCodeShowsNothingAndKeepsTheRow_data()
    {
        QTest::addColumn<QString>("code");
        for (const QString &code : {u"-1"_s, u"-2"_s, u"7"_s})
            QTest::newRow(qPrintable(code)) << code;
    }
    void AnyOtherCodeShowsNothingAndKeepsTheRow()
    {
        QFETCH(QString, code);
        Screen screen;
        screen.AnswerMoveOut(code);
        screen.Query();
        screen.MoveOut();
        QCOMPARE(screen.Boxes(), QStringList{AskZhangWei});
        QCOMPARE(screen.Listed().RecordCount(), 2);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void MovingTheLastUserOutLeavesMoveOutDisabled()
    {
        Screen screen;
        screen.AnswerMoveOut(u"1"_s);
        screen.Query();
        screen.MoveOut();
        screen.MoveOut();
        QVERIFY(screen.Listed().IsEmpty());
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        QVERIFY(screen.Enabled(u"ActionNew"_s));
    }

    void MoveOutIsDisabledWhileItsPostRuns()
    {
        Screen screen;
        screen.AnswerMoveOut(u"1"_s);
        screen.Query();
        QCOMPARE(
            screen.DisabledAtRequests(screen.form, {u"ActionDelete"_s}, [&] { screen.MoveOut(); }),
            QStringList{u"ActionDelete"_s});
    }

    void BrokenRemovalKeepsTheRowAndEnablesAgain()
    {
        Screen screen;
        screen.server.OnPost(u"deleteUniUser"_s).DatabaseDown();
        screen.Query();
        screen.MoveOut();
        QCOMPARE(screen.hook.Boxes().size(), 2);
        QVERIFY(screen.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QCOMPARE(screen.Listed().RecordCount(), 2);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void MovedInUsersAreAppendedWithoutAQuery()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearRecords();
        screen.MoveIn({u"1 801"_s, u"1 802"_s});
        QCOMPARE(screen.Boxes(),
                 QStringList{u"Question|提示|确定将用户移入到“华北联合体”中吗？|Yes"_s});
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"candidateusers.all"_s)});
        QCOMPARE(screen.server.LastPost().Value(u"UNION_ID"_s, 1), u"10"_s);
        QCOMPARE(screen.Listed().RecordCount(), 4);
        QCOMPARE(screen.Listed().TextAt(2, u"USER_NAME"), u"周杰"_s);
        QCOMPARE(screen.Listed().TextAt(3, u"UNION_ID"), u"10"_s);
    }

    void UserMovedIntoAGroupWithoutUsersCanBeMovedOutAtOnce()
    {
        Screen screen;
        screen.AnswerMoveOut(u"1"_s);
        screen.Query();
        screen.Focus(u"11"_s);
        screen.MoveIn({u"1 801"_s, u"0 802"_s});
        QCOMPARE(screen.Grid().model()->rowCount(), 1);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
        screen.MoveOut();
        QCOMPARE(screen.Boxes().last(),
                 u"Question|提示|确定将用户“周杰”移出“石家庄小组”吗？|Yes"_s);
        QCOMPARE(screen.server.LastPost().Value(u"USER_ID"_s), u"801"_s);
        QCOMPARE(screen.server.LastPost().Value(u"UNION_ID"_s), u"11"_s);
    }

    void UsersAcceptedBeforeARefusalStayInTheListWhenThePickerIsCancelled()
    {
        Screen screen;
        screen.Query();
        screen.MoveIn({u"1 801"_s, u"0 802"_s});
        QCOMPARE(screen.Boxes().last(), u"Error|错误|将用户移入“华北联合体”失败！|Ok"_s);
        QCOMPARE(screen.Listed().RecordCount(), 3);
        QCOMPARE(screen.Listed().TextAt(2, u"USER_ID"), u"801"_s);
    }

    void PickerIsOpenedWithTheTrimmedGroup()
    {
        Screen screen(Rows(UnionColumns(), {Group(u" 10 "_s, Null(), u"0013"_s, u" 华北 "_s)}));
        screen.Query();
        screen.MoveIn({u"1 801"_s, u"1 802"_s});
        QCOMPARE(screen.Boxes(), QStringList{u"Question|提示|确定将用户移入到“华北”中吗？|Yes"_s});
        QCOMPARE(screen.server.LastPost().Value(u"UNION_ID"_s), u"10"_s);
    }

    void F3FindsCodeNameAndRegionButNotTheLeadingOrganisation_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("found");
        QTest::newRow("code") << u" 0014 "_s << true;
        QTest::newRow("name") << u"华东"_s << true;
        QTest::newRow("region") << u"上海"_s << true;
        QTest::newRow("leading organisation") << u"长征"_s << false;
        QTest::newRow("sub-group") << u"石家庄"_s << false;
    }
    void F3FindsCodeNameAndRegionButNotTheLeadingOrganisation()
    {
        QFETCH(QString, text);
        QFETCH(bool, found);
        Screen screen;
        screen.Query();
        screen.Search(text);
        QCOMPARE(screen.FocusedId(), found ? u"12"_s : u"10"_s);
        QCOMPARE(screen.Boxes(),
                 found ? QStringList()
                       : QStringList{u"Information|提示|搜索 \""_s + text + u"\" 完毕！|Ok"_s});
    }

    void F3LooksOnlyAtAsManyTopLevelGroupsAsTheTreeHasColumns()
    {
        Screen four(Named({u"一"_s, u"二"_s, u"三"_s, u"甲"_s, u"五"_s}));
        four.Query();
        four.Search(u"甲"_s);
        QCOMPARE(four.FocusedId(), u"4"_s);
        QVERIFY(four.Boxes().isEmpty());

        Screen five(Named({u"一"_s, u"二"_s, u"三"_s, u"四"_s, u"甲"_s}));
        five.Query();
        five.Search(u"甲"_s);
        QCOMPARE(five.FocusedId(), u"1"_s);
        QCOMPARE(five.Boxes(), QStringList{u"Information|提示|搜索 \"甲\" 完毕！|Ok"_s});
    }

    void F3FromAMatchGoesOnFromItsPlaceInTheWholeTree()
    {
        // 0013 with its sub-group stands before 0014: that is place 2 of the tree, so the search
        // goes on at top-level place 3, behind 0015 at place 2.
        Screen screen;
        screen.Query();
        screen.Focus(u"12"_s);
        screen.Search(u"联合体"_s);
        QCOMPARE(screen.FocusedId(), u"12"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|搜索 \"联合体\" 完毕！|Ok"_s});
        screen.Focus(u"10"_s);
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.FocusedId(), u"12"_s);
    }

    void F3LoadsTheUsersOfTheGroupItFinds()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearRecords();
        screen.Search(u"华东"_s);
        QTRY_COMPARE(screen.server.Statements(), QStringList{UnionUsersSql(u"12"_s)});
    }

    void F3WithAnEmptyTextDoesNothing()
    {
        Screen screen;
        screen.Query();
        screen.Search(u"  "_s);
        QCOMPARE(screen.FocusedId(), u"10"_s);
        QVERIFY(screen.Boxes().isEmpty());
    }

    void BackClosesTheScreen()
    {
        Screen screen;
        Click(&screen.form, u"BtnClose"_s);
        QTRY_VERIFY(!screen.form.isVisible());
    }
};

QTEST_MAIN(UniUserTest)
#include "UniUserTest.moc"
