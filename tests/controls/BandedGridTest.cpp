#include "controls/BandedGrid.h"

#include "TestTable.h"
#include "controls/BandHeader.h"
#include "dataset/QelError.h"
#include "support/Raised.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

namespace {

enum Column { Name, Spec, Dose, Price1, Price2, Price3, Cost, Level };
enum Band { Product, Prices, Others };

const QStringList Columns{u"NAME|通用名|120"_s,           u"SPEC|规格|80"_s,
                          u"DOSE|剂型|60||hidden"_s,      u"PRICE_01|一级|80|currency"_s,
                          u"PRICE_02|二级|80|currency"_s, u"PRICE_03|三级|80|currency|hidden"_s,
                          u"COST|零售价|80|currency"_s,   u"LEVEL|质量层次|90"_s};
const QStringList Bands{u"药品|NAME,SPEC,DOSE"_s, u"价格|PRICE_01,PRICE_02,PRICE_03,COST"_s,
                        u"其他|LEVEL"_s};

constexpr QColor BandColor(0xA3, 0xAE, 0xC4);
constexpr QColor BandGround(0xCA, 0xD3, 0xDD);
constexpr QColor ColumnColor(0x31, 0x6A, 0xC5);

GridSheet Sheet()
{
    GridSheet sheet;
    sheet.header = ColumnColor;
    sheet.bandHeader = BandColor;
    sheet.bandBackground = BandGround;
    return sheet;
}

} // namespace

class BandedGridTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ClientDataSet> dataSet_;
    std::unique_ptr<BandedGrid> grid_;
    BandHeader *header_ = nullptr;

    void OpenRows()
    {
        dataSet_->Open(
            Rows({u"NAME"_s, u"SPEC"_s, u"DOSE"_s, u"PRICE_01"_s, u"PRICE_02"_s, u"PRICE_03"_s,
                  u"COST"_s, u"LEVEL"_s},
                 {{u"当归"_s, u"10g"_s, u"丸"_s, u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"一"_s},
                  {u"黄芪"_s, u"20g"_s, u"片"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s, u"二"_s}}));
    }
    void Show(int width = 700)
    {
        grid_->resize(width, 200);
        grid_->show();
        QVERIFY(QTest::qWaitForWindowExposed(grid_.get()));
    }
    /// The columns from left to right, hidden ones too.
    QList<int> Order() const
    {
        QList<int> columns;
        for (int place = 0; place < header_->count(); ++place)
            columns.append(header_->logicalIndex(place));
        return columns;
    }
    QRect ColumnCaption(int column) const
    {
        return {header_->sectionViewportPosition(column), header_->BandRowHeight(),
                header_->sectionSize(column), header_->height() - header_->BandRowHeight()};
    }
    void Drag(QPoint from, QPoint to)
    {
        QWidget *mouse = header_->viewport();
        QTest::mousePress(mouse, Qt::LeftButton, {}, from);
        // The header waits for a first move that is far enough to be meant.
        QTest::mouseMove(mouse, from + QPoint(to.x() > from.x() ? 12 : -12, 0));
        QTest::mouseMove(mouse, to);
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, to);
    }
    QImage HeaderPicture(qreal ratio = 1) const
    {
        QImage picture(header_->size() * ratio, QImage::Format_RGB32);
        picture.setDevicePixelRatio(ratio);
        header_->render(&picture);
        return picture;
    }
    /// Whether something dark is drawn in there: a caption.
    static bool HasText(const QImage &picture, const QRect &rect)
    {
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            for (int x = rect.left(); x <= rect.right(); ++x) {
                if (picture.pixelColor(x, y).lightness() < 60)
                    return true;
            }
        }
        return false;
    }

