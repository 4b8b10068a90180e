#include "screens/TraBuyCatalog.h"

#include "controls/LevelGrid.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QStringList OrgColumns{u"BUY_ORGID"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s,
                             u"ORG_TYPE"_s,  u"ORG_KIND"_s, u"ORG_ADDRESS"_s};
const QStringList CatalogColumns{u"CATALOG_ID"_s, u"CATALOG_NAME"_s, u"BUY_ORGID"_s, u"LAST_USER"_s,
                                 u"LAST_UPDATE"_s};
const QStringList UserColumns{u"KEY_ID"_s,    u"CATALOG_ID"_s, u"USER_ID"_s,      u"BUY_ORGID"_s,
                              u"USER_CODE"_s, u"USER_NAME"_s,  u"RELATION_FLAG"_s};

RowSet Organisations()
{
    return Rows(OrgColumns,
                {{u"501"_s, u"市第一医院"_s, u"一院"_s, u"4"_s, u"公立"_s, u"人民路 1 号"_s},
                 {u"502"_s, u"县医院"_s, u"县院"_s, u"4"_s, u"公立"_s, u"建设路 8 号"_s},
                 {u"503"_s, u"百草药房"_s, u"百草"_s, u"5"_s, u"民营"_s, u"中山路 3 号"_s}});
}

RowSet Catalogs()
{
    return Rows(CatalogColumns,
                {{u"71"_s, u"西药库"_s, u"501"_s, u"王敏"_s, u"2024-03-05 13:07:00"_s},
                 {u"72"_s, u"总库"_s, u"503"_s, u"李娜"_s, u"2024-03-06 09:00:00"_s},
                 {u"73"_s, u"中药库"_s, u"501"_s, u"王敏"_s, u"2024-03-07 10:30:00"_s}});
}

RowSet Users()
{
    return Rows(UserColumns, {{u"1"_s, u"71"_s, u"801"_s, u"501"_s, u"zhou"_s, u"周杰"_s, u"1"_s},
                              {u"2"_s, u"72"_s, u"803"_s, u"503"_s, u"li"_s, u"李平"_s, u"0"_s},
                              {u"3"_s, u"71"_s, u"802"_s, u"501"_s, u"wu"_s, u"吴敏"_s, u"0"_s}});
}

/// The screen, shown, over a server that knows three of 45 organisations, three drug stores and
/// three assignments.
class Screen : public ScreenFixture
{
public:
    Screen() { Show(Organisations(), Catalogs(), Users()); }
    Screen(const RowSet &orgs, const RowSet &catalogs) { Show(orgs, catalogs, Users()); }

    void Query() { Trigger(&form, u"ActionQuery"_s); }
    void AnswerDelete(const QString &code)
    {
        server.OnPost(u"com.business.admin.TraBuyCatalog"_s, u"deleteBuyCatalog"_s).Code(code);
    }

    LevelGrid &Grid() { return *Child<LevelGrid>(&form, u"Grid"_s); }
    GridLevel &Level(const QString &name) { return *Grid().Level(name); }
    GridLevel &OrgView() { return Level(u"GridOrgView"_s); }
    GridLevel &CatalogView() { return Level(u"GridCatalogView"_s); }
    GridLevel &UserView() { return Level(u"GridUserView"_s); }
    ClientDataSet &Orgs() { return *OrgView().DataSet(); }
    ClientDataSet &Catalogs_() { return *CatalogView().DataSet(); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    QString Focused()
    {
        return Grid()
            .currentIndex()
            .siblingAtColumn(Grid().FocusedLevel() == &OrgView())
            .data()
            .toString();
    }
    /// The names of the drug stores shown under an organisation.
    QStringList Shown(int org)
    {
        QStringList names;
        for (int at = 0; at < Grid().Model()->DetailCount(0, org); ++at)
            names << Catalogs_().TextAt(Grid().Model()->DetailRecNo(0, org, at), u"CATALOG_NAME");
        return names;
    }
    /// "New Edit": which of the four actions of the list can be run.
    QString Enabled()
    {
        QStringList names;
        for (const QString &name : {u"NewCatalog"_s, u"EditCatalog"_s, u"DelCatalog"_s,
                                    u"FullExpand"_s, u"FullCollapse"_s, u"CatalogUser"_s}) {
            if (ActionEnabled(&form, u"Action"_s + name))
                names << name;
        }
        return names.join(u' ');
    }
    void Key(Qt::Key key) { QTest::keyClick(&Grid(), key); }

    TFrmTraBuyCatalog form;

private:
    void Show(const RowSet &orgs, const RowSet &catalogs, const RowSet &users)
    {
        server.OnQuery(u"FROM BAS_ORG "_s).Answer(orgs, orgs.RowCount() == 0 ? 0 : 45);
        server.OnQuery(u"FROM TRA_BUY_CATALOG "_s).Answer(catalogs);
        server.OnQuery(u"SELECT ROWNUM"_s).Answer(users);
        ShowScreen(form);
    }
};

const QString AllEnabled = u"NewCatalog EditCatalog DelCatalog FullExpand FullCollapse "
                           "CatalogUser"_s;
const QString NoCatalogEnabled = u"NewCatalog FullExpand FullCollapse CatalogUser"_s;
const QString AskDelete = u"Question|提示|确定删除“市第一医院”的“西药库”吗？ |Yes"_s;

} // namespace

class TraBuyCatalogTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Statements ------------------------------------------------------------------------------

    void StatementsAreExact_data()
    {
        QTest::addColumn<QString>("sql");
        const auto sql = [](const char *name, const QString &text) { QTest::newRow(name) << text; };
        sql("buyorgs.all", BuyCatalogSql::Organisations({}));
        sql("buyorgs.filtered", BuyCatalogSql::Organisations(u" 协和 "_s));
        sql("buyorgs.odd", BuyCatalogSql::Organisations(u"ab'c 50%_;"_s));
        sql("catalogs.ofpage", BuyCatalogSql::Catalogs({u"501"_s, u"502"_s, u"503"_s}));
        sql("catalogs.quoted", BuyCatalogSql::Catalogs({u"5'01"_s}));
        sql("catalogusers.ofpage", BuyCatalogSql::Users({u"71"_s, u"72"_s, u"73"_s}));
        sql("catalogusers.quoted", BuyCatalogSql::Users({u"7'1"_s}));
    }
    void StatementsAreExact()
    {
        QFETCH(QString, sql);
        QCOMPARE(sql, Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void TheCodeIsNotSelectedAndItsColumnStaysEmpty()
    {
        QVERIFY(!BuyCatalogSql::Organisations({}).contains(u"ORG_CODE"_s));
        Screen screen;
        screen.Query();
        QCOMPARE(screen.Grid().Model()->IndexOf(0, 0, 0).data().toString(), QString());
        QCOMPARE(screen.Grid().Model()->IndexOf(0, 0, 1).data().toString(), u"市第一医院"_s);
    }

    // --- What is there ---------------------------------------------------------------------------

    void CaptionsAndColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form.windowTitle(), u"机构药库设置"_s);
        QCOMPARE(Caption(screen.form, u"lbOrg"_s), u"买方机构"_s);
        QCOMPARE(Caption(screen.form, u"btnQuery"_s), u"查询(&Q)"_s);
        QCOMPARE(Caption(screen.form, u"btnNewCatalog"_s), u"新增药库"_s);
        QCOMPARE(Caption(screen.form, u"btnEditCatalog"_s), u"修改药库"_s);
        QCOMPARE(Caption(screen.form, u"btnDelCatalog"_s), u"删除药库"_s);
        QCOMPARE(Caption(screen.form, u"btnFullExpand"_s), u"全部展开"_s);
        QCOMPARE(Caption(screen.form, u"btnFullCollapse"_s), u"全部折叠"_s);
        QCOMPARE(Caption(screen.form, u"btnClose"_s), u"关闭(&C)"_s);
        QCOMPARE(Child<QAction>(&screen.form, u"ActionCatalogUser"_s)->text(), u"设置用户"_s);
        const auto columns = [](const GridLevel &level) {
            QStringList texts;
            for (const GridColumn &column : ParseGridColumns(level.Columns()))
                texts << column.field + u' ' + column.caption;
            return texts;
        };
        QCOMPARE(columns(screen.OrgView()),
                 QStringList({u"ORG_CODE 机构编码"_s, u"ORG_NAME 机构全称"_s,
                              u"ORG_ABBR 机构简称"_s, u"ORG_TYPE 机构类型"_s,
                              u"ORG_KIND 机构性质"_s, u"ORG_ADDRESS 机构地址"_s}));
        QCOMPARE(columns(screen.CatalogView()),
                 QStringList({u"CATALOG_NAME 药库名称"_s, u"LAST_USER 最后更新人"_s,
                              u"LAST_UPDATE 最后更新时间"_s}));
        QCOMPARE(columns(screen.UserView()),
                 QStringList({u"USER_CODE 用户编码"_s, u"USER_NAME 用户名"_s,
                              u"RELATION_FLAG 是否关联药库产品"_s}));
        QCOMPARE(screen.Grid().Levels(),
                 QStringList({u"GridOrgView|BUY_ORGID"_s, u"GridCatalogView|CATALOG_ID|BUY_ORGID"_s,
                              u"GridUserView|KEY_ID|CATALOG_ID"_s}));
    }

    void TheListSettingsActionIsBoundToNothing()
    {
        Screen screen;
        const auto *action = Child<QAction>(&screen.form, u"ActionOption"_s);
        QCOMPARE(action->text(), u"列表设置"_s);
        QVERIFY(action->associatedObjects().isEmpty());
        QVERIFY(!action->isEnabled());
    }

    void OrganisationTypesAreThisListsOwn()
    {
        const QStringList wanted{u"生产企业"_s, u"商业企业"_s, u"物流企业"_s, u"医院"_s,
                                 u"药房"_s,     u"政府"_s,     u"营运"_s,     u""_s};
        QList<QStringList> rows;
        for (int type = 1; type <= 8; ++type)
            rows << QStringList{QString::number(500 + type), u"机构"_s, u""_s,
                                QString::number(type),       u""_s,     u""_s};
        Screen screen(Rows(OrgColumns, rows), Rows(CatalogColumns, {}));
        screen.Query();
        QStringList shown;
        for (int row = 0; row < 8; ++row)
            shown << screen.Grid().Model()->IndexOf(0, row, 3).data().toString();
        QCOMPARE(shown, wanted);
    }

    void TheProductLinkIsAReadOnlyTick()
    {
        Screen screen;
        screen.Query();
        const QModelIndex linked = screen.Grid().Model()->IndexOf(2, 0, 2);
        QCOMPARE(linked.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QCOMPARE(screen.Grid().Model()->IndexOf(2, 2, 2).data(Qt::CheckStateRole).toInt(),
                 int(Qt::Unchecked));
        QVERIFY(!linked.flags().testFlag(Qt::ItemIsUserCheckable));
    }

    void ThePagingBarKeepsTheLayoutsOwnValues()
    {
        Screen screen;
        QCOMPARE(screen.Pages().PageSizeSet(), u"20,50,100"_s);
        QCOMPARE(screen.Pages().PageSize(), 20);
        QCOMPARE(screen.Pages().ShowAllLimit(), -1);
        QVERIFY(!screen.Pages().ShowSelectAll());
    }

    void ContextMenusAreThoseOfTheLevels()
    {
        Screen screen;
        screen.Query();
        const auto menu = [&] {
            QStringList names;
            for (const QAction *action : screen.Grid().actions())
                names << (action->isSeparator() ? u"-"_s : action->objectName());
            return names.join(u' ');
        };
        QCOMPARE(menu(), u"ActionNewCatalog ActionEditCatalog - ActionDelCatalog"_s);
        screen.CatalogView().FocusRow(0);
        QCOMPARE(menu(), u"ActionNewCatalog ActionEditCatalog ActionDelCatalog"_s);
        screen.UserView().FocusRow(0);
        QCOMPARE(menu(), u"ActionCatalogUser"_s);
    }

    // --- Showing and querying --------------------------------------------------------------------

    void ShowFocusesTheFilterAndQueriesNothing()
    {
        Screen screen;
        QCOMPARE(FocusName(screen.form), u"edOrg"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Enabled(), u"CatalogUser"_s);
    }

    void APageIsThreeStatementsEachForWhatTheOneBeforeFound()
    {
        Screen screen;
        Type(&screen.form, u"edOrg"_s, u" 协和 "_s);
        screen.Query();
        QCOMPARE(screen.server.Statements(),
                 QStringList({Expected(u"buyorgs.filtered"_s), Expected(u"catalogs.ofpage"_s),
                              Expected(u"catalogusers.ofpage"_s)}));
        const auto &queries = screen.server.Queries();
        QCOMPARE(queries[0].page, 1);
        QCOMPARE(queries[0].pageSize, 20);
        for (int detail : {1, 2}) {
            QCOMPARE(queries[detail].page, 0);
            QCOMPARE(queries[detail].pageSize, 0);
        }
        for (const auto &query : queries)
            QCOMPARE(query.queryType, 2);
        QCOMPARE(screen.Pages().RecordCount(), 45);
    }

    void AFilterOfOnlyBlanksRunsTheUnfilteredQuery()
    {
        Screen screen;
        Type(&screen.form, u"edOrg"_s, u"   "_s);
        screen.Query();
        QCOMPARE(screen.server.Statements().first(), Expected(u"buyorgs.all"_s));
    }

    void EnterInTheFilterQueries()
    {
        Screen screen;
        Press(&screen.form, u"edOrg"_s, Qt::Key_Return);
        QCOMPARE(screen.server.Queries().size(), 3);
        QCOMPARE(FocusName(screen.form), u"Grid"_s);
    }

    void TheTreeOpensCollapsedAtItsFirstRow()
    {
        Screen screen;
        screen.Query();
        screen.Grid().ExpandAll();
        screen.UserView().FocusRow(1);
        screen.Query();
        QCOMPARE(FocusName(screen.form), u"Grid"_s);
        QCOMPARE(screen.Focused(), u"市第一医院"_s);
        QCOMPARE(screen.Orgs().RecNo(), 0);
        for (int org = 0; org < 3; ++org)
            QVERIFY(!screen.OrgView().IsExpanded(org));
        QCOMPARE(screen.Shown(0), QStringList({u"西药库"_s, u"中药库"_s}));
        QCOMPARE(screen.Shown(1), QStringList());
        QCOMPARE(screen.Shown(2), QStringList({u"总库"_s}));
    }

    void APageWithoutDrugStoresLeavesTheUsersClosed()
    {
        Screen screen(Organisations(), Rows(CatalogColumns, {}));
        screen.Query();
        QCOMPARE(screen.server.Queries().size(), 2);
        QVERIFY(screen.Catalogs_().IsActive());
        QVERIFY(screen.Catalogs_().IsEmpty());
        QVERIFY(!screen.UserView().DataSet()->IsActive());
    }

    void AnEmptyPageLeavesEverythingClosedAndGoesBackToTheFilter()
    {
        Screen screen(Rows(OrgColumns, {}), Catalogs());
        screen.Query();
        QCOMPARE(screen.server.Queries().size(), 1);
        QVERIFY(!screen.Catalogs_().IsActive());
        QVERIFY(!screen.UserView().DataSet()->IsActive());
        QCOMPARE(FocusName(screen.form), u"edOrg"_s);
        QCOMPARE(screen.Enabled(), u"CatalogUser"_s);
        QCOMPARE(screen.Pages().RecordCount(), 0);
    }

    void AFailedQueryLeavesTheScreenUsable()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM BAS_ORG "_s).Answer(Organisations(), 45);
        screen.server.OnAnyQuery().Error(500, u"sql.failed"_s, u"坏了"_s, u"R1"_s);
        screen.Query();
        QVERIFY(ActionEnabled(&screen.form, u"ActionQuery"_s));
        QCOMPARE(screen.Orgs().RecordCount(), 3);
        QVERIFY(!screen.Catalogs_().IsActive());
        QVERIFY(!screen.Orgs().ControlsDisabled());
        QCOMPARE(screen.Enabled(), NoCatalogEnabled);
    }

    void TheQueryButtonRestsWhileTheStatementsRun()
    {
        Screen screen;
        const QStringList disabled =
            screen.DisabledAtRequests(screen.form, {u"ActionQuery"_s}, [&] { screen.Query(); });
        QCOMPARE(disabled, QStringList({u"ActionQuery"_s, u"ActionQuery"_s, u"ActionQuery"_s}));
        QVERIFY(ActionEnabled(&screen.form, u"ActionQuery"_s));
    }

    // --- Action states ---------------------------------------------------------------------------

    void ModifyAndDeleteStartDisabledAndAQueryLeavesThemSo()
    {
        Screen screen;
        screen.Query(); // the first organisation has drug stores, but nobody went there
        QCOMPARE(screen.Enabled(), NoCatalogEnabled);
    }

    void AFocusedDrugStoreEnablesModifyAndDelete()
    {
        Screen screen;
        screen.Query();
        screen.CatalogView().FocusRow(1);
        QCOMPARE(screen.Enabled(), AllEnabled);
    }

    void AFocusedOrganisationEnablesThemOnlyIfADrugStoreOfItsOwnIsCurrent()
    {
        Screen screen;
        screen.Query();
        screen.OrgView().FocusRow(2);
        QCOMPARE(screen.Enabled(), AllEnabled);
        QCOMPARE(screen.Catalogs_().FieldText(u"CATALOG_NAME"), u"总库"_s);
        screen.OrgView().FocusRow(1); // has none; the current drug store is another's
        QCOMPARE(screen.Enabled(), NoCatalogEnabled);
        screen.OrgView().FocusRow(0);
        QCOMPARE(screen.Enabled(), AllEnabled);
        QCOMPARE(screen.Catalogs_().FieldText(u"BUY_ORGID"), u"501"_s);
    }

    void FocusChangesDuringAQueryLeaveThemAsTheyAre()
    {
        Screen screen;
        screen.Query();
        screen.CatalogView().FocusRow(1);
        screen.Query(); // focuses the first organisation
        QCOMPARE(screen.Focused(), u"市第一医院"_s);
        QCOMPARE(screen.Enabled(), AllEnabled);
    }

    void WhatTheLastPageEnabledDoesNotReachAnotherOrganisationsDrugStore()
    {
        Screen screen;
        screen.Query();
        screen.CatalogView().FocusRow(1);
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM BAS_ORG "_s).Answer(Organisations(), 45);
        screen.server.OnQuery(u"FROM TRA_BUY_CATALOG "_s)
            .Answer(Rows(CatalogColumns, {{u"72"_s, u"总库"_s, u"503"_s, u"李娜"_s, Null()}}));
        screen.server.OnQuery(u"SELECT ROWNUM"_s).Answer(Rows(UserColumns, {}));
        screen.Query(); // the first organisation has none any more
        QCOMPARE(screen.Enabled(), NoCatalogEnabled);
    }

    // --- Keys ------------------------------------------------------------------------------------

    void EnterOnARowRunsItsLevelsAction_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("dialog");
        QTest::newRow("organisation") << 0 << u"TFrmTraBuyCatalogEdit"_s;
        QTest::newRow("drug store") << 1 << u"TFrmTraBuyCatalogEdit"_s;
        QTest::newRow("user") << 2 << u"TFrmTraBuyCatalogUser"_s;
    }
    void EnterOnARowRunsItsLevelsAction()
    {
        QFETCH(int, level);
        QFETCH(QString, dialog);
        Screen screen;
        screen.server.OnQuery(u"SELECT B.USER_ID"_s)
            .Answer(Rows(
                {u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s, u"RELATION_FLAG"_s},
                {}));
        screen.Query();
        screen.Grid().AllLevels()[level]->FocusRow(0);
        QString opened;
        QString name;
        ModalVisitor visitor([&](QWidget *window) {
            opened = window->objectName();
            if (const auto *edit = window->findChild<QLineEdit *>(u"edName"_s))
                name = edit->text();
            window->close();
        });
        screen.Key(Qt::Key_Return);
        QCOMPARE(opened, dialog);
        QCOMPARE(name, level == 1 ? u"西药库"_s : QString());
    }

    void ADoubleClickOnAUserOpensTheUsersOfItsDrugStore()
    {
        Screen screen;
        screen.server.OnQuery(u"SELECT B.USER_ID"_s)
            .Answer(Rows(
                {u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s, u"RELATION_FLAG"_s},
                {}));
        screen.Query();
        screen.UserView().FocusRow(1);
        QString label;
        ModalVisitor visitor([&](QWidget *window) {
            label = Child<QLabel>(window, u"lbRoleName"_s)->text();
            window->close();
        });
        const QRect cell = screen.Grid().visualRect(screen.Grid().currentIndex());
        QTest::mouseClick(screen.Grid().viewport(), Qt::LeftButton, {}, cell.center());
        QTest::mouseDClick(screen.Grid().viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(label, u"当前药库：总库"_s);
        QVERIFY(screen.server.LastQuery().sql.contains(u"CATALOG_ID = '72'"_s));
        QVERIFY(screen.server.LastQuery().sql.contains(u"BUY_ORGID = '503'"_s));
    }

    void ADoubleClickOnADrugStoreWithoutUsersOpensItsUsersAndOneWithUsersExpands()
    {
        Screen screen;
        screen.server.OnQuery(u"SELECT B.USER_ID"_s)
            .Answer(Rows(
                {u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s, u"RELATION_FLAG"_s},
                {}));
        screen.Query();
        QStringList labels;
        const auto doubleClick = [&](int recNo) {
            screen.CatalogView().FocusRow(recNo);
            const QPoint at = screen.Grid().visualRect(screen.Grid().currentIndex()).center();
            QTest::mouseClick(screen.Grid().viewport(), Qt::LeftButton, {}, at);
            QTest::mouseDClick(screen.Grid().viewport(), Qt::LeftButton, {}, at);
        };
        doubleClick(0);
        QVERIFY(screen.CatalogView().IsExpanded(0));
        QCOMPARE(screen.server.Queries().size(), 3); // the page's, no dialog's
        ModalVisitor visitor([&](QWidget *window) {
            labels << Child<QLabel>(window, u"lbRoleName"_s)->text();
            window->close();
        });
        doubleClick(2);
        QCOMPARE(labels, QStringList{u"当前药库：中药库"_s});
        QVERIFY(screen.server.LastQuery().sql.contains(u"CATALOG_ID = '73'"_s));
        QVERIFY(screen.server.LastQuery().sql.contains(u"BUY_ORGID = '501'"_s));
    }

    void EnterOnADrugStoreWhileModifyIsDisabledDoesNothing()
    {
        Screen screen;
        screen.Query();
        screen.CatalogView().FocusRow(0);
        Child<QAction>(&screen.form, u"ActionEditCatalog"_s)->setEnabled(false);
        screen.Key(Qt::Key_Return);
        QCOMPARE(screen.Focused(), u"西药库"_s);
    }

    void ExpandAllAndCollapseAllReachTheUsers()
    {
        Screen screen;
        screen.Query();
        Click(&screen.form, u"btnFullExpand"_s);
        QVERIFY(screen.OrgView().IsExpanded(0) && screen.CatalogView().IsExpanded(0));
        Click(&screen.form, u"btnFullCollapse"_s);
        QVERIFY(!screen.OrgView().IsExpanded(0));
        screen.OrgView().Expand(0);
        QVERIFY(!screen.CatalogView().IsExpanded(0));
    }

    // --- Drug stores -----------------------------------------------------------------------------

    void TwoNewDrugStoresInARowStandUnderTheOrganisationWithoutAQuery()
    {
        Screen screen;
        screen.server.OnPost(u"insertUpdateBuyCatalog"_s)
            .Code(u"1"_s, {{u"CATALOG_ID"_s, u"91"_s}})
            .Times(1);
        screen.server.OnPost(u"insertUpdateBuyCatalog"_s)
            .Code(u"1"_s, {{u"CATALOG_ID"_s, u"92"_s}});
        screen.Query();
        screen.OrgView().FocusRow(1);
        screen.server.ClearRecords();
        ModalVisitor visitor([&](QWidget *window) {
            for (const QString &name : {u"西药库"_s, u"中药库"_s}) {
                Type(window, u"edName"_s, name);
                Click(window, u"btnSave"_s);
            }
            Click(window, u"btnCancel"_s);
        });
        Trigger(&screen.form, u"ActionNewCatalog"_s);
        QCOMPARE(screen.Shown(1), QStringList({u"西药库"_s, u"中药库"_s}));
        QVERIFY(screen.OrgView().IsExpanded(1));
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.server.Posts().size(), 2);
        QCOMPARE(RowText(screen.server.Posts()[0].rows.first()), Expected(u"buycatalog.new"_s));
        QCOMPARE(RowText(screen.server.Posts()[1].rows.first()), Expected(u"buycatalog.second"_s));
        QCOMPARE(screen.Enabled(), AllEnabled); // now it has some
    }

    void ARenamedDrugStoreShowsItsNameItsEditorAndTheTime()
    {
        Screen screen;
        screen.server.OnPost(u"insertUpdateBuyCatalog"_s).Code(u"1"_s);
        screen.Query();
        screen.CatalogView().FocusRow(0);
        screen.server.ClearRecords();
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        ModalVisitor visitor([&](QWidget *window) {
            QCOMPARE(Child<QLineEdit>(window, u"edName"_s)->text(), u"西药库"_s);
            Type(window, u"edName"_s, u" 急诊药库 "_s);
            Click(window, u"btnSave"_s);
        });
        Trigger(&screen.form, u"ActionEditCatalog"_s);
        QCOMPARE(RowText(screen.server.LastPost().rows.first()), Expected(u"buycatalog.renamed"_s));
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Catalogs_().FieldText(u"CATALOG_NAME"), u"急诊药库"_s);
        QCOMPARE(screen.Catalogs_().FieldText(u"LAST_USER"), u"王敏"_s);
        const QDateTime stamp = QDateTime::fromString(screen.Catalogs_().FieldText(u"LAST_UPDATE"),
                                                      u"yyyy-MM-dd HH:mm:ss"_s);
        QVERIFY(stamp >= before && stamp <= QDateTime::currentDateTime());
    }

    void ALeftEditorChangesNothing()
    {
        Screen screen;
        screen.Query();
        screen.CatalogView().FocusRow(0);
        ModalVisitor visitor([&](QWidget *window) {
            Type(window, u"edName"_s, u"急诊药库"_s);
            Click(window, u"btnCancel"_s);
        });
        Trigger(&screen.form, u"ActionEditCatalog"_s);
        QCOMPARE(screen.Catalogs_().FieldText(u"CATALOG_NAME"), u"西药库"_s);
        QCOMPARE(screen.Catalogs_().FieldText(u"LAST_UPDATE"), u"2024-03-05 13:07:00"_s);
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void DeleteAsksWithYesAsDefaultAndANoStopsIt()
    {
        Screen screen;
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        screen.Query();
        screen.CatalogView().FocusRow(0);
        Trigger(&screen.form, u"ActionDelCatalog"_s);
        QCOMPARE(screen.Boxes(), QStringList{AskDelete});
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void ADeletedDrugStoreDisappearsWithoutAQuery()
    {
        Screen screen;
        screen.AnswerDelete(u"1"_s);
        screen.Query();
        screen.CatalogView().FocusRow(0);
        screen.server.ClearRecords();
        Trigger(&screen.form, u"ActionDelCatalog"_s);
        QCOMPARE(screen.Boxes(), QStringList{AskDelete});
        QCOMPARE(RowText(screen.server.LastPost().rows.first()), Expected(u"buycatalog.delete"_s));
        QCOMPARE(screen.Shown(0), QStringList{u"中药库"_s});
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(FocusName(screen.form), u"Grid"_s);
        QCOMPARE(screen.Enabled(), AllEnabled);
    }

    void TheUsersOfADeletedDrugStoreStayInTheirTableUntilTheNextQuery()
    {
        Screen screen;
        screen.AnswerDelete(u"1"_s);
        screen.Query();
        screen.CatalogView().FocusRow(0);
        Trigger(&screen.form, u"ActionDelCatalog"_s);
        QCOMPARE(screen.UserView().DataSet()->RecordCount(), 3);
        QVERIFY(!screen.Grid().Model()->IndexOf(2, 0).isValid());
    }

    void AFailedDeleteSaysSoAndLeavesTheRow()
    {
        Screen screen;
        screen.AnswerDelete(u"0"_s);
        screen.Query();
        screen.CatalogView().FocusRow(0);
        Trigger(&screen.form, u"ActionDelCatalog"_s);
        QCOMPARE(screen.Boxes(), QStringList({AskDelete, u"Error|错误|删除药库失败！|Ok"_s}));
        QCOMPARE(screen.Shown(0), QStringList({u"西药库"_s, u"中药库"_s}));
        QCOMPARE(FocusName(screen.form), u"Grid"_s);
        QVERIFY(ActionEnabled(&screen.form, u"ActionDelCatalog"_s));
    }

    void AnyOtherCodeOfADeleteChangesNothingAndSaysNothing()
    {
        Screen screen;
        screen.AnswerDelete(u"-1"_s);
        screen.Query();
        screen.CatalogView().FocusRow(0);
        Trigger(&screen.form, u"ActionDelCatalog"_s);
        QCOMPARE(screen.Boxes(), QStringList{AskDelete});
        QCOMPARE(screen.Shown(0), QStringList({u"西药库"_s, u"中药库"_s}));
    }

    void DeletingTheOnlyDrugStoreOfAnOrganisationDisablesModifyAndDelete()
    {
        Screen screen;
        screen.AnswerDelete(u"1"_s);
        screen.Query();
        screen.OrgView().FocusRow(2);
        Trigger(&screen.form, u"ActionDelCatalog"_s);
        QCOMPARE(screen.Shown(2), QStringList());
        QCOMPARE(screen.Focused(), u"百草药房"_s);
        QCOMPARE(screen.Enabled(), NoCatalogEnabled);
    }

    void DeleteRestsWhileItsPostRuns()
    {
        Screen screen;
        screen.AnswerDelete(u"0"_s);
        screen.Query();
        screen.CatalogView().FocusRow(0);
        QCOMPARE(screen.DisabledAtRequests(screen.form, {u"ActionDelCatalog"_s},
                                           [&] { Trigger(&screen.form, u"ActionDelCatalog"_s); }),
                 QStringList{u"ActionDelCatalog"_s});
    }

    void WithoutDrugStoresUsersAreNotAskedFor()
    {
        Screen screen(Organisations(), Rows(CatalogColumns, {}));
        screen.Query();
        screen.server.ClearRecords();
        Trigger(&screen.form, u"ActionCatalogUser"_s);
        QVERIFY(screen.server.Queries().isEmpty());
    }

    void AUserWhoseUsersWereSubmittedStandsInTheList()
    {
        Screen screen;
        screen.server.OnQuery(u"A.RELATION_FLAG    FROM (SELECT"_s)
            .Answer(Rows(
                {u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s, u"RELATION_FLAG"_s},
                {{u"804"_s, u"qian"_s, u"钱云"_s, u"市第一医院"_s, u"1"_s}}));
        screen.server.OnQuery(u"A.USER_ID(+)"_s)
            .Answer(Rows({u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s}, {}));
        screen.server.OnPost(u"insertUpdateTraUserBuyCatalog"_s).Code(u"1"_s);
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::Yes; });
        screen.Query();
        screen.CatalogView().FocusRow(2);
        screen.server.ClearRecords();
        ModalVisitor visitor([&](QWidget *window) {
            Click(window, u"btnSave"_s);
            Click(window, u"btnClose"_s);
        });
        Trigger(&screen.form, u"ActionCatalogUser"_s);
        QCOMPARE(screen.server.Queries().size(), 2); // the dialog's own
        const LevelGridModel &model = *screen.Grid().Model();
        QCOMPARE(model.DetailCount(1, 2), 1);
        QCOMPARE(screen.UserView().DataSet()->TextAt(model.DetailRecNo(1, 2, 0), u"USER_NAME"),
                 u"钱云"_s);
        QCOMPARE(screen.Focused(), u"中药库"_s);
    }

    void ClosingFreesTheScreen()
    {
        ScreenFixture fixture;
        QPointer<TFrmTraBuyCatalog> screen = new TFrmTraBuyCatalog;
        screen->MakeEmbedded();
        ShowScreen(*screen);
        Click(screen, u"btnClose"_s);
        QTRY_VERIFY(screen.isNull());
    }
};

QTEST_MAIN(TraBuyCatalogTest)
#include "TraBuyCatalogTest.moc"
