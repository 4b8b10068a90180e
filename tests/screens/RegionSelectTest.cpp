#include "screens/RegionSelect.h"

#include "controls/DataTree.h"
#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QStringList Columns{u"REGION_ID"_s,   u"PARENT_ID"_s, u"REGION_CODE"_s,
                          u"REGION_NAME"_s, u"FULL_NAME"_s, u"CHINA_FLAG"_s};

QStringList Region(const QString &code, const QString &parent, const QString &name,
                   const QString &fullName)
{
    return {code, parent, code, name, fullName, u"1"_s};
}

/// Three provinces of which two have cities; ordered by code as the cache is.
const QList<QStringList> SixRegions{
    Region(u"11"_s, u"-1"_s, u"北京市"_s, u"北京市"_s),
    Region(u"13"_s, u"-1"_s, u"河北省"_s, u"河北省"_s),
    Region(u"1301"_s, u"13"_s, u"石家庄市"_s, u"河北省石家庄市"_s),
    Region(u"1302"_s, u"13"_s, u"唐山市"_s, u"河北省唐山市"_s),
    Region(u"14"_s, u"-1"_s, u"山西省"_s, u"山西省"_s),
    Region(u"1401"_s, u"14"_s, u"太原市"_s, u"山西省太原市"_s),
};

/// The picker over a server that knows some regions.
class Dialog : public ScreenFixture
{
public:
    explicit Dialog(const QList<QStringList> &regions = SixRegions)
    {
        server.OnQueryExact(Expected(u"regions"_s)).Answer(Rows(Columns, regions));
        form = std::make_unique<TFrmRegionSelect>(nullptr);
    }

    DataTree &Tree() { return *Child<DataTree>(form.get(), u"TreeGrid"_s); }
    void Search(const QString &text) { Type(form.get(), u"edInformation"_s, text); }
    void Locate() { Trigger(form.get(), u"ActionQuery"_s); }
    QString Focused() { return Tree().NodeText(Tree().FocusedNode(), u"REGION_ID"); }
    void Focus(const QString &id) { Tree().FocusNode(Tree().DataSet()->Find(u"REGION_ID", {id})); }

    std::unique_ptr<TFrmRegionSelect> form;
};

/// The picker, shown.
class Picker : public Dialog
{
public:
    explicit Picker(const QList<QStringList> &regions = SixRegions, const QString &text = {})
        : Dialog(regions)
    {
        form->SetInformation(text);
        ShowScreen(*form);
    }
};

/// Names with and without 甲, top level only.
QList<QStringList> Named(const QStringList &names)
{
    QList<QStringList> rows;
    for (const QString &name : names) {
        const QString id = QString::number(rows.size() + 1);
        rows << Region(id, u"-1"_s, name, name);
    }
    return rows;
}

} // namespace

