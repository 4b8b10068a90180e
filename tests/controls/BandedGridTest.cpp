#include "controls/BandedGrid.h"

#include "TestTable.h"
#include "controls/BandHeader.h"
#include "dataset/QelError.h"
#include "support/Raised.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

class BandedGridTest : public QObject
{
    Q_OBJECT

private slots:
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
        BandedGrid grid;
        grid.SetColumns({u"A"_s, u"B"_s, u"C"_s});
        const auto refusal = Raised<EQelError>([&] { grid.SetBands(bands); });
        QVERIFY(refusal);
        QCOMPARE(refusal->Message(), error);
        QCOMPARE(grid.Bands(), QStringList());
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
};

QTEST_MAIN(BandedGridTest)
#include "BandedGridTest.moc"
