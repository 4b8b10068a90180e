#include "screens/StockOrgSet.h"

#include "controls/BandedGrid.h"
#include "controls/ButtonEdit.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"
#include "screens/StockOrgSetAdd.h"

#include <QLabel>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QStringList Columns{u"Owner_OrgName"_s, u"ORG_NAME"_s, u"OWNER_ORGID"_s,
                          u"ORG_ID"_s,        u"SHOW_QTY"_s, u"LAST_OPERATE"_s};

RowSet Permissions()
{
    return Rows(Columns, {{u"市第一医院"_s, u"仁和医药"_s, u"501"_s, u"502"_s, u"1"_s, u"1"_s},
                          {u"市第一医院"_s, u"百草药房"_s, u"501"_s, u"503"_s, u"0"_s, u"1"_s},
                          {u"长征医院"_s, u"仁和医药"_s, u"504"_s, u"502"_s, u"0"_s, u"1"_s}});
}

RowSet OnePermission()
{
    return Rows(Columns, {{u"长征医院"_s, u"百草药房"_s, u"504"_s, u"503"_s, u"1"_s, u"1"_s}});
}

/// The screen, shown, and a server with three of 120 permissions.
class Screen : public ScreenFixture
{
public:
    explicit Screen(const RowSet &page = Permissions())
    {
        server.OnQuery(u"stk_org_set c"_s).Answer(page, 120);
        ShowScreen(form);
    }

    void Query() { Trigger(&form, u"ActQuery"_s); }
    void Delete() { Trigger(&form, u"ActDel"_s); }
    ScriptedServer::Script &OnDelete()
    {
        return server.OnPost(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s);
    }
    BandedGrid &Grid() { return *Child<BandedGrid>(&form, u"GridOrgSetView"_s); }
    ClientDataSet &Listed() { return *Grid().DataSet(); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    bool Enabled(const QString &action) { return ActionEnabled(&form, action); }
    QString Shown(int row, QStringView field)
    {
        return Grid().model()->index(row, Grid().ColumnIndex(field)).data().toString();
    }
    QStringList Viewers() { return CellTexts(Listed(), u"ORG_ID"); }

    TFrmStockOrgSet form;
};

const QString Ask = u"Question|提示|确定要删除该条记录吗？|Yes"_s;
const QString DeleteFailed = u"Information|提示|删除失败！|Ok"_s;

} // namespace

class StockOrgSetTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(StockPermissionsSql(u"  "_s), Expected(u"stock.all"_s));
        QCOMPARE(StockPermissionsSql(u" ab'c "_s), Expected(u"stock.filtered"_s));
    }

    void DeletedPermissionsAreNotAskedFor()
    {
        Screen screen;
        screen.Query();
        QVERIFY(screen.server.LastQuery().sql.contains(u" and c.last_operate <> 'D' "_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form.windowTitle(), u"库存机构开放维护"_s);
        const auto button = [&](const QString &name) {
            return Child<QPushButton>(&screen.form, name)->text();
        };
        QCOMPARE(button(u"BtnQuery"_s), u"查询(&Q)"_s);
        QCOMPARE(button(u"BtnAdd"_s), u"新增(&A)"_s);
        QCOMPARE(button(u"BtnDel"_s), u"删除(&D)"_s);
        QCOMPARE(button(u"BtnClose"_s), u"关闭(&C)"_s);
        QCOMPARE(ColumnsOf(screen.Grid()),
                 QStringList({u"ROW_NO 序号"_s, u"OWNER_ORGName 本机构"_s,
                              u"ORG_Name 允许查看机构"_s, u"SHOW_QTY 库存开放标志"_s}));
    }

    void FlagShowsWhatItMeans()
    {
        Screen screen;
        screen.Query();
        QCOMPARE(screen.Shown(0, u"SHOW_QTY"), u"数值"_s);
        QCOMPARE(screen.Shown(1, u"SHOW_QTY"), u"有或无"_s);
        QCOMPARE(screen.Shown(0, u"OWNER_ORGName"), u"市第一医院"_s);
        QCOMPARE(screen.Shown(0, u"ORG_Name"), u"仁和医药"_s);
    }

    void StylingPassReplacesTheLayoutsPagingValues()
    {
        Screen screen;
        QCOMPARE(screen.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(screen.Pages().PageSize(), 50);
        QCOMPARE(screen.Pages().ShowAllLimit(), 1000);
        QVERIFY(!screen.Pages().ShowSelectAll());
    }

    void ShowFocusesTheFilterAndQueriesNothing()
    {
        Screen screen;
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        QVERIFY(screen.Enabled(u"ActAdd"_s));
        QVERIFY(!screen.Enabled(u"ActDel"_s));
    }

    void EnterInTheFilterQueriesTheFirstPage()
    {
        Screen screen;
        Type(&screen.form, u"edInfo"_s, u" ab'c "_s);
        Press(&screen.form, u"edInfo"_s, Qt::Key_Return);
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"stock.filtered"_s)});
        QCOMPARE(screen.server.LastQuery().page, 1);
        QCOMPARE(screen.server.LastQuery().pageSize, 50);
        QCOMPARE(screen.server.LastQuery().queryType, 2);
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QCOMPARE(FocusName(screen.form), u"GridOrgSetView"_s);
        QVERIFY(screen.Enabled(u"ActDel"_s));
    }

    void QueryWithoutRowsFocusesTheFilter()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Rows(Columns, {}));
        screen.Query();
        QCOMPARE(screen.Pages().RecordCount(), 0);
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(!screen.Enabled(u"ActDel"_s));
    }

    void QueryActionIsDisabledWhileItRuns()
    {
        Screen screen;
        bool enabled = true;
        connect(&screen.server, &ScriptedServer::RequestArrived, &screen.form,
                [&] { enabled = screen.Enabled(u"ActQuery"_s); });
        screen.Query();
        QVERIFY(!enabled);
        QVERIFY(screen.Enabled(u"ActQuery"_s));
    }

    void RowNumbersRestartOnEveryPage()
    {
        Screen screen;
        screen.Query();
        QCOMPARE(screen.Shown(0, u"ROW_NO"), u"1"_s);
        QCOMPARE(screen.Shown(2, u"ROW_NO"), u"3"_s);
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(OnePermission(), 120);
        Click(&screen.Pages(), u"btnNext"_s);
        QCOMPARE(screen.server.LastQuery().page, 2);
        QCOMPARE(screen.Shown(0, u"OWNER_ORGName"), u"长征医院"_s);
        QCOMPARE(screen.Shown(0, u"ROW_NO"), u"1"_s);
    }

    void DeletionPostsTheRowAndTakesItOutOfTheList()
    {
        Screen screen;
        screen.OnDelete().Code(u"1"_s);
        screen.Query();
        screen.Delete();
        QCOMPARE(screen.Boxes(), QStringList{Ask});
        QCOMPARE(RowTexts(screen.server.LastPost().rows), QStringList{Expected(u"stock.delete"_s)});
        QCOMPARE(screen.Viewers(), QStringList({u"503"_s, u"502"_s}));
        QCOMPARE(screen.Shown(0, u"ROW_NO"), u"1"_s);
        QCOMPARE(screen.Pages().RecordCount(), 119);
        QCOMPARE(screen.server.Queries().size(), 1);
        QVERIFY(screen.Enabled(u"ActDel"_s));
    }

    void AnswerNoDeletesNothing()
    {
        Screen screen;
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        screen.Query();
        screen.Delete();
        QCOMPARE(screen.Boxes(), QStringList{Ask});
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void AnyCodeButOneLeavesTheRow_data()
    {
        QTest::addColumn<QString>("code");
        for (const char *code : {"0", "-1", "-2", "7", ""})
            QTest::newRow(qPrintable(u"code "_s + QString::fromLatin1(code)))
                << QString::fromLatin1(code);
    }
    void AnyCodeButOneLeavesTheRow()
    {
        QFETCH(QString, code);
        Screen screen;
        screen.OnDelete().Code(code);
        screen.Query();
        screen.Delete();
        QCOMPARE(screen.Boxes(), QStringList({Ask, DeleteFailed}));
        QCOMPARE(screen.Listed().RecordCount(), 3);
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QVERIFY(screen.Enabled(u"ActDel"_s));
    }

    void LastRowOfThePageDeletedDisablesDeletion()
    {
        Screen screen(OnePermission());
        screen.OnDelete().Code(u"1"_s);
        screen.Query();
        screen.Delete();
        QCOMPARE(screen.Listed().RecordCount(), 0);
        QVERIFY(!screen.Enabled(u"ActDel"_s));
    }

    void DeletionIsDisabledWhileItsPostRuns()
    {
        Screen screen;
        screen.OnDelete().Code(u"0"_s);
        screen.Query();
        bool enabled = true;
        connect(&screen.server, &ScriptedServer::RequestArrived, &screen.form,
                [&] { enabled = screen.Enabled(u"ActDel"_s); });
        screen.Delete();
        QVERIFY(!enabled);
        QVERIFY(screen.Enabled(u"ActDel"_s));
    }

    void BrokenDeletionLeavesTheRowAndCanBeRepeated()
    {
        Screen screen;
        screen.OnDelete().Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s).Times(1);
        screen.OnDelete().Code(u"1"_s);
        screen.Query();
        screen.Delete();
        QVERIFY(screen.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QCOMPARE(screen.Listed().RecordCount(), 3);
        screen.Delete();
        QCOMPARE(screen.Listed().RecordCount(), 2);
    }

    void AdditionWithoutASaveQueriesNothing()
    {
        Screen screen;
        ModalVisitor visitor([](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"新增库存开放机构"_s);
            Click(dialog, u"cxButton2"_s);
        });
        Trigger(&screen.form, u"ActAdd"_s);
        QVERIFY(visitor.Visited());
        QVERIFY(screen.server.Queries().isEmpty());
    }

    /// Ends with the answer to the keep-going question or, after "yes", with the close button.
    void AdditionWithASaveQueriesTheFirstPageAgain_data()
    {
        QTest::addColumn<bool>("keepGoing");
        QTest::newRow("done") << false;
        QTest::newRow("went on, then closed") << true;
    }
    void AdditionWithASaveQueriesTheFirstPageAgain()
    {
        QFETCH(bool, keepGoing);
        Screen screen;
        screen.Query();
        Click(&screen.Pages(), u"btnNext"_s);
        screen.server.OnQuery(u"select '0' as selected"_s)
            .Answer(Rows({u"SELECTED"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ID"_s},
                         {{u"1"_s, u"H601"_s, u"市第二医院"_s, u"601"_s}}));
        screen.server.OnPost(u"stockOrgManager"_s).Code(u"1"_s);
        screen.hook.SetAnswer(
            [&](const TMessageBox &) { return keepGoing ? TBoxButton::Yes : TBoxButton::No; });
        ModalVisitor visitor([](QWidget *dialog) {
            Child<ButtonEdit>(dialog, u"edOwnerOrg"_s)->SetChoice(u"501"_s, u"市第一医院"_s);
            Click(dialog, u"btnQuery"_s);
            Click(dialog, u"cxButton1"_s);
            if (dialog->isVisible())
                Click(dialog, u"cxButton2"_s);
        });
        Trigger(&screen.form, u"ActAdd"_s);
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"stock.all"_s));
        QCOMPARE(screen.server.LastQuery().page, 1);
    }

    void CloseClosesTheScreen()
    {
        Screen screen;
        Trigger(&screen.form, u"ActClose"_s);
        QVERIFY(!screen.form.isVisible());
    }
};

QTEST_MAIN(StockOrgSetTest)
#include "StockOrgSetTest.moc"
