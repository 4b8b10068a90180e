#include "screens/OrgSelect.h"

#include "controls/DataGrid.h"
#include "controls/ImageComboBox.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString BaseSql = u"SELECT * FROM BAS_ORG "_s;

RowSet Organisations(bool ticks = false)
{
    QStringList columns{u"ORG_ID"_s,      u"ORG_CODE"_s,    u"ORG_NAME"_s, u"ORG_ABBR"_s,
                        u"ORG_NAME_PY"_s, u"ORG_NAME_WB"_s, u"ORG_TYPE"_s};
    QList<QStringList> rows{
        {u"501"_s, u"H501"_s, u"市第一医院"_s, u"一院"_s, u"SDYYY"_s, u"YTGAB"_s, u"4"_s},
        {u"502"_s, u"D502"_s, u"仁和医药"_s, u"仁和"_s, u"RHYY"_s, u"WTAA"_s, u"2"_s}};
    if (ticks) {
        columns.prepend(u"SELECTED"_s);
        for (QStringList &row : rows)
            row.prepend(u"0"_s);
    }
    return Rows(columns, rows);
}

/// The picker over a server that knows 120 organisations.
class Dialog : public ScreenFixture
{
public:
    explicit Dialog(bool multiSelect = false)
        : form(nullptr)
    {
        server.OnAnyQuery().Answer(Organisations(multiSelect), 120);
        form.BaseSql = BaseSql;
        form.MultiSelect = multiSelect;
    }

    void Query() { Click(&form, u"BtnQuery"_s); }
    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridQueryView"_s); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    bool SelectEnabled() { return Child<QPushButton>(&form, u"BtnSelect"_s)->isEnabled(); }

    TFrmOrgSelect form;
};

/// The picker, shown.
class Picker : public Dialog
{
public:
    explicit Picker(const QString &text = {}, bool multiSelect = false)
        : Dialog(multiSelect)
    {
        form.SetOrgText(text);
        ShowScreen(form);
    }
};

/// The middle of a cell in the grid's viewport, by row and field.
QPoint Cell(const DataGrid &grid, int row, QStringView field)
{
    return grid.visualRect(grid.model()->index(row, grid.ColumnIndex(field))).center();
}

} // namespace

class OrgSelectTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact_data()
    {
        QTest::addColumn<bool>("multi");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("typeText");
        QTest::addColumn<QString>("typeValue");
        QTest::newRow("orgs.all") << false << u"  "_s << u" 全部 "_s << u"0"_s;
        QTest::newRow("orgs.multi") << true << u""_s << u"全部"_s << u"0"_s;
        QTest::newRow("orgs.text") << false << u" ab'c "_s << u"全部"_s << u"0"_s;
        QTest::newRow("orgs.type") << false << u""_s << u"医院"_s << u"4"_s;
        QTest::newRow("orgs.both") << false << u"协和"_s << u"医院"_s << u"4"_s;
    }
    void StatementsAreExact()
    {
        QFETCH(bool, multi);
        QFETCH(QString, text);
        QFETCH(QString, typeText);
        QFETCH(QString, typeValue);
        QCOMPARE(OrgSelectSql(BaseSql, multi, {text, typeText, typeValue}),
                 Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void CaptionsAndColumnsAreExact()
    {
        Picker picker;
        QCOMPARE(picker.form.windowTitle(), u"机构选择"_s);
        QCOMPARE(Child<QTabWidget>(&picker.form, u"cxPageControl1"_s)->tabText(0), u"企业选择"_s);
        QCOMPARE(Child<QLabel>(&picker.form, u"lbOrg"_s)->text(), u"企业名称"_s);
        QCOMPARE(Child<QLabel>(&picker.form, u"lbType"_s)->text(), u"机构类型"_s);
        QCOMPARE(Child<QPushButton>(&picker.form, u"BtnQuery"_s)->text(), u"查询"_s);
        QCOMPARE(Child<QPushButton>(&picker.form, u"BtnSelect"_s)->text(), u"选择"_s);
        QCOMPARE(Child<QPushButton>(&picker.form, u"BtnCancel"_s)->text(), u"取消"_s);
        QCOMPARE(picker.Grid().ColumnCaption(u"SELECTED"), u"选择"_s);
        QCOMPARE(picker.Grid().ColumnCaption(u"ORG_NAME"), u"企业名称"_s);
        QCOMPARE(picker.Grid().ColumnCaption(u"ORG_ABBR"), u"企业简称"_s);
        QCOMPARE(picker.Grid().ColumnCaption(u"ORG_TYPE"), u"企业类型"_s);
        QCOMPARE(Child<ImageComboBox>(&picker.form, u"cbType"_s)->Items(),
                 QStringList({u"0|全部"_s, u"1|生产企业"_s, u"2|商业企业"_s, u"3|物流企业"_s,
                              u"4|医院"_s, u"5|药房"_s, u"6|营运"_s}));
        QCOMPARE(Child<ImageComboBox>(&picker.form, u"cbType"_s)->currentText(), u"全部"_s);
    }

    void StylingPassReplacesTheLayoutsPagingValues()
    {
        Picker picker;
        QCOMPARE(picker.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(picker.Pages().PageSize(), 50);
        QCOMPARE(picker.Pages().ShowAllLimit(), 1000);
    }

    void OpeningWithoutTextQueriesNothing()
    {
        Picker picker;
        QVERIFY(picker.server.Queries().isEmpty());
        QVERIFY(!picker.SelectEnabled());
        QCOMPARE(picker.form.focusWidget()->objectName(), u"edOrg"_s);
    }

    void OpeningWithTextQueriesAtOnce()
    {
        Picker picker(u"协和"_s);
        QCOMPARE(picker.server.Statements(),
                 QStringList{OrgSelectSql(BaseSql, false, {u"协和"_s, u"全部"_s, u"0"_s})});
        QCOMPARE(picker.server.LastQuery().page, 1);
        QCOMPARE(picker.server.LastQuery().pageSize, 50);
        QCOMPARE(picker.server.LastQuery().queryType, 2);
        QCOMPARE(picker.Pages().RecordCount(), 120);
        QCOMPARE(picker.form.focusWidget()->objectName(), u"GridQueryView"_s);
        QVERIFY(picker.SelectEnabled());
    }

    void TypeAllAddsNoConditionAndAnyOtherItsValue()
    {
        Picker picker;
        picker.Query();
        QCOMPARE(picker.server.LastQuery().sql, Expected(u"orgs.all"_s));
        Child<ImageComboBox>(&picker.form, u"cbType"_s)->SetEditValue(u"4"_s);
        Press(&picker.form, u"edOrg"_s, Qt::Key_Return);
        QCOMPARE(picker.server.LastQuery().sql, Expected(u"orgs.type"_s));
    }

    void AnotherPageIsQueriedWithTheSameStatement()
    {
        Picker picker;
        picker.Query();
        const QString sql = picker.server.LastQuery().sql;
        Click(&picker.Pages(), u"btnNext"_s);
        QCOMPARE(picker.server.LastQuery().page, 2);
        QCOMPARE(picker.server.LastQuery().sql, sql);
    }

    void QueryWithoutRowsLeavesSelectDisabledAndFocusInTheSearchBox()
    {
        Picker picker;
        picker.Query();
        picker.server.ClearScripts();
        picker.server.OnAnyQuery().Answer(Rows({u"ORG_ID"_s}, {}));
        picker.Query();
        QVERIFY(!picker.SelectEnabled());
        QCOMPARE(picker.form.focusWidget()->objectName(), u"edOrg"_s);
        QCOMPARE(picker.Pages().RecordCount(), 0);
    }

    void TypeColumnShowsTheCaption()
    {
        Picker picker;
        picker.Query();
        const int column = picker.Grid().ColumnIndex(u"ORG_TYPE");
        QCOMPARE(picker.Grid().model()->index(0, column).data().toString(), u"医院"_s);
        QCOMPARE(picker.Grid().model()->index(1, column).data().toString(), u"商业企业"_s);
    }

    void SingleModeHidesTicksAndHandsBackTheFocusedRow()
    {
        Dialog picker;
        const TModalResult result = ShowModally(picker.form, [&picker](QWidget *) {
            QVERIFY(!picker.Grid().IsColumnVisible(u"SELECTED"));
            QVERIFY(!picker.Pages().ShowSelectAll());
            picker.Query();
            picker.form.cdsQuery.SetRecNo(1);
            Press(&picker.Grid(), Qt::Key_Return);
        });
        QCOMPARE(result, TModalResult::Ok);
        const TFrmOrgSelect &form = picker.form;
        QCOMPARE(QStringList({form.OrgId, form.OrgCode, form.OrgName, form.OrgAbbr, form.OrgNamePy,
                              form.OrgNameWb, form.OrgType}),
                 QStringList({u"502"_s, u"D502"_s, u"仁和医药"_s, u"仁和"_s, u"RHYY"_s, u"WTAA"_s,
                              u"2"_s}));
    }

    void DoubleClickOnACellChooses()
    {
        Dialog picker;
        const TModalResult result = ShowModally(picker.form, [&picker](QWidget *) {
            picker.Query();
            QWidget *cells = picker.Grid().viewport();
            const QPoint cell = Cell(picker.Grid(), 0, u"ORG_NAME");
            QTest::mouseClick(cells, Qt::LeftButton, {}, cell);
            QTest::mouseDClick(cells, Qt::LeftButton, {}, cell);
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(picker.form.OrgId, u"501"_s);
    }

    void MultiModeAsksForATickAndLeavesTheTickedRows()
    {
        Dialog picker(true);
        const TModalResult result = ShowModally(picker.form, [&picker](QWidget *dialog) {
            picker.Query();
            QCOMPARE(picker.server.LastQuery().sql, Expected(u"orgs.multi"_s));
            QVERIFY(picker.Grid().IsColumnVisible(u"SELECTED"));
            Click(dialog, u"BtnSelect"_s);
            QCOMPARE(picker.Boxes(), QStringList{u"Information|提示|请勾选要选择的记录！|Ok"_s});
            QVERIFY(dialog->isVisible());
            QTest::mouseClick(picker.Grid().viewport(), Qt::LeftButton, {},
                              Cell(picker.Grid(), 1, u"SELECTED"));
            Click(dialog, u"BtnSelect"_s);
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(picker.form.cdsQuery.Find(u"SELECTED", {u"1"_s}), 1);
        QVERIFY(picker.form.OrgId.isEmpty());
    }

    void SelectAllTicksThePageAndKeepsTheCurrentRow()
    {
        Picker picker({}, true);
        picker.Query();
        picker.form.cdsQuery.SetRecNo(1);
        emit picker.Pages().SelectAll(true);
        QCOMPARE(picker.form.cdsQuery.TextAt(0, 0), u"1"_s);
        QCOMPARE(picker.form.cdsQuery.TextAt(1, 0), u"1"_s);
        QCOMPARE(picker.form.cdsQuery.RecNo(), 1);
        emit picker.Pages().SelectAll(false);
        QCOMPARE(picker.form.cdsQuery.TextAt(0, 0), u"0"_s);
    }

    void CancellingLeavesTheResultEmpty()
    {
        Dialog picker;
        const TModalResult result = ShowModally(picker.form, [&picker](QWidget *dialog) {
            picker.Query();
            Press(&picker.Grid(), Qt::Key_Escape);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(picker.form.OrgId.isEmpty() && picker.form.OrgName.isEmpty());
    }

    void WildcardsAndQuotesTravelAsTyped()
    {
        Picker picker;
        Type(&picker.form, u"edOrg"_s, u"50%_';"_s);
        Press(&picker.form, u"edOrg"_s, Qt::Key_Return);
        QVERIFY(picker.server.LastQuery().sql.contains(u"like '%50%_'';%'"_s));
    }
};

QTEST_MAIN(OrgSelectTest)
#include "OrgSelectTest.moc"
