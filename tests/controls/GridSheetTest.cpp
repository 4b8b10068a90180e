#include "controls/GridSheet.h"

#include <QTableView>
#include <QTest>

using namespace Qel;

class GridSheetTest : public QObject
{
    Q_OBJECT

private slots:
    void TextIsTheColourWithMoreContrast()
    {
        QCOMPARE(ReadableTextOn(QColor(0x31, 0x6A, 0xC5)), QColor(Qt::white)); // 5.3 : 1
        QCOMPARE(ReadableTextOn(QColor(0xAB, 0xC4, 0xFE)), QColor(Qt::black)); // 12 : 1
        QCOMPARE(ReadableTextOn(QColor(Qt::black)), QColor(Qt::white));
        QCOMPARE(ReadableTextOn(QColor(Qt::white)), QColor(Qt::black));
    }

    void RowsAndSelectionTakeTheirColours()
    {
        QTableView view;
        GridSheet sheet;
        sheet.contentEven = Qt::white;
        sheet.contentOdd = QColor(0xF4, 0xF9, 0xFB);
        sheet.selection = QColor(0xAB, 0xC4, 0xFE);
        sheet.inactive = QColor(0xAA, 0xBB, 0xCC);
        ApplySheetPalette(view, sheet);
        const QPalette palette = view.palette();
        QCOMPARE(palette.color(QPalette::Active, QPalette::Base), QColor(Qt::white));
        QCOMPARE(palette.color(QPalette::Active, QPalette::AlternateBase), sheet.contentOdd);
        QCOMPARE(palette.color(QPalette::Active, QPalette::Highlight), sheet.selection);
        QCOMPARE(palette.color(QPalette::Active, QPalette::HighlightedText), QColor(Qt::black));
        QCOMPARE(palette.color(QPalette::Inactive, QPalette::Highlight), sheet.inactive);
    }

    void AnInvalidColourLeavesWhatWasThere()
    {
        QTableView view;
        const QColor before = view.palette().color(QPalette::Highlight);
        ApplySheetPalette(view, {});
        QCOMPARE(view.palette().color(QPalette::Highlight), before);
    }
};

QTEST_MAIN(GridSheetTest)
#include "GridSheetTest.moc"