private slots:
    void init()
    {
        dataSet_ = std::make_unique<ClientDataSet>();
        grid_ = std::make_unique<BandedGrid>();
        grid_->setFrameShape(QFrame::NoFrame);
        grid_->SetColumns(Columns);
        grid_->SetBands(Bands);
        grid_->ApplySheet(Sheet());
        grid_->SetDataSet(dataSet_.get());
        header_ = static_cast<BandHeader *>(grid_->horizontalHeader());
        OpenRows();
    }

    void cleanup()
    {
        grid_.reset();
        dataSet_.reset();
    }

    // --- Bands as data ---
    void RefusesBandsThatDoNotFitTheColumns_data()
    {
        QTest::addColumn<QStringList>("bands");
        QTest::addColumn<QString>("error");
        QTest::newRow("column in no band")
            << QStringList{u"药品|A,B"_s} << u"列“C”不属于任何栏目"_s;
        QTest::newRow("column in two bands") << QStringList{u"药品|A,B"_s, u"价格|A,C"_s}
                                             << u"栏目“价格”有误：列“A”已属于前面的栏目"_s;
        QTest::newRow("twice in one")
            << QStringList{u"药品|A,A,B,C"_s} << u"栏目“药品”有误：列“A”已属于前面的栏目"_s;
        QTest::newRow("once too often") << QStringList{u"药品|A,B,C"_s, u"价格|C"_s}
                                        << u"栏目“价格”有误：列“C”已属于前面的栏目"_s;
        QTest::newRow("no such column")
            << QStringList{u"药品|A,B"_s, u"价格|D"_s} << u"栏目“价格”有误：没有列“D”"_s;
        QTest::newRow("other order") << QStringList{u"药品|B,A,C"_s}
                                     << u"栏目“药品”有误：列“B”与列的次序不符，此处应为列“A”"_s;
        QTest::newRow("no field") << QStringList{u"药品|"_s}
                                  << u"栏目定义“药品|”无法识别：缺少字段名"_s;
        QTest::newRow("no bar") << QStringList{u"A"_s} << u"栏目定义“A”无法识别：缺少字段名"_s;
    }
    void RefusesBandsThatDoNotFitTheColumns()
    {
        QFETCH(QStringList, bands);
        QFETCH(QString, error);
        const QStringList before{u"全部|A,B,C"_s};
        BandedGrid grid;
        grid.SetColumns({u"A"_s, u"B"_s, u"C"_s});
        grid.SetBands(before);
        const auto refusal = Raised<EQelError>([&] { grid.SetBands(bands); });
        QVERIFY(refusal);
        QCOMPARE(refusal->Message(), error);
        QCOMPARE(grid.Bands(), before);
    }

    void RefusesColumnsThatDoNotFitItsBands()
    {
        const QStringList before = grid_->Columns();
        const auto refusal = Raised<EQelError>([&] { grid_->SetColumns({u"NAME"_s}); });
        QVERIFY(refusal);
        QCOMPARE(refusal->Message(), u"栏目“药品”有误：没有列“SPEC”"_s);
        QCOMPARE(grid_->Columns(), before);
    }

    void ColumnsAndBandsComeFromALayoutInEitherOrder()
    {
        const QStringList columns{u"A|甲|60||"_s, u"B|乙|60||"_s};
        const QStringList bands{u"药品|a"_s, u"价格|B"_s};
        BandedGrid one;
        QVERIFY(one.setProperty("columns", columns));
        QVERIFY(one.setProperty("bands", bands));
        BandedGrid other;
        QVERIFY(other.setProperty("bands", bands));
        QVERIFY(other.setProperty("columns", columns));
        for (const BandedGrid *grid : {&one, &other}) {
            QCOMPARE(grid->Columns(), columns);
            QCOMPARE(grid->Bands(), bands);
            QCOMPARE(static_cast<BandHeader *>(grid->horizontalHeader())->BandOrder(),
                     (QList<int>{0, 1}));
        }
    }

    void WithoutBandsItHasOneHeaderRow()
    {
        grid_->SetBands({});
        QCOMPARE(header_->sizeHint().height(), 22);
        QCOMPARE(header_->BandRowHeight(), 0);
        Show();
        QCOMPARE(HeaderPicture().pixelColor(3, 3), ColumnColor);
        const int width = grid_->columnWidth(Spec);
        Drag({ColumnCaption(Spec).right(), 5}, {ColumnCaption(Spec).right() + 30, 5});
        QCOMPARE(grid_->columnWidth(Spec), width + 30);
        Drag(ColumnCaption(Level).center(), ColumnCaption(Name).center() - QPoint(30, 0));
        QCOMPARE(Order().first(), int(Level));
    }

    // --- Look ---
    void TheHeaderHasTwoRowsOfTheHeightsAskedFor()
    {
        QCOMPARE(header_->sizeHint().height(), 44);
        grid_->SetBandHeight(30);
        QCOMPARE(grid_->BandHeight(), 30);
        QCOMPARE(header_->sizeHint().height(), 52);
        grid_->SetHeaderHeight(40);
        QCOMPARE(header_->sizeHint().height(), 70);
        QFont font = grid_->font();
        font.setPixelSize(60);
        header_->setFont(font);
        QVERIFY(header_->sizeHint().height() >= 2 * QFontMetrics(font).height());
    }

    void ABandSpansItsVisibleColumns()
    {
        Show();
        QCOMPARE(header_->BandRect(Product), QRect(0, 0, 200, 22));
        QCOMPARE(header_->BandRect(Prices), QRect(200, 0, 240, 22));
        QCOMPARE(header_->BandRect(Others).left(), 440);
        grid_->SetColumnVisible(u"PRICE_03", true);
        QCOMPARE(header_->BandRect(Prices), QRect(200, 0, 320, 22));
        grid_->SetColumnVisible(u"PRICE_01", false);
        QCOMPARE(header_->BandRect(Prices), QRect(200, 0, 240, 22));
        grid_->setColumnWidth(Price2, 100);
        QCOMPARE(header_->BandRect(Prices), QRect(200, 0, 260, 22));
    }

    void ABandWithoutVisibleColumnsIsNotShown()
    {
        Show();
        for (const QStringView field : {u"PRICE_01", u"PRICE_02", u"COST"})
            grid_->SetColumnVisible(field, false);
        QVERIFY(header_->BandRect(Prices).isEmpty());
        QCOMPARE(header_->BandRect(Others).left(), 200);
        for (int x = 0; x < header_->width(); x += 3)
            QVERIFY(header_->BandAt({x, 5}) != Prices);
        grid_->SetColumnVisible(u"COST", true);
        QCOMPARE(header_->BandRect(Prices), QRect(200, 0, 80, 22));
    }

    void BothRowsArePaintedCrisply_data()
    {
        QTest::addColumn<int>("ratio");
        QTest::newRow("100 %") << 1;
        QTest::newRow("200 %") << 2;
    }
    void BothRowsArePaintedCrisply()
    {
        QFETCH(int, ratio);
        Show();
        const QImage picture = HeaderPicture(ratio);
        const auto color = [&](int x, int y) { return picture.pixel(x, y); };
        const int bandLine = 3 * ratio; // above the text
        const int columnLine = 25 * ratio;
        const QRgb bandBorder = BandColor.lighter(150).rgb();
        const QRgb columnBorder = ColumnColor.lighter(150).rgb();
        for (int x = 0; x < picture.width(); ++x) {
            // Bands end at 200 and 440, columns at 120, 200, 280, 360, 440 and the grid's end.
            const int at = x / ratio;
            const bool isBandEnd = at == 199 || at == 439 || at == 699;
            const bool isColumnEnd = isBandEnd || at == 119 || at == 279 || at == 359;
            QCOMPARE(color(x, bandLine), isBandEnd ? bandBorder : BandColor.rgb());
            QCOMPARE(color(x, columnLine), isColumnEnd ? columnBorder : ColumnColor.rgb());
        }
        QCOMPARE(color(1, 22 * ratio - 1), BandColor.rgb());
        QCOMPARE(color(1, 22 * ratio), ColumnColor.rgb());
    }

    void WhereThereIsNoBandTheRowHasItsBackground()
    {
        Show();
        for (const QString &column : Columns)
            grid_->SetColumnVisible(column.section(u'|', 0, 0), false);
        const QImage picture = HeaderPicture();
        QCOMPARE(picture.pixelColor(5, 5), BandGround);
        QCOMPARE(picture.pixelColor(picture.width() - 5, 5), BandGround);
    }

    void WithoutASheetItIsPaintedInThePalettesColours()
    {
        BandedGrid plain;
        plain.SetColumns(Columns);
        plain.SetBands(Bands);
        plain.setFrameShape(QFrame::NoFrame);
        plain.resize(700, 200);
        const QImage picture = plain.grab().toImage();
        QCOMPARE(picture.pixelColor(3, 3), plain.palette().color(QPalette::Button));
    }

    void CaptionsStandInTheMiddleOfWhatIsSeenOfABand()
    {
        grid_->setColumnWidth(Price2, 600);
        Show(300);
        grid_->horizontalScrollBar()->setValue(400); // the band alone fills the grid
        QCOMPARE(header_->BandRect(Prices).left(), -200);
        const QImage picture = HeaderPicture();
        QVERIFY(HasText(picture, QRect(header_->width() / 2 - 10, 4, 20, 15)));
        QVERIFY(!HasText(picture, QRect(0, 4, header_->width() / 2 - 20, 15)));
    }

    void TheHeaderScrollsWithTheRows()
    {
        Show(300);
        for (const int value : {0, 37, 200, 120}) {
            grid_->horizontalScrollBar()->setValue(value);
            for (const int column : {Name, Price1, Cost, Level})
                QCOMPARE(ColumnCaption(column).left(),
                         grid_->visualRect(grid_->model()->index(0, column)).left());
            QCOMPARE(header_->BandRect(Prices).left(), ColumnCaption(Price1).left());
        }
    }

    void AnElidedBandCaptionIsShownAsTooltip()
    {
        grid_->SetBands({u"药品|NAME,SPEC,DOSE"_s, u"价格|PRICE_01,PRICE_02,PRICE_03,COST"_s,
                         u"这是一个很长很长很长很长很长的栏目名称|LEVEL"_s});
        Show(530);
        const auto tooltipAt = [this](QPoint position) {
            QToolTip::hideText();
            QHelpEvent help(QEvent::ToolTip, position, header_->mapToGlobal(position));
            QCoreApplication::sendEvent(header_->viewport(), &help);
            return QToolTip::text();
        };
        QCOMPARE(tooltipAt(header_->BandRect(Others).center()),
                 u"这是一个很长很长很长很长很长的栏目名称"_s);
        QToolTip::hideText();
        QTRY_VERIFY(!QToolTip::isVisible());
        QCOMPARE(tooltipAt(header_->BandRect(Product).center()), QString());
    }

    // --- Moving and resizing by mouse ---
    void AColumnIsMovedWithinItsBand()
    {
        Show();
        Drag(ColumnCaption(Cost).center(), ColumnCaption(Price1).center() - QPoint(20, 0));
        QCOMPARE(Order(), (QList<int>{Name, Spec, Dose, Cost, Price1, Price2, Price3, Level}));
        QCOMPARE(header_->BandRect(Prices), QRect(200, 0, 240, 22));
        Drag(ColumnCaption(Cost).center(), ColumnCaption(Price1).center() + QPoint(20, 0));
        QCOMPARE(Order(), (QList<int>{Name, Spec, Dose, Price1, Cost, Price2, Price3, Level}));
    }

    void AColumnDraggedOutOfItsBandStopsAtTheBandsEnd_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("to"); // x
        QTest::addColumn<QList<int>>("order");
        QTest::newRow("to the left")
            << int(Cost) << 10 << QList<int>{Name, Spec, Dose, Cost, Price1, Price2, Price3, Level};
        QTest::newRow("to the right")
            << int(Price1) << 690
            << QList<int>{Name, Spec, Dose, Price2, Price3, Cost, Price1, Level};
        QTest::newRow("out of the grid")
            << int(Price1) << 900
            << QList<int>{Name, Spec, Dose, Price2, Price3, Cost, Price1, Level};
        QTest::newRow("the only one")
            << int(Level) << 10
            << QList<int>{Name, Spec, Dose, Price1, Price2, Price3, Cost, Level};
    }
    void AColumnDraggedOutOfItsBandStopsAtTheBandsEnd()
    {
        QFETCH(int, column);
        QFETCH(int, to);
        Show();
        const QPoint from = ColumnCaption(column).center();
        Drag(from, {to, from.y()});
        QTEST(Order(), "order");
    }

    void ABandIsMovedAsAWholeByItsCaption_data()
    {
        QTest::addColumn<int>("band");
        QTest::addColumn<int>("to"); // x
        QTest::addColumn<QList<int>>("order");
        const QList<int> before{Name, Spec, Dose, Price1, Price2, Price3, Cost, Level};
        QTest::newRow("to the front")
            << int(Prices) << 20
            << QList<int>{Price1, Price2, Price3, Cost, Name, Spec, Dose, Level};
        QTest::newRow("to the end")
            << int(Product) << 680
            << QList<int>{Price1, Price2, Price3, Cost, Level, Name, Spec, Dose};
        QTest::newRow("beyond the grid")
            << int(Others) << -200
            << QList<int>{Level, Name, Spec, Dose, Price1, Price2, Price3, Cost};
        QTest::newRow("past its neighbour's middle")
            << int(Product) << 330
            << QList<int>{Price1, Price2, Price3, Cost, Name, Spec, Dose, Level};
        QTest::newRow("not past its neighbour's middle") << int(Product) << 310 << before;
        QTest::newRow("not far enough to be meant") << int(Product) << 103 << before;
    }
    void ABandIsMovedAsAWholeByItsCaption()
    {
        QFETCH(int, band);
        QFETCH(int, to);
        Show();
        QWidget *mouse = header_->viewport();
        QTest::mousePress(mouse, Qt::LeftButton, {}, header_->BandRect(band).center());
        QTest::mouseMove(mouse, {to, 10});
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, {to, 10});
        QTEST(Order(), "order");
    }

    void ABandIsMovedPastOneThatIsHidden()
    {
        Show();
        for (const QStringView field : {u"PRICE_01", u"PRICE_02", u"COST"})
            grid_->SetColumnVisible(field, false);
        Drag(header_->BandRect(Others).center(), {20, 10});
        QCOMPARE(header_->BandOrder(), (QList<int>{Others, Product, Prices}));
    }

    void AHiddenBandDoesNotGiveWay()
    {
        Show();
        grid_->SetColumnVisible(u"LEVEL", false);
        Drag(header_->BandRect(Product).center(), {310, 10}); // not past the prices' middle
        QCOMPARE(header_->BandOrder(), (QList<int>{Product, Prices, Others}));
    }

    void AMarkShowsWhereADraggedBandWillStand()
    {
        Show();
        QWidget *mouse = header_->viewport();
        const QImage before = HeaderPicture();
        QTest::mousePress(mouse, Qt::LeftButton, {}, header_->BandRect(Others).center());
        QTest::mouseMove(mouse, {300, 10});
        const QImage during = HeaderPicture();
        for (const int y : {2, 40})
            QVERIFY(during.pixelColor(200, y) != before.pixelColor(200, y));
        QCOMPARE(during.pixelColor(198, 2), before.pixelColor(198, 2));
        QTest::mouseMove(mouse, {600, 10}); // over its own place
        QCOMPARE(HeaderPicture(), before);
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, {600, 10});
        QCOMPARE(HeaderPicture(), before);
    }

    void DraggingBeyondTheBorderScrolls()
    {
        Show(300);
        QWidget *mouse = header_->viewport();
        QTest::mousePress(mouse, Qt::LeftButton, {}, header_->BandRect(Product).center());
        for (int move = 0; move < 40; ++move)
            QTest::mouseMove(mouse, {310 + move % 2, 10});
        QCOMPARE(grid_->horizontalScrollBar()->value(), grid_->horizontalScrollBar()->maximum());
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, {310, 10});
        QCOMPARE(header_->BandOrder(), (QList<int>{Prices, Others, Product}));
    }

    void DraggingAColumnBeyondTheBorderScrolls()
    {
        Show(300);
        grid_->horizontalScrollBar()->setValue(150);
        QWidget *mouse = header_->viewport();
        QTest::mousePress(mouse, Qt::LeftButton, {}, ColumnCaption(Price1).center());
        for (int move = 0; move < 40; ++move)
            QTest::mouseMove(mouse, {310 + move % 2, 30});
        QCOMPARE(grid_->horizontalScrollBar()->value(), grid_->horizontalScrollBar()->maximum());
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, {310, 30});
        QCOMPARE(Order(), (QList<int>{Name, Spec, Dose, Price2, Price3, Cost, Price1, Level}));
    }

    void ADragWhoseReleaseWentElsewhereEnds()
    {
        Show();
        QWidget *mouse = header_->viewport();
        QTest::mousePress(mouse, Qt::LeftButton, {}, header_->BandRect(Product).center());
        QTest::mouseMove(mouse, {600, 10});
        const QPointF elsewhere(600, 10);
        QMouseEvent hover(QEvent::MouseMove, elsewhere, mouse->mapToGlobal(elsewhere), Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(mouse, &hover);
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, {600, 10});
        QCOMPARE(header_->BandOrder(), (QList<int>{Product, Prices, Others}));
    }

    void ABandStaysTogetherWhateverMovesAColumn()
    {
        const QList<int> before = Order();
        header_->moveSection(Name, Cost);
        QCOMPARE(Order(), before);
        header_->moveSection(Level, Price2);
        QCOMPARE(Order(), before);
        header_->moveSection(Name, Spec);
        QCOMPARE(Order(), (QList<int>{Spec, Name, Dose, Price1, Price2, Price3, Cost, Level}));
    }

    void TheBorderBetweenBandsResizesTheColumnLeftOfIt_data()
    {
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("offset"); // from the first pixel of the next band
        QTest::newRow("in the band row") << 10 << -2;
        QTest::newRow("in the band row, from the right") << 10 << 1;
        QTest::newRow("in the column row") << 30 << -2;
    }
    void TheBorderBetweenBandsResizesTheColumnLeftOfIt()
    {
        QFETCH(int, y);
        QFETCH(int, offset);
        Show();
        const int x = header_->BandRect(Prices).left() + offset;
        Drag({x, y}, {x + 50, y});
        QCOMPARE(grid_->columnWidth(Spec), 130);
        QCOMPARE(header_->BandRect(Product).width(), 250);
        QCOMPARE(header_->BandOrder(), (QList<int>{Product, Prices, Others}));
    }

    void ColumnsOfABandAreResizedInTheirRowOnly()
    {
        Show();
        const int x = ColumnCaption(Price1).right();
        Drag({x, 30}, {x + 40, 30});
        QCOMPARE(grid_->columnWidth(Price1), 120);
        const int border = ColumnCaption(Price1).right();
        Drag({border, 10}, {border + 40, 10});
        QCOMPARE(grid_->columnWidth(Price1), 120);
    }

    void TheCursorSaysWhatAPressWouldDo()
    {
        Show();
        QWidget *mouse = header_->viewport();
        const int bandEnd = header_->BandRect(Product).right();
        QTest::mouseMove(mouse, {bandEnd, 10});
        QCOMPARE(header_->cursor().shape(), Qt::SplitHCursor);
        QTest::mouseMove(mouse, header_->BandRect(Product).center());
        QCOMPARE(header_->cursor().shape(), Qt::ArrowCursor);
        QTest::mouseMove(mouse, {ColumnCaption(Name).right(), 30});
        QCOMPARE(header_->cursor().shape(), Qt::SplitHCursor);
        QTest::mouseMove(mouse, {ColumnCaption(Name).right(), 10});
        QCOMPARE(header_->cursor().shape(), Qt::ArrowCursor);
    }

    void NothingIsMovedWhereColumnsMayNotBe()
    {
        Show();
        header_->setSectionsMovable(false);
        Drag(header_->BandRect(Product).center(), {680, 10});
        QCOMPARE(header_->BandOrder(), (QList<int>{Product, Prices, Others}));
    }

    // --- What a moved column is ---
    void AMovedColumnEditsAndPostsItsOwnField()
    {
        Show();
        Drag(ColumnCaption(Cost).center(), ColumnCaption(Price1).center() - QPoint(20, 0));
        Drag(header_->BandRect(Prices).center(), {20, 10});
        const QPoint first(10, 10); // now the retail price of the first row
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, first);
        QTest::mouseDClick(grid_->viewport(), Qt::LeftButton, {}, first);
        auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        QCOMPARE(editor->text(), u"4.00"_s);
        QTest::keyClicks(editor, u"44"_s);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(dataSet_->TextAt(0, u"COST"), u"44.00"_s);
        QVERIFY(!dataSet_->IsEditing());
        QCOMPARE(dataSet_->TextAt(0, u"PRICE_01"), u"1"_s);
        QCOMPARE(dataSet_->TextAt(0, u"NAME"), u"当归"_s);
        QCOMPARE(grid_->Columns().first(), u"NAME|通用名|120||"_s);
    }

    void TheOrderOfColumnsOutlivesAQuery()
    {
        Drag(ColumnCaption(Name).center(), ColumnCaption(Spec).center() + QPoint(20, 0));
        header_->MoveBand(Others, Product);
        const QList<int> order = Order();
        dataSet_->Close();
        OpenRows();
        QCOMPARE(Order(), order);
    }

    void NewBandsBringTheColumnsBackIntoTheirOrder()
    {
        header_->MoveBand(Others, Product);
        grid_->SetBands({u"全部|NAME,SPEC,DOSE,PRICE_01,PRICE_02,PRICE_03,COST,LEVEL"_s});
        QCOMPARE(Order(), (QList<int>{Name, Spec, Dose, Price1, Price2, Price3, Cost, Level}));
    }

    void ACopiedRowHasTheOrderOfTheScreen()
    {
        header_->MoveBand(Prices, Product);
        header_->moveSection(0, 1);
        grid_->setCurrentIndex(grid_->model()->index(0, Name));
        QTest::keyClick(grid_.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"2.00\t1.00\t4.00\t当归\t10g\t一"_s);
    }

    void KeysGoThroughTheCellsAsTheyStandOnTheScreen()
    {
        Show();
        header_->MoveBand(Others, Product);
        grid_->setCurrentIndex(grid_->model()->index(0, Level));
        QList<int> columns;
        for (int key = 0; key < 5; ++key) {
            QTest::keyClick(grid_.get(), Qt::Key_Right);
            columns.append(grid_->currentIndex().column());
        }
        QCOMPARE(columns, (QList<int>{Name, Spec, Price1, Price2, Cost}));
    }

    // --- Accessibility ---
    void AColumnIsNamedAfterItsBandToo()
    {
        grid_->SetColumnCaption(u"PRICE_02", u"二级价"_s);
        QAccessibleInterface *table = QAccessible::queryAccessibleInterface(grid_.get());
        QVERIFY(table);
        QStringList names;
        for (int at = 0; at < table->childCount(); ++at) {
            const QAccessibleInterface *child = table->child(at);
            if (child && child->role() == QAccessible::ColumnHeader)
                names.append(child->text(QAccessible::Name));
        }
        QCOMPARE(names, (QStringList{u"药品 通用名"_s, u"药品 规格"_s, u"药品 剂型"_s,
                                     u"价格 一级"_s, u"价格 二级价"_s, u"价格 三级"_s,
                                     u"价格 零售价"_s, u"其他 质量层次"_s}));
    }

    void ACellsEditorIsNamedAfterItsBandToo()
    {
        Show();
        grid_->EditCell(u"COST");
        const auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        QCOMPARE(editor->accessibleName(), u"价格 零售价"_s);
    }
};

QTEST_MAIN(BandedGridTest)
#include "BandedGridTest.moc"
