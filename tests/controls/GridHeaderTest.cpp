#include "controls/DataGrid.h"
#include "controls/DataTree.h"

#include <QHeaderView>
#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

class GridHeaderTest : public QObject
{
    Q_OBJECT

private slots:
    void LastColumnTakesTheRoomThatIsLeft()
    {
        DataGrid grid;
        grid.SetColumns({u"A|甲|100"_s, u"B|乙|120"_s});
        grid.resize(500, 200);
        grid.show();
        const QHeaderView &header = *grid.horizontalHeader();
        QTRY_COMPARE(header.length(), header.viewport()->width());
        QCOMPARE(header.sectionSize(0), 100);
    }

    void LastColumnKeepsItsWidthWhenThereIsNoRoom()
    {
        DataGrid grid;
        grid.SetColumns({u"A|甲|300"_s, u"B|乙|120"_s});
        grid.resize(900, 200);
        grid.show();
        grid.resize(250, 200);
        const QHeaderView &header = *grid.horizontalHeader();
        QTRY_COMPARE(header.sectionSize(1), 120);
        QCOMPARE(header.sectionSize(0), 300);
    }

    void HiddenLastColumnGivesItsPlaceToTheOneBefore()
    {
        DataTree tree;
        tree.SetColumns({u"A|甲|100"_s, u"B|乙|100"_s, u"C|丙|100"_s});
        tree.resize(500, 200);
        tree.show();
        tree.SetColumnVisible(u"C", false);
        const QHeaderView &header = *tree.header();
        QTRY_COMPARE(header.length(), header.viewport()->width());
        QCOMPARE(header.sectionSize(0), 100);
    }
};

QTEST_MAIN(GridHeaderTest)
#include "GridHeaderTest.moc"