class RegionSelectTest : public QObject
{
    Q_OBJECT

private slots:
    void CaptionsAndColumnsAreExact()
    {
        Picker picker;
        QCOMPARE(picker.form->windowTitle(), u"地区选择"_s);
        QCOMPARE(Child<QTabWidget>(picker.form.get(), u"cxPageControl1"_s)->tabText(0),
                 u"地区选择"_s);
        QCOMPARE(Child<QLabel>(picker.form.get(), u"lbInformation"_s)->text(), u"地区信息"_s);
        QCOMPARE(Child<QLineEdit>(picker.form.get(), u"edInformation"_s)->toolTip(),
                 u"按区域名称模糊定位"_s);
        const QList<std::pair<QString, QString>> buttons{{u"BtnQuery"_s, u"定位"_s},
                                                         {u"BtnSelect"_s, u"选择"_s},
                                                         {u"BtnFullExpand"_s, u"全部展开"_s},
                                                         {u"BtnFullCollapse"_s, u"全部收缩"_s},
                                                         {u"BtnCancel"_s, u"取消"_s}};
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Child<QPushButton>(picker.form.get(), name)->text(), caption);
        QCOMPARE(picker.Tree().ColumnCount(), 5);
        for (const auto &hidden : {u"REGION_ID"_s, u"PARENT_ID"_s, u"REGION_CODE"_s})
            QVERIFY(!picker.Tree().IsColumnVisible(hidden));
        const auto header = [&](int column) {
            return picker.Tree().model()->headerData(column, Qt::Horizontal, Qt::DisplayRole);
        };
        QCOMPARE(header(2).toString(), u"编码"_s);
        QCOMPARE(header(3).toString(), u"地区名称"_s);
        QCOMPARE(header(4).toString(), u"地区全称"_s);
    }

    void SecondOpeningSendsNoQuery()
    {
        Picker picker;
        QCOMPARE(picker.server.Queries().size(), 1);
        TFrmRegionSelect second(nullptr);
        QCOMPARE(picker.server.Queries().size(), 1);
        QCOMPARE(Child<DataTree>(&second, u"TreeGrid"_s)->TopLevelCount(), 3);
    }

    void OpeningWithTextLocatesTheFirstRegionThatContainsIt()
    {
        Picker picker(SixRegions, u"唐山"_s);
        QCOMPARE(picker.Focused(), u"1302"_s);
    }

    void OpeningWithoutTextStaysOnTheFirstRegion()
    {
        Picker picker;
        QCOMPARE(picker.Focused(), u"11"_s);
        QCOMPARE(picker.form->focusWidget()->objectName(), u"edInformation"_s);
    }

    void RepeatedLocateStepsThroughTheMatches()
    {
        Picker picker;
        picker.Search(u" 市 "_s);
        QStringList found;
        for (int press = 0; press < 4; ++press) {
            Press(picker.form.get(), u"edInformation"_s, Qt::Key_Return);
            found << picker.Focused();
        }
        QCOMPARE(found, QStringList({u"11"_s, u"1301"_s, u"1302"_s, u"1401"_s}));
        QCOMPARE(picker.form->focusWidget()->objectName(), u"TreeGrid"_s);
    }

    void MissFromTheTopWrapsToTheTop()
    {
        Picker picker;
        picker.Search(u"广东"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"11"_s);
        QVERIFY(picker.Boxes().isEmpty());
    }

    void SkippedRowsAreCountedOnOverHits()
    {
        // Two rows are passed before the hit; one after it on the second press (back on the hit);
        // the third press passes that one again and makes it four: a whole table, so it wraps.
        Picker picker(Named({u"乙"_s, u"丙"_s, u"甲"_s, u"丁"_s}));
        picker.Search(u"甲"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"3"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"3"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"1"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"3"_s);
    }

    void CountThatSteppedOverTheRowCountDoesNotWrap()
    {
        // One row before the hit and two after it: 1, 3, 5, ... never four.
        Picker picker(Named({u"乙"_s, u"甲"_s, u"丙"_s, u"丁"_s}));
        picker.Search(u"甲"_s);
        for (int press = 0; press < 5; ++press) {
            picker.Locate();
            QCOMPARE(picker.Focused(), u"2"_s);
        }
    }

    void EmptyTextMatchesNothing()
    {
        Picker picker;
        picker.Focus(u"1302"_s);
        picker.Search(u"  "_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"1401"_s); // past the last row, three of six rows passed
    }

    void LocateMindsTheCase()
    {
        Picker picker(Named({u"乙"_s, u"Alpha"_s}));
        picker.Search(u"alpha"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"1"_s);
        picker.Search(u"Alpha"_s);
        picker.Locate();
        QCOMPARE(picker.Focused(), u"2"_s);
    }

    void F3FromAMatchGoesOnFromItsPlaceInTheWholeTree()
    {
        Picker picker;
        picker.Search(u"省"_s);
        picker.Focus(u"13"_s); // place 1 in the tree; top-level places 2 to 4 are looked at
        Press(&picker.Tree(), Qt::Key_F3);
        QCOMPARE(picker.Focused(), u"14"_s);
        QVERIFY(picker.Tree().IsExpanded(picker.Tree().DataSet()->Find(u"REGION_ID", {u"13"_s})));
        QVERIFY(!picker.Tree().IsExpanded(picker.Tree().FocusedNode()));
        QVERIFY(picker.Boxes().isEmpty());
        Press(&picker.Tree(), Qt::Key_F3); // from place 4 nothing is left
        QCOMPARE(picker.Boxes(), QStringList{u"Information|提示|搜索 \"省\" 完毕！|Ok"_s});
        QCOMPARE(picker.Focused(), u"14"_s);
    }

    void F3FromElsewhereStartsAtTheTopAndExpandsTheMatch()
    {
        Picker picker;
        picker.Tree().CollapseAll();
        picker.Search(u"山西"_s);
        Press(&picker.Tree(), Qt::Key_F3);
        QCOMPARE(picker.Focused(), u"14"_s);
        QVERIFY(picker.Tree().IsExpanded(picker.Tree().FocusedNode()));
        QVERIFY(picker.Boxes().isEmpty());
    }

    void F3LooksOnlyAtTheFirstFiveTopLevelNodes()
    {
        Picker five(Named({u"一"_s, u"二"_s, u"三"_s, u"四"_s, u"甲"_s, u"六"_s}));
        five.Search(u"甲"_s);
        Press(&five.Tree(), Qt::Key_F3);
        QCOMPARE(five.Focused(), u"5"_s);
        QVERIFY(five.Boxes().isEmpty());

        Picker six(Named({u"一"_s, u"二"_s, u"三"_s, u"四"_s, u"五"_s, u"甲"_s}));
        six.Search(u"甲"_s);
        Press(&six.Tree(), Qt::Key_F3);
        QCOMPARE(six.Focused(), u"1"_s);
        QCOMPARE(six.Boxes(), QStringList{u"Information|提示|搜索 \"甲\" 完毕！|Ok"_s});
    }

    void F3FindsNoDescendants()
    {
        Picker picker;
        picker.Search(u"唐山"_s);
        Press(&picker.Tree(), Qt::Key_F3);
        QCOMPARE(picker.Boxes(), QStringList{u"Information|提示|搜索 \"唐山\" 完毕！|Ok"_s});
    }

    void F3MatchesTheCodeToo()
    {
        Picker picker;
        picker.Search(u"14"_s);
        Press(&picker.Tree(), Qt::Key_F3);
        QCOMPARE(picker.Focused(), u"14"_s);
    }

    void F3WithAnEmptyTextDoesNothing()
    {
        Picker picker;
        Press(&picker.Tree(), Qt::Key_F3);
        QVERIFY(picker.Boxes().isEmpty());
        QCOMPARE(picker.Focused(), u"11"_s);
    }

    void AnyNodeCanBeChosen_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("button") << u"button"_s;
        QTest::newRow("Enter") << u"enter"_s;
    }
    void AnyNodeCanBeChosen()
    {
        QFETCH(QString, how);
        Dialog picker;
        const TModalResult result = ShowModally(*picker.form, [&](QWidget *dialog) {
            picker.Focus(u"13"_s);
            picker.Tree().setFocus();
            if (how == u"enter")
                Press(&picker.Tree(), Qt::Key_Return);
            else
                Click(dialog, u"BtnSelect"_s);
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(picker.form->RegionId, u"13"_s);
        QCOMPARE(picker.form->RegionCode, u"13"_s);
        QCOMPARE(picker.form->FullName, u"河北省"_s);
    }

    void DoubleClickChooses()
    {
        Dialog picker;
        const TModalResult result = ShowModally(*picker.form, [&picker](QWidget *) {
            picker.Focus(u"1302"_s);
            QWidget *cells = picker.Tree().viewport();
            const QPoint cell = picker.Tree().visualRect(picker.Tree().currentIndex()).center();
            QTest::mouseClick(cells, Qt::LeftButton, {}, cell);
            QTest::mouseDClick(cells, Qt::LeftButton, {}, cell);
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(picker.form->RegionId, u"1302"_s);
    }

    void CancellingLeavesTheResultEmpty()
    {
        Dialog picker;
        const TModalResult result = ShowModally(*picker.form, [](QWidget *dialog) {
            Click(dialog, u"BtnCancel"_s);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        const TFrmRegionSelect &form = *picker.form;
        QVERIFY(form.RegionId.isEmpty() && form.RegionCode.isEmpty() && form.FullName.isEmpty());
    }

    void ExpandAllAndCollapseAll()
    {
        Picker picker;
        Trigger(picker.form.get(), u"ActionFullExpand"_s);
        QVERIFY(picker.Tree().IsExpanded(1) && picker.Tree().IsExpanded(4));
        Trigger(picker.form.get(), u"ActionFullCollapse"_s);
        QVERIFY(!picker.Tree().IsExpanded(1) && !picker.Tree().IsExpanded(4));
    }

    void WithoutRegionsOnlyLocateIsEnabled()
    {
        Picker picker(QList<QStringList>{});
        for (const auto &action :
             {u"ActionSelect"_s, u"ActionFullExpand"_s, u"ActionFullCollapse"_s})
            QVERIFY(!ActionEnabled(picker.form.get(), action));
        QVERIFY(ActionEnabled(picker.form.get(), u"ActionQuery"_s));
        picker.Search(u"甲"_s);
        picker.Locate();
        QVERIFY(picker.Boxes().isEmpty());
    }
};

QTEST_MAIN(RegionSelectTest)
#include "RegionSelectTest.moc"
