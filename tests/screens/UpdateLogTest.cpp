#include "frame/UpdateLog.h"

#include "controls/DataGrid.h"
#include "frame/MrgUpdateLog.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QAbstractButton>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

/// One entry of each operation type, then two of types that nobody knows.
RowSet Entries()
{
    QList<QStringList> rows;
    for (const auto &type : {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, Null()})
        rows << QStringList{u"王敏"_s, type, u"2024-03-05 10:20:30"_s};
    return Rows({u"USER_NAME"_s, u"OPTION_TYPE"_s, u"OPTION_DATE"_s}, rows);
}

RowSet NoEntries()
{
    return Rows({u"USER_NAME"_s, u"OPTION_TYPE"_s, u"OPTION_DATE"_s}, {});
}

const TLoggedRecord Product{u"UNI_PRODUCT"_s, u"1'0"_s, u"9'1"_s};

/// Shows a viewer as its caller does and lets `visit` act in front of it; closes what stays open.
TModalResult Visit(TFrmBaseForm &form, const std::function<void()> &visit)
{
    return ShowModally(form, [&visit](QWidget *) { visit(); });
}

class OneKey : public ScreenFixture
{
public:
    OneKey()
        : form(nullptr, u"SYS_AFFICHE"_s, u"70'1"_s)
    {
        server.OnAnyQuery().Answer(Entries(), 120);
    }

    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridLog"_s); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    TModalResult Show(const std::function<void()> &visit) { return Visit(form, visit); }

    TFrmUpdateLog form;
};

class TwoKeys : public ScreenFixture
{
public:
    explicit TwoKeys(const TLoggedRecord &record = Product)
        : form(nullptr, record)
    {
        server.OnAnyQuery().Answer(Entries());
    }

    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridLog"_s); }
    TModalResult Show(const std::function<void()> &visit) { return Visit(form, visit); }

    TFrmMrgUpdateLog form;
};

QStringList Captions(const DataGrid &grid)
{
    QStringList captions;
    for (int column = 0; column < grid.model()->columnCount(); ++column)
        captions << grid.model()->headerData(column, Qt::Horizontal).toString();
    return captions;
}

QStringList ShownIn(const DataGrid &grid, QStringView field)
{
    QStringList texts;
    for (int row = 0; row < grid.model()->rowCount(); ++row)
        texts << grid.model()->index(row, grid.ColumnIndex(field)).data().toString();
    return texts;
}

void CheckColumns(const DataGrid &grid)
{
    QCOMPARE(grid.ColumnIndex(u"USER_NAME"), 0);
    QCOMPARE(grid.ColumnIndex(u"OPTION_TYPE"), 1);
    QCOMPARE(grid.ColumnIndex(u"OPTION_DATE"), 2);
    QCOMPARE(Captions(grid), QStringList({u"操作人姓名"_s, u"操作类型"_s, u"操作时间"_s}));
    QCOMPARE(ShownIn(grid, u"USER_NAME").first(), u"王敏"_s);
    QCOMPARE(ShownIn(grid, u"OPTION_DATE").first(), u"2024-03-05 10:20:30"_s);
    QCOMPARE(
        ShownIn(grid, u"OPTION_TYPE").first(6),
        QStringList({u"新增"_s, u"修改"_s, u"审核"_s, u"禁用"_s, u"逻辑删除"_s, u"物理删除"_s}));
}

void CheckFrame(const QWidget &form)
{
    QCOMPARE(form.windowTitle(), u"查看日志"_s);
    QCOMPARE(Child<QPushButton>(&form, u"BtnClose"_s)->text(), u"返回"_s);
    QVERIFY(!Child<QTabWidget>(&form, u"cxPageControl1"_s)->tabBar()->isVisible());
}

