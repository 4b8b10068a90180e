#include "screens/UniProduct.h"

#include "controls/DataGrid.h"
#include "controls/ImageComboBox.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

/// Products 91 .. of the group's catalogue, by their states.
RowSet Catalogue(const QStringList &states = {u"0"_s, u"1"_s, u"2"_s, u"7"_s})
{
    QList<QStringList> rows;
    for (const QString &state : states) {
        const QString id = QString::number(91 + rows.size());
        rows << QStringList{
            u"10"_s, id, state, u"0"_s, u"P"_s + id, u"阿莫西林胶囊"_s, u"齐鲁制药厂"_s, u"齐鲁"_s};
    }
    return Rows({u"UNION_ID"_s, u"PRODUCT_ID"_s, u"ENABLE_FLAG"_s, u"SELECTED"_s,
                 u"PRODUCT_SERIAL"_s, u"PRODUCT_NAME"_s, u"FACTORY_NAME"_s, u"FACTORY_ABBR"_s},
                rows);
}

/// Products 81 .. of the master that are not in it. Their rows have no UNION_ID.
RowSet Candidates(int count = 4)
{
    QList<QStringList> rows;
    for (int row = 0; row < count; ++row) {
        const QString id = QString::number(81 + row);
        rows << QStringList{u"0"_s, id, u"P"_s + id, u"头孢呋辛酯片"_s, u"华北制药"_s};
    }
    return Rows(
        {u"SELECTED"_s, u"PRODUCT_ID"_s, u"PRODUCT_SERIAL"_s, u"PRODUCT_NAME"_s, u"FACTORY_ABBR"_s},
        rows);
}

/// The screen over group 10, shown, and a server that knows four products on either side, 120 in
/// all. The form frees itself; what a test leaves open goes with the fixture.
class Screen : public ScreenFixture
{
public:
    explicit Screen(const QString &unionId = u"10"_s)
        : form(new TFrmUniProduct(nullptr, unionId))
    {
        server.OnQuery(u"FROM UNI_PRODUCT A,    BAS_PRODUCT B"_s).Answer(Catalogue(), 120);
        server.OnQuery(u"FROM BAS_PRODUCT A,"_s).Answer(Candidates(), 120);
        ShowScreen(*form);
    }
    ~Screen() { delete form; }

    void QueryIn() { Trigger(form, u"ActionQueryIn"_s); }
    void QueryOut()
    {
        Child<QTabWidget>(form, u"cxPageControl1"_s)->setCurrentIndex(1);
        Trigger(form, u"ActionQueryOut"_s);
    }
    DataGrid &GridIn() { return *Child<DataGrid>(form, u"GridOrgIn"_s); }
    DataGrid &GridOut() { return *Child<DataGrid>(form, u"GridOut"_s); }
    TPageGuide &PagesIn() { return *Child<TPageGuide>(form, u"PageGuide1"_s); }
    TPageGuide &PagesOut() { return *Child<TPageGuide>(form, u"PageGuide2"_s); }
    bool Enabled(const QString &action) { return ActionEnabled(form, action); }
    void AnswerMove(const QString &method, const QStringList &results)
    {
        server.OnPost(u"com.business.admin.Uni_Product"_s, method)
            .Results(ResultRows(u"PRODUCT_ID"_s, results));
    }
    void MoveOut() { Trigger(form, u"ActionDelete"_s); }
    void MoveIn() { Trigger(form, u"ActionNew"_s); }
    /// Lists the catalogue, ticks rows, makes one current and moves the ticked ones out, which the
    /// server answers with `results`, as "1 91"; questions are answered with yes.
    void MoveOut(const QList<int> &rows, const QStringList &results, int current = 0)
    {
        QueryIn();
        Move(GridIn(), rows, current, u"move_out_Uni_Product"_s, results);
        MoveOut();
    }
    /// The same with the candidates.
    void MoveIn(const QList<int> &rows, const QStringList &results, int current = 0)
    {
        QueryOut();
        Move(GridOut(), rows, current, u"move_in_Uni_Product"_s, results);
        MoveIn();
    }
    void SayYes()
    {
        hook.SetAnswer([](const TMessageBox &box) {
            return box.buttons.contains(TBoxButton::Yes) ? TBoxButton::Yes : TBoxButton::Ok;
        });
    }

    QPointer<TFrmUniProduct> form;

private:
    void Move(DataGrid &grid, const QList<int> &rows, int current, const QString &method,
              const QStringList &results)
    {
        Tick(grid, rows);
        grid.DataSet()->SetRecNo(current);
        SayYes();
        AnswerMove(method, results);
    }
};

