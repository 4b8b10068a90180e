#include "frame/DataModule.h"
#include "frame/GridStyles.h"

#include "controls/BandedGrid.h"
#include "controls/DataTree.h"
#include "controls/DateEdit.h"
#include "controls/ImageComboBox.h"
#include "controls/LevelGrid.h"
#include "remote/PageGuide.h"
#include "support/Raised.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFrame>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

class ComponentStyleTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { form_ = std::make_unique<QWidget>(); }

    void ComboBoxInsideAPanelInsideAScreenGetsItemHeight18()
    {
        auto *panel = new QFrame(form_.get());
        auto *inner = new QWidget(panel);
        auto *images = new ImageComboBox(inner);
        images->SetItemHeight(30);
        auto *plain = new QComboBox(inner);
        plain->addItem(u"全部"_s);

        module_.SetFormStyle(form_.get());

        QCOMPARE(images->ItemHeight(), 18);
        QCOMPARE(plain->view()->sizeHintForRow(0),
                 std::max(18, plain->view()->fontMetrics().height()));
    }

    void FormGetsSongInNinePoints()
    {
        module_.SetFormStyle(form_.get());
        QCOMPARE(form_->font().family(), u"宋体"_s);
        QCOMPARE(form_->font().pointSize(), 9);
    }

    void SongIsDrawnWithAChineseFontOfTheMachine()
    {
        const QFontMetrics metrics(SongFont());
        QVERIFY(metrics.inFont(QChar(u'集')));
        QVERIFY(metrics.inFont(QChar(u'团')));
    }

    void EditorsGetSongInTwelvePixels()
    {
        const QList<QWidget *> editors{new QLineEdit(form_.get()), new DateEdit(form_.get()),
                                       new QPlainTextEdit(form_.get()), new QComboBox(form_.get()),
                                       new ImageComboBox(form_.get())};
        module_.SetFormStyle(form_.get());
        for (const QWidget *editor : editors) {
            QCOMPARE(editor->font().family(), u"宋体"_s);
            QCOMPARE(editor->font().pixelSize(), 12);
        }
    }

    void PlainGrid()
    {
        auto *grid = new DataGrid(form_.get());
        grid->SetRowHeight(40);
        grid->SetHeaderHeight(40);
        module_.SetFormStyle(form_.get());
        QCOMPARE(grid->frameShape(), QFrame::NoFrame);
        QCOMPARE(grid->RowHeight(), 20);
        QCOMPARE(grid->HeaderHeight(), 22);
        QVERIFY(grid->horizontalHeader()->sectionsMovable());
        QCOMPARE(grid->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
        QCOMPARE(grid->palette().color(QPalette::Active, QPalette::Highlight), QColor(0xABC4FE));
        QCOMPARE(grid->palette().color(QPalette::AlternateBase), QColor(0xF4F9FB));
    }

    void BandedGridGetsTwoHeaderRows()
    {
        auto *grid = new BandedGrid(form_.get());
        grid->SetColumns({u"A|甲|60"_s});
        grid->SetBands({u"药品|A"_s});
        grid->SetRowHeight(40);
        grid->SetHeaderHeight(40);
        grid->SetBandHeight(40);
        module_.SetFormStyle(form_.get());
        QCOMPARE(grid->frameShape(), QFrame::NoFrame);
        QCOMPARE(grid->RowHeight(), 20);
        QCOMPARE(grid->HeaderHeight(), 22);
        QCOMPARE(grid->BandHeight(), 22);
        QCOMPARE(grid->horizontalHeader()->sizeHint().height(), 44);
        QVERIFY(grid->horizontalHeader()->sectionsMovable());
        QCOMPARE(grid->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
        grid->resize(300, 200);
        const QImage header = grid->horizontalHeader()->grab().toImage();
        QCOMPARE(header.pixelColor(2, 2), QColor(0xA3AEC4));  // GridBandBackHead
        QCOMPARE(header.pixelColor(2, 24), QColor(0x316AC5)); // GridHeader
    }

    void TreeList()
    {
        auto *tree = new DataTree(form_.get());
        tree->SetLines(DataTree::TreeLines::None);
        tree->SetLineColor(Qt::red);
        module_.SetFormStyle(form_.get());
        QCOMPARE(tree->frameShape(), QFrame::NoFrame);
        QCOMPARE(tree->Lines(), DataTree::TreeLines::Dotted);
        QVERIFY(!tree->LineColor().isValid());
        QVERIFY(tree->header()->sectionsMovable());
        QCOMPARE(tree->palette().color(QPalette::Active, QPalette::Highlight), QColor(0xABC4FE));
    }

    void LevelGrid()
    {
        auto *grid = new Qel::LevelGrid(form_.get());
        grid->SetLevels({u"TopView|ID"_s, u"DetailView|ID|TOP_ID"_s});
        module_.SetFormStyle(form_.get());
        QCOMPARE(grid->frameShape(), QFrame::NoFrame);
        QCOMPARE(grid->RowHeight(), 20);
        QCOMPARE(grid->HeaderHeight(), 22);
        QVERIFY(grid->header()->sectionsMovable());
        QCOMPARE(grid->palette().color(QPalette::Active, QPalette::Highlight), QColor(0xABC4FE));
    }

    void PageControlHasNoSlantedTabs()
    {
        auto *tabs = new QTabWidget(form_.get());
        tabs->setTabShape(QTabWidget::Triangular);
        module_.SetFormStyle(form_.get());
        QCOMPARE(tabs->tabShape(), QTabWidget::Rounded);
    }

    void PagingBarIsResetAndGetsTheSizesOfThePass()
    {
        auto *bar = new TPageGuide(form_.get());
        bar->SetRecordCount(500);
        module_.SetFormStyle(form_.get());
        QCOMPARE(bar->PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(bar->PageSize(), 50);
        QCOMPARE(bar->ShowAllLimit(), 1000);
        QCOMPARE(bar->PageNumber(), 1);
        QCOMPARE(bar->RecordCount(), 0);
    }

    void ImageComboBoxWithoutImagesGetsTheEmptyImage()
    {
        auto *without = new ImageComboBox(form_.get());
        without->SetItems(QStringList{u"0|全部"_s, u"1|生产企业"_s});
        module_.SetFormStyle(form_.get());
        QVERIFY(!without->itemIcon(1).isNull());
    }

    void ImageComboBoxKeepsTheImagesItHas()
    {
        auto *with = new ImageComboBox(form_.get());
        const QIcon image = module_.StateImages().at(1);
        with->AddItem(u"1"_s, u"已发布"_s, image);
        with->AddItem(u"0"_s, u"未发布"_s);
        module_.SetFormStyle(form_.get());
        QCOMPARE(with->itemIcon(0).cacheKey(), image.cacheKey());
        QVERIFY(with->itemIcon(1).isNull());
    }

    void EditableComboBoxHasNoIncrementalSearch()
    {
        auto *combo = new QComboBox(form_.get());
        combo->setEditable(true);
        QVERIFY(combo->completer());
        module_.SetFormStyle(form_.get());
        QVERIFY(!combo->completer());
    }

    // --- Named styles --------------------------------------------------------------------------

    void NamedStylesHaveTheirColours_data()
    {
        QTest::addColumn<QString>("background"); // "": none
        QTest::addColumn<QString>("text");       // "": as it is
        const QString none;
        const struct
        {
            const char *name;
            QString background;
            QString text;
        } styles[] = {
            {"CellFontBlue", none, u"#0000ff"_s},
            {"CellFontRed", none, u"#ff0000"_s},
            {"CellCanEdit", u"#feeec2"_s, none},
            {"GridBackGround", u"#f8f9fc"_s, u"#808080"_s},
            {"GridBandBackGround", u"#cad3dd"_s, none},
            {"GridBandBackHead", u"#a3aec4"_s, none},
            {"GridContent", u"#ffffff"_s, none},
            {"GridContentEven", u"#ffffff"_s, none},
            {"GridPreview", u"#ffffff"_s, none},
            {"GridContentOdd", u"#f4f9fb"_s, none},
            {"GridFilterBox", u"#ffffd2"_s, none},
            {"GridFooter", u"#cad3dd"_s, none},
            {"GridGroup", u"#f1efe2"_s, none},
            {"GridGroupByBox", u"#fed547"_s, none},
            {"GridIncSearch", u"#fed547"_s, none},
            {"GridHeader", u"#316ac5"_s, none},
            {"GridInactive", u"#abc4fe"_s, none},
            {"GridSelection", u"#abc4fe"_s, none},
            {"GridIndicator", u"#a3aec4"_s, none},
            {"BarTitleStyle", none, u"#000080"_s},
        };
        for (const auto &style : styles)
            QTest::newRow(style.name) << style.background << style.text;
    }
    void NamedStylesHaveTheirColours()
    {
        QFETCH(QString, background);
        QFETCH(QString, text);
        const NamedStyle &style = GridStyle(QLatin1StringView(QTest::currentDataTag()));
        const auto name = [](std::optional<QRgb> color) {
            return color ? QColor::fromRgb(*color).name() : QString();
        };
        QCOMPARE(name(style.background), background);
        QCOMPARE(name(style.text), text);
        const bool isTitle = style.name == "BarTitleStyle"_L1;
        QCOMPARE(style.pixelSize, isTitle ? 15 : 12);
        QCOMPARE(style.bold, isTitle);
    }

    void ThereAreTwentyNamedStyles() { QCOMPARE(NamedStyles().size(), 20U); }

    void StyleThatDoesNotExistRaises()
    {
        QVERIFY(Raised<EQelError>([] { GridStyle("GridBorder"_L1); }));
    }

    void SheetsAssignTheStylesOfTheSameNames()
    {
        const GridSheet table = TableSheet();
        QCOMPARE(table.background, QColor(0xF8F9FC));
        QCOMPARE(table.filterBox, QColor(0xFFFFD2));
        QCOMPARE(table.incSearch, QColor(0xFED547));
        QCOMPARE(table.group, QColor(0xF1EFE2));
        QCOMPARE(table.groupByBox, QColor(0xFED547));
        QCOMPARE(table.header, QColor(0x316AC5));
        QCOMPARE(table.indicator, QColor(0xA3AEC4));
        QCOMPARE(table.footer, QColor(0xCAD3DD));
        QCOMPARE(table.preview, QColor(0xFFFFFF));
        QVERIFY(!table.bandHeader.isValid());

        GridSheet banded = BandTableSheet();
        QCOMPARE(banded.bandBackground, QColor(0xCAD3DD));
        QCOMPARE(banded.bandHeader, QColor(0xA3AEC4));
        banded.bandBackground = QColor();
        banded.bandHeader = QColor();
        QCOMPARE(banded, table);

        const GridSheet tree = TreeListSheet();
        QCOMPARE(tree.bandHeader, QColor(0xA3AEC4));
        QCOMPARE(tree.header, QColor(0x316AC5));
        QCOMPARE(tree.contentOdd, QColor(0xF4F9FB));
        QVERIFY(!tree.filterBox.isValid());
        QVERIFY(!tree.indicator.isValid());
    }

private:
    TData_Module module_;
    std::unique_ptr<QWidget> form_;
};

QTEST_MAIN(ComponentStyleTest)
#include "ComponentStyleTest.moc"