/// Fills the screen by the title bar's button and goes back.
void CheckMaximizing(QWidget &form)
{
    QVERIFY(form.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    const QSize before = form.size();
    auto *button = Child<QAbstractButton>(&form, u"BtnFormTitleMaximize"_s);
    Click(button);
    QVERIFY(form.isMaximized());
    QTRY_VERIFY(form.width() > before.width());
    Click(button);
    QVERIFY(!form.isMaximized());
    QTRY_COMPARE(form.size(), before);
}

} // namespace

class UpdateLogTest : public QObject
{
    Q_OBJECT

private slots:
    void TheTwoStatementsDifferInTheirBlanksOnPurpose()
    {
        QCOMPARE(UpdateLogSql(u"SYS_AFFICHE"_s, u"70'1"_s), Expected(u"log.one"_s));
        QCOMPARE(MrgUpdateLogSql(Product), Expected(u"log.two"_s));
        QVERIFY(Expected(u"log.one"_s).contains(u"SYS_UPDATE_LOG  WHERE"_s));
        QVERIFY(!Expected(u"log.two"_s).contains(u"  "_s));
    }

    void CaptionsAndColumnsAreTheSameInBoth()
    {
        OneKey one;
        one.Show([&] {
            CheckFrame(one.form);
            CheckColumns(one.Grid());
        });
        TwoKeys two;
        two.Show([&] {
            CheckFrame(two.form);
            CheckColumns(two.Grid());
        });
    }

    void UnknownOperationTypeShowsNoText()
    {
        TwoKeys two;
        two.Show([&] {
            QCOMPARE(ShownIn(two.Grid(), u"OPTION_TYPE").last(2), QStringList({u""_s, u""_s}));
        });
    }

    void BothCanBeMaximizedAndRestored()
    {
        OneKey one;
        one.Show([&] { CheckMaximizing(one.form); });
        TwoKeys two;
        two.Show([&] { CheckMaximizing(two.form); });
    }

    void KeyWithAQuoteTravelsDoubled()
    {
        OneKey one;
        one.Show([&] { QCOMPARE(one.server.Statements(), QStringList{Expected(u"log.one"_s)}); });
        TwoKeys two;
        two.Show([&] { QCOMPARE(two.server.Statements(), QStringList{Expected(u"log.two"_s)}); });
    }

    // --- One key -----------------------------------------------------------------------------

    void OneKeyViewerShowsTheFirstPageAndItsTotal()
    {
        OneKey one;
        one.Show([&] {
            QCOMPARE(one.server.LastQuery().page, 1);
            QCOMPARE(one.server.LastQuery().pageSize, 50);
            QCOMPARE(one.server.LastQuery().queryType, 2);
            QCOMPARE(one.Pages().RecordCount(), 120);
            QCOMPARE(one.Grid().model()->rowCount(), 8);
        });
    }