QStringList ShownProducts(const DataGrid &grid)
{
    return CellTexts(*grid.DataSet(), u"PRODUCT_ID");
}

QString CurrentProduct(const DataGrid &grid)
{
    return grid.DataSet()->FieldText(u"PRODUCT_ID");
}

const QString NoneOut = u"Information|提示|请选择要移出的产品！|Ok"_s;
const QString NoneIn = u"Information|提示|请选择要移入的产品！|Ok"_s;
const QString AskOutTwo = u"Question|系统提示|是否真的要移出 2 条记录！|No"_s;
const QString AskInTwo = u"Question|系统提示|是否真的要移入 2 条产品！|No"_s;
const QString AskOutThree = u"Question|系统提示|是否真的要移出 3 条记录！|No"_s;
const QString AskInThree = u"Question|系统提示|是否真的要移入 3 条产品！|No"_s;
const QString FailedOut = u"Error|错误|产品移出失败！|Ok"_s;
const QString FailedIn = u"Error|错误|产品移入失败！|Ok"_s;
const QString Exists = u"Warning|警告|该产品已存在！|Ok"_s;

} // namespace

class UniProductTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Statements ----------------------------------------------------------------------------

    void CatalogueStatementsAreExact_data()
    {
        QTest::addColumn<QString>("unionId");
        QTest::addColumn<QString>("information");
        QTest::addColumn<QString>("factory");
        QTest::addColumn<QString>("statusText");
        QTest::addColumn<QString>("statusValue");
        QTest::newRow("uniproduct.in.all") << u"1'0"_s << u"  "_s << u""_s << u"全部"_s << u"-1"_s;
        QTest::newRow("uniproduct.in.text")
            << u"10"_s << u" ab'c "_s << u" "_s << u"全部"_s << u"-1"_s;
        QTest::newRow("uniproduct.in.factory")
            << u"10"_s << u""_s << u" 齐鲁 "_s << u"全部"_s << u"-1"_s;
        QTest::newRow("uniproduct.in.both")
            << u"10"_s << u"阿莫"_s << u"ql"_s << u" 全部 "_s << u"-1"_s;
        QTest::newRow("uniproduct.in.status")
            << u"10"_s << u""_s << u""_s << u" 已启用 "_s << u"1"_s;
        QTest::newRow("uniproduct.in.full")
            << u"10"_s << u"阿莫"_s << u"ql"_s << u"已禁用"_s << u"2"_s;
    }
    void CatalogueStatementsAreExact()
    {
        QFETCH(QString, unionId);
        QFETCH(QString, information);
        QFETCH(QString, factory);
        QFETCH(QString, statusText);
        QFETCH(QString, statusValue);
        QCOMPARE(UniProductSql::Catalogue(unionId, {information, factory, statusText, statusValue}),
                 Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void CandidateStatementsAreExact_data()
    {
        QTest::addColumn<QString>("unionId");
        QTest::addColumn<QString>("information");
        QTest::addColumn<QString>("factory");
        QTest::newRow("uniproduct.out.all") << u"1'0"_s << u"  "_s << u""_s;
        QTest::newRow("uniproduct.out.text") << u"10"_s << u" ab'c "_s << u" "_s;
        QTest::newRow("uniproduct.out.factory") << u"10"_s << u""_s << u" 齐鲁 "_s;
        QTest::newRow("uniproduct.out.both") << u"10"_s << u"阿莫"_s << u"ql"_s;
    }
    void CandidateStatementsAreExact()
    {
        QFETCH(QString, unionId);
        QFETCH(QString, information);
        QFETCH(QString, factory);
        QCOMPARE(UniProductSql::Candidates(unionId, {information, factory}),
                 Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void CandidatesAreEnabledMasterProductsWithoutALiveCatalogueRow()
    {
        const QString sql = UniProductSql::Candidates(u"10"_s, {});
        QVERIFY(sql.contains(u"A.ENABLE_FLAG='1'"_s));
        QVERIFY(sql.contains(u"A.PRODUCT_ID=B.PRODUCT_ID(+)"_s));
        QVERIFY(sql.contains(u"nvl(A.LAST_OPERATE,'null') <> 'D'"_s));
        QVERIFY(sql.contains(u"B.PRODUCT_ID IS  NULL"_s));
    }

    // --- Layout --------------------------------------------------------------------------------

    void CaptionsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form->windowTitle(), u"集团产品维护"_s);
        const auto *tabs = Child<QTabWidget>(screen.form, u"cxPageControl1"_s);
        QCOMPARE(tabs->tabText(0), u"已维护"_s);
        QCOMPARE(tabs->tabText(1), u"未维护"_s);
        QCOMPARE(tabs->currentIndex(), 0);
        const QList<std::pair<QString, QString>> buttons{
            {u"BtnQuery"_s, u"查询"_s},      {u"BtnAdd"_s, u"移出"_s},
            {u"cxButton6"_s, u"查看日志"_s}, {u"BtnClose"_s, u"返回"_s},
            {u"cxButton1"_s, u"查询"_s},     {u"cxButton2"_s, u"移入"_s},
            {u"cxButton3"_s, u"返回"_s},
        };
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Child<QPushButton>(screen.form, name)->text(), caption);
        for (const auto &name : {u"lbInformation"_s, u"lbInformation1"_s})
            QCOMPARE(Child<QLabel>(screen.form, name)->text(), u"产品信息"_s);
        for (const auto &name : {u"lbFactory"_s, u"lbFactory1"_s})
            QCOMPARE(Child<QLabel>(screen.form, name)->text(), u"生产企业"_s);
    }

    void ColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(
            ColumnsOf(screen.GridIn()),
            QStringList({u"PRODUCT_NAME 通用名"_s, u"PRODUCT_SERIAL 编码"_s,
                         u"FACTORY_NAME 生产企业"_s, u"FULL_SPEC 包装规格"_s, u"SELECTED 选择"_s,
                         u"DOSE_NAME 剂型"_s, u"WRAP_NAME 包装材质"_s, u"ENABLE_FLAG 状态"_s,
                         u"TRADE_NAME 商品名"_s, u"REGION_NAME 所属区域 hidden"_s}));
        QCOMPARE(
            ColumnsOf(screen.GridOut()),
            QStringList({u"PRODUCT_NAME 通用名"_s, u"PRODUCT_SERIAL 编码"_s,
                         u"FACTORY_ABBR 生产企业"_s, u"FULL_SPEC 包装规格"_s, u"SELECTED 选择"_s,
                         u"TRADE_NAME 商品名"_s, u"DOSE_NAME 剂型"_s, u"WRAP_NAME 包装材质"_s}));
    }

    void StatusColumnShowsItsCaptionAndNothingForAnUnknownState()
    {
        Screen screen;
        screen.QueryIn();
        const int column = screen.GridIn().ColumnIndex(u"ENABLE_FLAG");
        QStringList shown;
        for (int row = 0; row < 4; ++row)
            shown << screen.GridIn().model()->index(row, column).data().toString();
        QCOMPARE(shown, QStringList({u"未启用"_s, u"已启用"_s, u"已禁用"_s, u""_s}));
    }

    void StatusBoxIsHiddenAndStandsOnAll()
    {
        Screen screen;
        const auto *status = Child<ImageComboBox>(screen.form, u"cxEnable"_s);
        QVERIFY(status->isHidden());
        QCOMPARE(status->Items(), QStringList({u"-1|全部"_s, u"1|已启用"_s, u"2|已禁用"_s}));
        QCOMPARE(status->EditValue(), u"-1"_s);
    }

    void PagingBarsTakeTheValuesOfTheStylingPassAndSelectAll()
    {
        Screen screen;
        for (TPageGuide *pages : {&screen.PagesIn(), &screen.PagesOut()}) {
            QCOMPARE(pages->PageSizeSet(), u"50,100,200"_s);
            QCOMPARE(pages->PageSize(), 50);
            QCOMPARE(pages->ShowAllLimit(), 1000);
            QVERIFY(pages->ShowSelectAll());
        }
    }

    void MenuItemsWithoutBehaviourAreUnavailableEvenWithRows()
    {
        Screen screen;
        screen.QueryIn();
        QStringList menu;
        for (const QAction *action : screen.GridIn().actions())
            menu << action->text() + (action->isEnabled() ? u""_s : u" -"_s);
        QCOMPARE(menu, QStringList(
                           {u"启用 -"_s, u"禁用 -"_s, u"移出"_s, u"查看日志"_s, u"列表设置 -"_s}));
        QVERIFY(screen.GridOut().actions().isEmpty());
    }

    // --- Queries -------------------------------------------------------------------------------

    void ShowingQueriesNothingAndOffersNoMove()
    {
        Screen screen;
        QVERIFY(screen.server.Queries().isEmpty());
        for (const auto &action : {u"ActionDelete"_s, u"ActionLog"_s, u"ActionNew"_s})
            QVERIFY(!screen.Enabled(action));
        QCOMPARE(screen.form->focusWidget()->objectName(), u"cxInformation"_s);
    }

    void CatalogueQueryLoadsAPageAndFocusesTheGrid()
    {
        Screen screen;
        Type(screen.form, u"cxInformation"_s, u" 阿莫 "_s);
        Type(screen.form, u"cxFactory"_s, u"ql"_s);
        Click(screen.form, u"BtnQuery"_s);
        const auto query = screen.server.LastQuery();
        QCOMPARE(query.sql, Expected(u"uniproduct.in.both"_s));
        QCOMPARE(query.page, 1);
        QCOMPARE(query.pageSize, 50);
        QCOMPARE(query.queryType, 2);
        QCOMPARE(screen.PagesIn().RecordCount(), 120);
        QCOMPARE(screen.form->focusWidget()->objectName(), u"GridOrgIn"_s);
        QVERIFY(screen.Enabled(u"ActionDelete"_s) && screen.Enabled(u"ActionLog"_s));
        QVERIFY(!screen.Enabled(u"ActionNew"_s));
    }

    void CandidateQueryLoadsAPageAndFocusesTheGrid()
    {
        Screen screen;
        Child<QTabWidget>(screen.form, u"cxPageControl1"_s)->setCurrentIndex(1);
        Type(screen.form, u"cxInformation1"_s, u"阿莫"_s);
        Type(screen.form, u"cxFactory1"_s, u" ql "_s);
        Click(screen.form, u"cxButton1"_s);
        const auto query = screen.server.LastQuery();
        QCOMPARE(query.sql, Expected(u"uniproduct.out.both"_s));
        QCOMPARE(query.page, 1);
        QCOMPARE(query.pageSize, 50);
        QCOMPARE(query.queryType, 2);
        QCOMPARE(screen.PagesOut().RecordCount(), 120);
        QCOMPARE(screen.form->focusWidget()->objectName(), u"GridOut"_s);
        QVERIFY(screen.Enabled(u"ActionNew"_s));
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
    }

    void QueryWithoutRowsFocusesTheGridAllTheSameAndOffersNoMove()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Catalogue({}));
        screen.QueryIn();
        QCOMPARE(screen.PagesIn().RecordCount(), 0);
        QCOMPARE(screen.form->focusWidget()->objectName(), u"GridOrgIn"_s);
        QVERIFY(!screen.Enabled(u"ActionDelete"_s) && !screen.Enabled(u"ActionLog"_s));
    }

    void StatusOtherThanAllWrapsTheStatement()
    {
        Screen screen;
        Child<ImageComboBox>(screen.form, u"cxEnable"_s)->SetEditValue(u"1"_s);
        screen.QueryIn();
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"uniproduct.in.status"_s));
    }

    void EnterInAFilterAsksForItsTabsFirstPage_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<int>("tab");
        QTest::newRow("cxInformation") << u"cxInformation"_s << 0;
        QTest::newRow("cxFactory") << u"cxFactory"_s << 0;
        QTest::newRow("cxInformation1") << u"cxInformation1"_s << 1;
        QTest::newRow("cxFactory1") << u"cxFactory1"_s << 1;
    }
    void EnterInAFilterAsksForItsTabsFirstPage()
    {
        QFETCH(QString, filter);
        QFETCH(int, tab);
        Screen screen;
        tab == 0 ? screen.QueryIn() : screen.QueryOut();
        Click(tab == 0 ? &screen.PagesIn() : &screen.PagesOut(), u"btnNext"_s);
        QCOMPARE(screen.server.LastQuery().page, 2);
        Press(screen.form, filter, Qt::Key_Return);
        QCOMPARE(screen.server.LastQuery().page, 1);
        QCOMPARE(screen.server.LastQuery().sql,
                 tab == 0 ? UniProductSql::Catalogue(u"10"_s, {{}, {}, u"全部"_s, {}})
                          : UniProductSql::Candidates(u"10"_s, {}));
    }

    void QuotePercentAndSemicolonTravelAsTyped()
    {
        Screen screen;
        for (const auto &filter : {u"cxInformation"_s, u"cxFactory"_s}) {
            Type(screen.form, filter, u"50%_';"_s);
            Press(screen.form, filter, Qt::Key_Return);
            QVERIFY(screen.server.LastQuery().sql.contains(u"like '%50%_'';%'"_s));
        }
        QCOMPARE(screen.server.LastQuery().sql.count(u"like '%50%_'';%'"_s), 10);
    }

    void QueryActionsAreDisabledWhileTheyRun()
    {
        Screen screen;
        const QStringList actions{u"ActionQueryIn"_s, u"ActionQueryOut"_s};
        QCOMPARE(screen.DisabledAtRequests(*screen.form, actions,
                                           [&] {
                                               screen.QueryIn();
                                               screen.QueryOut();
                                           }),
                 actions);
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        Screen screen;
        screen.QueryIn();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown().Times(1);
        screen.server.OnAnyQuery().Answer(Catalogue(), 4);
        screen.QueryIn();
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        screen.QueryIn();
        QCOMPARE(ShownProducts(screen.GridIn()).size(), 4);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void ChangingTheTabKeepsEachList()
    {
        Screen screen;
        screen.QueryIn();
        screen.QueryOut();
        Tick(screen.GridOut(), {1});
        const int queries = int(screen.server.Queries().size());
        auto *tabs = Child<QTabWidget>(screen.form, u"cxPageControl1"_s);
        tabs->setCurrentIndex(0);
        QCOMPARE(ShownProducts(screen.GridIn()).size(), 4);
        tabs->setCurrentIndex(1);
        QCOMPARE(screen.GridOut().DataSet()->TextAt(1, u"SELECTED"), u"1"_s);
        QCOMPARE(int(screen.server.Queries().size()), queries);
    }

    // --- Ticks ---------------------------------------------------------------------------------

    void TickIsPostedAtOnce()
    {
        Screen screen;
        screen.QueryIn();
        Tick(screen.GridIn(), {2});
        QCOMPARE(screen.GridIn().DataSet()->TextAt(2, u"SELECTED"), u"1"_s);
        QCOMPARE(screen.GridIn().DataSet()->CurrentState(), ClientDataSet::State::Browse);
        Tick(screen.GridIn(), {2});
        QCOMPARE(screen.GridIn().DataSet()->TextAt(2, u"SELECTED"), u"0"_s);
    }

    void SelectAllOfEitherBarTicksItsPageAndKeepsTheCurrentRow()
    {
        Screen screen;
        screen.QueryIn();
        screen.QueryOut();
        screen.GridOut().DataSet()->SetRecNo(2);
        auto *all = Child<QCheckBox>(&screen.PagesOut(), u"ckSelectAll"_s);
        all->setChecked(true);
        const auto ticks = [](const DataGrid &grid) {
            QStringList values;
            for (int row = 0; row < grid.DataSet()->RecordCount(); ++row)
                values << grid.DataSet()->TextAt(row, u"SELECTED");
            return values.join(QString());
        };
        QCOMPARE(ticks(screen.GridOut()), u"1111"_s);
        QCOMPARE(ticks(screen.GridIn()), u"0000"_s);
        QCOMPARE(screen.GridOut().DataSet()->RecNo(), 2);
        all->setChecked(false);
        QCOMPARE(ticks(screen.GridOut()), u"0000"_s);
        Child<QCheckBox>(&screen.PagesIn(), u"ckSelectAll"_s)->setChecked(true);
        QCOMPARE(ticks(screen.GridIn()), u"1111"_s);
        QCOMPARE(ticks(screen.GridOut()), u"0000"_s);
    }

    // --- Moving out ----------------------------------------------------------------------------

    void MovingOutWithNothingTickedSaysSoAndPostsNothing()
    {
        Screen screen;
        screen.QueryIn();
        screen.MoveOut();
        QCOMPARE(screen.Boxes(), QStringList{NoneOut});
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void MovingOutAsksFirstAndNoIsTheDefault()
    {
        Screen screen;
        screen.QueryIn();
        Tick(screen.GridIn(), {0, 2});
        screen.MoveOut(); // the hook answers with the default button
        QCOMPARE(screen.Boxes(), QStringList{AskOutTwo});
        QVERIFY(screen.server.Posts().isEmpty());
        QCOMPARE(ShownProducts(screen.GridIn()).size(), 4);
    }

    void MovingOutPostsTheTickedRowsAndTakesThemOut()
    {
        Screen screen;
        screen.MoveOut({0, 2}, {u"1 91"_s, u"1 93"_s});
        const auto post = screen.server.LastPost();
        QCOMPARE(post.rows.size(), 2);
        QCOMPARE(RowText(post.rows.at(0)), Expected(u"uniproduct.moveout.1"_s));
        QCOMPARE(RowText(post.rows.at(1)), Expected(u"uniproduct.moveout.3"_s));
        QCOMPARE(screen.Boxes(), QStringList{AskOutTwo});
        QCOMPARE(ShownProducts(screen.GridIn()), QStringList({u"92"_s, u"94"_s}));
        QCOMPARE(screen.PagesIn().RecordCount(), 118);
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void ResultsInAnotherOrderTakeTheirOwnRowsOut()
    {
        Screen screen;
        screen.MoveOut({0, 2}, {u"1 93"_s, u"1 55"_s});
        QCOMPARE(ShownProducts(screen.GridIn()), QStringList({u"91"_s, u"92"_s, u"94"_s}));
        QCOMPARE(screen.PagesIn().RecordCount(), 119);
    }

    void PreviousCurrentRowIsRestoredIfItStillExists()
    {
        Screen screen;
        screen.MoveOut({0, 2}, {u"1 91"_s, u"1 93"_s}, 3);
        QCOMPARE(CurrentProduct(screen.GridIn()), u"94"_s);
        QCOMPARE(screen.GridIn().currentIndex().row(), 1);
    }

    void ACurrentRowThatWasMovedGivesWayToTheOneBehindTheLastMoved()
    {
        Screen screen;
        screen.MoveOut({0, 2}, {u"1 91"_s, u"1 93"_s}, 0);
        QCOMPARE(CurrentProduct(screen.GridIn()), u"94"_s);
    }

    void ZeroInTheMiddleStopsTheWalkAndLeavesTheRowsBehindItEvenIfTheServerMovedThem()
    {
        Screen screen;
        screen.MoveOut({0, 1, 2}, {u"1 91"_s, u"0 92"_s, u"1 93"_s}, 3);
        QCOMPARE(screen.Boxes(), QStringList({AskOutThree, FailedOut}));
        QCOMPARE(ShownProducts(screen.GridIn()), QStringList({u"92"_s, u"93"_s, u"94"_s}));
        QCOMPARE(screen.PagesIn().RecordCount(), 119);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void AStoppedWalkLeavesTheCurrentRowWhereItStopped()
    {
        Screen screen;
        screen.MoveOut({0, 1}, {u"1 91"_s, u"0 92"_s}, 3);
        QCOMPARE(CurrentProduct(screen.GridIn()), u"92"_s);
    }

    void MovingTheLastRowOutEndsItsActions()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Catalogue({u"1"_s}));
        screen.MoveOut({0}, {u"1 91"_s});
        QCOMPARE(screen.PagesIn().RecordCount(), 0);
        QVERIFY(!screen.Enabled(u"ActionDelete"_s) && !screen.Enabled(u"ActionLog"_s));
    }

    void ResultCodesThatNobodyExpectsArePassedOver()
    {
        Screen screen;
        screen.MoveOut({0, 1, 2}, {u"-1 91"_s, u"-2 92"_s, u"1 93"_s});
        QCOMPARE(screen.Boxes(), QStringList{AskOutThree});
        QCOMPARE(ShownProducts(screen.GridIn()), QStringList({u"91"_s, u"92"_s, u"94"_s}));
    }

    void MoveActionsAreDisabledWhileTheyRun()
    {
        Screen screen;
        screen.QueryIn();
        screen.QueryOut();
        Tick(screen.GridOut(), {0});
        TickAllIn(screen);
        screen.SayYes();
        screen.AnswerMove(u"move_out_Uni_Product"_s, {u"-2 91"_s});
        screen.AnswerMove(u"move_in_Uni_Product"_s, {u"-2 81"_s});
        const QStringList actions{u"ActionDelete"_s, u"ActionNew"_s};
        QCOMPARE(screen.DisabledAtRequests(*screen.form, actions,
                                           [&] {
                                               screen.MoveOut();
                                               screen.MoveIn();
                                           }),
                 actions);
    }

    void FailedPostLosesNothing()
    {
        Screen screen;
        screen.QueryIn();
        Tick(screen.GridIn(), {0, 2});
        screen.SayYes();
        screen.server.OnPost(u"move_out_Uni_Product"_s).DatabaseDown().Times(1);
        screen.AnswerMove(u"move_out_Uni_Product"_s, {u"1 91"_s, u"1 93"_s});
        screen.MoveOut();
        QCOMPARE(screen.hook.Boxes().size(), 2);
        QCOMPARE(ShownProducts(screen.GridIn()).size(), 4);
        QCOMPARE(screen.PagesIn().RecordCount(), 120);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
        screen.MoveOut();
        QCOMPARE(ShownProducts(screen.GridIn()), QStringList({u"92"_s, u"94"_s}));
    }

    void FiveHundredMovedRowsLeaveTheGridInOneStep()
    {
        Screen screen;
        screen.server.ClearScripts();
        QStringList states;
        QStringList results;
        for (int row = 0; row < 1000; ++row) {
            states << u"1"_s;
            if (row < 500)
                results << u"1 "_s + QString::number(91 + row);
        }
        screen.server.OnAnyQuery().Answer(Catalogue(states));
        screen.QueryIn();
        TickAllIn(screen);
        screen.SayYes();
        screen.AnswerMove(u"move_out_Uni_Product"_s, results);
        const QSignalSpy resets(screen.GridIn().model(), &QAbstractItemModel::modelReset);
        const QSignalSpy removals(screen.GridIn().model(), &QAbstractItemModel::rowsRemoved);
        screen.MoveOut();
        QCOMPARE(resets.size(), 1);
        QCOMPARE(removals.size(), 0);
        QCOMPARE(ShownProducts(screen.GridIn()).size(), 500);
        QCOMPARE(screen.PagesIn().RecordCount(), 500);
    }

    // --- Moving in -----------------------------------------------------------------------------

    void MovingInWithNothingTickedSaysSoAndPostsNothing()
    {
        Screen screen;
        screen.QueryOut();
        screen.MoveIn();
        QCOMPARE(screen.Boxes(), QStringList{NoneIn});
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void MovingInAsksFirstAndNoIsTheDefault()
    {
        Screen screen;
        screen.QueryOut();
        Tick(screen.GridOut(), {0, 2});
        screen.MoveIn();
        QCOMPARE(screen.Boxes(), QStringList{AskInTwo});
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void MovedInRowsAreFoundByTheirProductAlone()
    {
        Screen screen;
        screen.MoveIn({0, 2}, {u"1 81"_s, u"1 83"_s}, 3);
        QVERIFY(!screen.GridOut().DataSet()->HasField(u"UNION_ID"));
        const auto post = screen.server.LastPost();
        QCOMPARE(post.rows.size(), 2);
        QCOMPARE(RowText(post.rows.at(0)), Expected(u"uniproduct.movein.1"_s));
        QCOMPARE(RowText(post.rows.at(1)), Expected(u"uniproduct.movein.3"_s));
        QCOMPARE(screen.Boxes(), QStringList{AskInTwo});
        QCOMPARE(ShownProducts(screen.GridOut()), QStringList({u"82"_s, u"84"_s}));
        QCOMPARE(CurrentProduct(screen.GridOut()), u"84"_s);
        QCOMPARE(screen.PagesOut().RecordCount(), 118);
    }

    void ProductThatAnotherOperatorHasJustAddedStaysInTheListUnchanged()
    {
        Screen screen;
        screen.MoveIn({1}, {u"-1 82"_s});
        QCOMPARE(screen.Boxes().last(), Exists);
        QCOMPARE(ShownProducts(screen.GridOut()),
                 QStringList({u"81"_s, u"82"_s, u"83"_s, u"84"_s}));
        QCOMPARE(screen.GridOut().DataSet()->TextAt(1, u"SELECTED"), u"1"_s);
        QCOMPARE(screen.PagesOut().RecordCount(), 120);
    }

    void RefusedProductDoesNotStopTheWalk()
    {
        Screen screen;
        screen.MoveIn({0, 1, 2}, {u"1 81"_s, u"-1 82"_s, u"1 83"_s});
        QCOMPARE(screen.Boxes(), QStringList({AskInThree, Exists}));
        QCOMPARE(ShownProducts(screen.GridOut()), QStringList({u"82"_s, u"84"_s}));
        QCOMPARE(screen.PagesOut().RecordCount(), 118);
    }

    void ListShowsHowFarTheWalkIsWhileARefusalIsTold()
    {
        Screen screen;
        screen.QueryOut();
        Tick(screen.GridOut(), {0, 1, 2});
        screen.AnswerMove(u"move_in_Uni_Product"_s, {u"1 81"_s, u"-1 82"_s, u"1 83"_s});
        int rows = 0;
        screen.hook.SetAnswer([&](const TMessageBox &box) {
            if (box.icon == TBoxIcon::Warning)
                rows = screen.GridOut().model()->rowCount();
            return box.icon == TBoxIcon::Question ? TBoxButton::Yes : TBoxButton::Ok;
        });
        screen.MoveIn();
        QCOMPARE(rows, 3);
        QCOMPARE(screen.GridOut().model()->rowCount(), 2);
    }

    void ZeroDuringAMoveInEndsTheWalkAsDuringAMoveOut()
    {
        Screen screen;
        screen.MoveIn({0, 1, 2}, {u"1 81"_s, u"0 82"_s, u"1 83"_s});
        QCOMPARE(screen.Boxes(), QStringList({AskInThree, FailedIn}));
        QCOMPARE(ShownProducts(screen.GridOut()), QStringList({u"82"_s, u"83"_s, u"84"_s}));
        QCOMPARE(screen.PagesOut().RecordCount(), 119);
    }

    // --- Log, closing --------------------------------------------------------------------------

    void LogShowsTheCurrentRowsChanges()
    {
        Screen screen;
        screen.QueryIn();
        screen.GridIn().DataSet()->SetRecNo(1);
        screen.server.OnQuery(u"SYS_UPDATE_LOG"_s)
            .Answer(Rows({u"USER_NAME"_s, u"OPTION_TYPE"_s, u"OPTION_DATE"_s}, {}));
        ModalVisitor visitor([](QWidget *dialog) {
            QCOMPARE(dialog->objectName(), u"TFrmMrgUpdateLog"_s);
            Click(dialog, u"BtnClose"_s);
        });
        Click(screen.form, u"cxButton6"_s);
        QVERIFY(visitor.Visited());
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"uniproduct.log"_s));
    }

    void ClosingFreesTheScreenOnceAndClearsTheReference_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"BtnClose", "cxButton3", "BtnFormTitleClose", "Esc"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }
    void ClosingFreesTheScreenOnceAndClearsTheReference()
    {
        QFETCH(QString, way);
        ScreenFixture fixture;
        QPointer<TFrmUniProduct> form = new TFrmUniProduct(nullptr, u"10"_s);
        const QSignalSpy destroyed(form, &QObject::destroyed);
        ModalVisitor visitor([&](QWidget *dialog) {
            QCOMPARE(TFrmUniProduct::Instance(), form);
            if (way == u"Esc")
                return Press(dialog, u"cxInformation"_s, Qt::Key_Escape);
            if (way == u"cxButton3")
                Child<QTabWidget>(dialog, u"cxPageControl1"_s)->setCurrentIndex(1);
            Click(dialog, way);
        });
        form->ShowModal();
        QCOMPARE(TFrmUniProduct::Instance(), nullptr);
        QTRY_COMPARE(destroyed.size(), 1);
        QVERIFY(!form);
    }

    void ScreenThatHadAnErrorIsFreedOnceToo()
    {
        ScreenFixture fixture;
        fixture.server.OnAnyQuery().DatabaseDown();
        QPointer<TFrmUniProduct> form = new TFrmUniProduct(nullptr, u"10"_s);
        const QSignalSpy destroyed(form, &QObject::destroyed);
        ModalVisitor visitor([](QWidget *dialog) {
            Trigger(dialog, u"ActionQueryIn"_s);
            QVERIFY(dialog->isVisible());
            Click(dialog, u"BtnClose"_s);
        });
        form->ShowModal();
        QCOMPARE(fixture.hook.Boxes().size(), 1);
        QTRY_COMPARE(destroyed.size(), 1);
        QCOMPARE(TFrmUniProduct::Instance(), nullptr);
    }

    void ScreenWhoseOwnerGoesIsFreedWithIt()
    {
        ScreenFixture fixture;
        auto *owner = new QWidget;
        auto *form = new TFrmUniProduct(owner, u"10"_s);
        const QSignalSpy destroyed(form, &QObject::destroyed);
        ModalVisitor visitor([&](QWidget *) { delete owner; });
        form->ShowModal();
        QCOMPARE(destroyed.size(), 1);
        QCOMPARE(TFrmUniProduct::Instance(), nullptr);
    }

private:
    static void TickAllIn(Screen &screen)
    {
        Child<QCheckBox>(&screen.PagesIn(), u"ckSelectAll"_s)->setChecked(true);
    }
};

QTEST_MAIN(UniProductTest)
#include "UniProductTest.moc"