    void OneKeyViewerTakesThePagingValuesOfTheStylingPass()
    {
        OneKey one;
        QCOMPARE(one.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(one.Pages().PageSize(), 50);
        QCOMPARE(one.Pages().ShowAllLimit(), 1000);
        QVERIFY(!one.Pages().ShowSelectAll());
    }

    void OneKeyViewerAsksForAnotherPage()
    {
        OneKey one;
        one.Show([&] {
            Click(&one.Pages(), u"btnNext"_s);
            QCOMPARE(one.server.LastQuery().page, 2);
            QCOMPARE(one.server.LastQuery().sql, Expected(u"log.one"_s));
        });
    }

    void OneKeyRecordWithoutEntriesHasATotalOfNone()
    {
        OneKey one;
        one.server.ClearScripts();
        one.server.OnAnyQuery().Answer(NoEntries());
        one.Show([&] {
            QCOMPARE(one.Grid().model()->rowCount(), 0);
            QCOMPARE(one.Pages().RecordCount(), 0);
            QVERIFY(one.Boxes().isEmpty());
        });
    }

    void OneKeyViewerClosesByEscAndByTheButton()
    {
        OneKey byKey;
        byKey.Show([&] {
            Press(&byKey.Grid(), Qt::Key_Escape);
            QVERIFY(!byKey.form.isVisible());
        });
        OneKey byButton;
        byButton.Show([&] {
            Click(&byButton.form, u"BtnClose"_s);
            QVERIFY(!byButton.form.isVisible());
        });
    }

    void FailedPageLeavesTheViewerUsable()
    {
        OneKey one;
        one.server.ClearScripts();
        one.server.OnAnyQuery().DatabaseDown().Times(1);
        one.server.OnAnyQuery().Answer(Entries(), 8);
        one.Show([&] {
            QCOMPARE(one.hook.Boxes().size(), 1);
            QCOMPARE(one.hook.Boxes().first().icon, TBoxIcon::Error);
            QCOMPARE(one.Grid().model()->rowCount(), 0);
            one.Pages().QueryFirstPage();
            QCOMPARE(one.Grid().model()->rowCount(), 8);
        });
    }

    // --- Two keys ----------------------------------------------------------------------------

    void TwoKeyViewerLoadsTheWholeLogAtOnce()
    {
        TwoKeys two;
        two.Show([&] {
            QCOMPARE(two.server.Queries().size(), 1);
            QCOMPARE(two.server.LastQuery().page, 0);
            QCOMPARE(two.server.LastQuery().pageSize, 0);
            QCOMPARE(two.server.LastQuery().queryType, 2);
            QCOMPARE(two.Grid().model()->rowCount(), 8);
            QVERIFY(two.form.findChildren<TPageGuide *>().isEmpty());
        });
    }

    void TwoKeyViewerWithAnEmptyInputAsksAndSaysNothing_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("key1");
        QTest::addColumn<QString>("key2");
        QTest::newRow("no table") << u""_s << u"10"_s << u"91"_s;
        QTest::newRow("no first key") << u"UNI_PRODUCT"_s << u""_s << u"91"_s;
        QTest::newRow("no second key") << u"UNI_PRODUCT"_s << u"10"_s << u""_s;
    }
    void TwoKeyViewerWithAnEmptyInputAsksAndSaysNothing()
    {
        QFETCH(QString, table);
        QFETCH(QString, key1);
        QFETCH(QString, key2);
        TwoKeys two({table, key1, key2});
        two.Show([&] {
            QVERIFY(two.server.Queries().isEmpty());
            QVERIFY(two.Boxes().isEmpty());
            QCOMPARE(two.Grid().model()->rowCount(), 0);
        });
    }

    void TwoKeyRecordWithoutEntriesShowsAnEmptyList()
    {
        TwoKeys two;
        two.server.ClearScripts();
        two.server.OnAnyQuery().Answer(NoEntries());
        two.Show([&] {
            QCOMPARE(two.Grid().model()->rowCount(), 0);
            QVERIFY(two.Boxes().isEmpty());
        });
    }

    void ResultSetOnShowDoesNotCloseTheTwoKeyViewer()
    {
        TwoKeys two;
        const TModalResult result = two.Show([&] {
            QVERIFY(two.form.isVisible());
            Click(&two.form, u"BtnClose"_s);
            QVERIFY(!two.form.isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
    }

    void EscDoesNothingInTheTwoKeyViewer()
    {
        TwoKeys two;
        two.Show([&] {
            Press(&two.Grid(), Qt::Key_Escape);
            QVERIFY(two.form.isVisible());
        });
    }

    void TwoKeyViewerRunsNoStylingPass()
    {
        OneKey one;
        TwoKeys two;
        QCOMPARE(one.Grid().frameShape(), QFrame::NoFrame);
        QVERIFY(two.Grid().frameShape() != QFrame::NoFrame);
        QCOMPARE(one.form.font().pointSize(), 9);
        QCOMPARE(two.form.font().pixelSize(), 12);
    }
};

QTEST_MAIN(UpdateLogTest)
#include "UpdateLogTest.moc"
