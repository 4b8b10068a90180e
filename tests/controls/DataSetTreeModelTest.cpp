#include "controls/DataSetTreeModel.h"

#include "TestTable.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

namespace {

/// Rows "key parent" become a table ID, PARENT_ID, NAME ("n" + key).
RowSet Nodes(const QStringList &lines)
{
    QList<QStringList> rows;
    for (const QString &line : lines) {
        const QStringList parts = line.split(u' ');
        rows.append({parts[0], parts[1], u"n"_s + parts[0]});
    }
    return Rows({u"ID"_s, u"PARENT_ID"_s, u"NAME"_s}, rows);
}

} // namespace

class DataSetTreeModelTest : public QObject
{
    Q_OBJECT

    ClientDataSet dataSet_;
    std::unique_ptr<DataSetTreeModel> model_;
    std::unique_ptr<QAbstractItemModelTester> tester_;

    /// The whole tree as text: "a(b(c)d)e".
    QString Shape(const QModelIndex &parent = {}) const
    {
        QString text;
        for (int row = 0; row < model_->rowCount(parent); ++row) {
            const QModelIndex index = model_->index(row, 0, parent);
            text += index.data().toString().mid(1);
            const QString children = Shape(index);
            if (!children.isEmpty())
                text += u'(' + children + u')';
        }
        return text;
    }

    void Change(int recNo, const QString &field, const QString &text)
    {
        dataSet_.SetRecNo(recNo);
        dataSet_.Edit();
        dataSet_.SetFieldText(field, text);
        dataSet_.Post();
    }

private slots:
    void init()
    {
        dataSet_.Close();
        model_ = std::make_unique<DataSetTreeModel>();
        tester_ = std::make_unique<QAbstractItemModelTester>(
            model_.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        model_->SetColumns(ParseGridColumns({u"NAME|名称|100"_s, u"ID|编码|60"_s}));
        model_->SetKeys(u"ID"_s, u"PARENT_ID"_s, u"-1"_s);
        model_->SetDataSet(&dataSet_);
    }

    void cleanup()
    {
        tester_.reset();
        model_.reset();
    }

    void BuildsTheTree_data()
    {
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("shape");
        QTest::newRow("parents before children")
            << QStringList{u"a -1"_s, u"b a"_s, u"c b"_s, u"d a"_s, u"e -1"_s} << u"a(b(c)d)e"_s;
        QTest::newRow("children before parents, siblings in table order")
            << QStringList{u"d a"_s, u"c b"_s, u"b a"_s, u"a -1"_s} << u"a(db(c))"_s;
        QTest::newRow("NULL and empty parents are top-level")
            << QStringList{u"a <null>"_s, u"b "_s, u"c a"_s} << u"a(c)b"_s;
        QTest::newRow("a parent that is not present makes top-level")
            << QStringList{u"a x"_s, u"b a"_s} << u"a(b)"_s;
        QTest::newRow("its own parent") << QStringList{u"a a"_s, u"b a"_s} << u"a(b)"_s;
        QTest::newRow("a cycle of two") << QStringList{u"a b"_s, u"b a"_s, u"c a"_s} << u"a(c)b"_s;
        QTest::newRow("a cycle below which a branch hangs")
            << QStringList{u"z y"_s, u"y a"_s, u"a c"_s, u"b a"_s, u"c b"_s, u"t -1"_s}
            << u"a(y(z))bct"_s;
        QTest::newRow("of two rows with one key the first is the parent")
            << QStringList{u"a -1"_s, u"a -1"_s, u"b a"_s} << u"a(b)a"_s;
        QTest::newRow("the root value is no key") << QStringList{u"-1 x"_s, u"a -1"_s} << u"-1a"_s;
        QTest::newRow("NULL keys are nobody's parent")
            << QStringList{u"<null> -1"_s, u"a <null>"_s} << u"a"_s;
    }

    void BuildsTheTree()
    {
        QFETCH(QStringList, rows);
        QFETCH(QString, shape);
        dataSet_.Open(Nodes(rows));
        QString found = Shape();
        found.remove(u"<null>"_s); // the name made of a NULL key
        QCOMPARE(found, shape);
    }

    void AnotherRootValueCounts()
    {
        model_->SetKeys(u"ID"_s, u"PARENT_ID"_s, u"0"_s);
        dataSet_.Open(Nodes({u"0 x"_s, u"a 0"_s}));
        QCOMPARE(Shape(), u"0a"_s);
    }

    void WithoutTheKeyFieldsEveryRowIsTopLevel()
    {
        dataSet_.Open(Rows({u"NAME"_s}, {{u"na"_s}, {u"nb"_s}}));
        QCOMPARE(Shape(), u"ab"_s);
    }

    void AnAppendedRowFindsItsPlaceWithItsKeys()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"b -1"_s}));
        QSignalSpy reset(model_.get(), &QAbstractItemModel::modelReset);
        const QPersistentModelIndex b(model_->IndexOf(1));
        dataSet_.Append();
        QCOMPARE(model_->rowCount(), 3);
        dataSet_.SetFieldText(u"ID", u"c"_s);
        dataSet_.SetFieldText(u"PARENT_ID", u"a"_s);
        dataSet_.SetFieldText(u"NAME", u"nc"_s);
        dataSet_.Post();
        QCOMPARE(Shape(), u"a(c)b"_s);
        QCOMPARE(b.data().toString(), u"nb"_s);
        QCOMPARE(reset.size(), 0);
    }

    void OrphansGoToTheParentThatComes()
    {
        dataSet_.Open(Nodes({u"b a"_s, u"c a"_s}));
        dataSet_.Append();
        dataSet_.SetFieldText(u"NAME", u"na"_s);
        dataSet_.SetFieldText(u"ID", u"a"_s);
        QCOMPARE(Shape(), u"a(bc)"_s);
        dataSet_.Cancel();
        QCOMPARE(Shape(), u"bc"_s);
    }

    void ChildrenOfADeletedRowBecomeTopLevel()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"b a"_s, u"c b"_s, u"d a"_s}));
        dataSet_.SetRecNo(1);
        dataSet_.Delete();
        QCOMPARE(Shape(), u"a(d)c"_s);
        dataSet_.SetRecNo(0);
        dataSet_.Delete();
        QCOMPARE(Shape(), u"cd"_s);
    }

    void TheSecondRowOfAKeyInheritsTheChildren()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"a -1"_s, u"b a"_s}));
        dataSet_.SetRecNo(0);
        dataSet_.Delete();
        QCOMPARE(Shape(), u"a(b)"_s);
    }

    void AChangedParentMovesTheNodeWithItsBranch()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"b a"_s, u"c b"_s, u"d -1"_s}));
        const QPersistentModelIndex c(model_->IndexOf(2));
        Change(1, u"PARENT_ID"_s, u"d"_s);
        QCOMPARE(Shape(), u"ad(b(c))"_s);
        QCOMPARE(model_->RecNoOf(c), 2);
        QCOMPARE(c.parent().data().toString(), u"nb"_s);
        Change(3, u"ID"_s, u"x"_s); // its children lose it
        QCOMPARE(Shape(), u"ab(c)d"_s);
    }

    void AParentChangedIntoACycleCannotHang()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"b a"_s, u"c b"_s}));
        Change(0, u"PARENT_ID"_s, u"c"_s);
        QCOMPARE(Shape(), u"abc"_s);
    }

    void OtherFieldsChangeWithoutMovingAnything()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"b a"_s}));
        QSignalSpy layout(model_.get(), &QAbstractItemModel::layoutChanged);
        QSignalSpy changed(model_.get(), &QAbstractItemModel::dataChanged);
        Change(1, u"NAME"_s, u"nB"_s);
        QCOMPARE(Shape(), u"a(B)"_s);
        QCOMPARE(layout.size(), 0);
        QVERIFY(!changed.isEmpty());
        QCOMPARE(changed[0][0].toModelIndex(), model_->index(0, 0, model_->index(0, 0)));
    }

    void RowsRemovedInBulkLeaveTheRest()
    {
        dataSet_.Open(Nodes({u"a -1"_s, u"b a"_s, u"c -1"_s, u"d c"_s}));
        dataSet_.DeleteRows([](int recNo) { return recNo < 2; });
        QCOMPARE(Shape(), u"c(d)"_s);
    }

    void MapsRowsToIndexesAndBack()
    {
        dataSet_.Open(Nodes({u"d a"_s, u"c b"_s, u"b a"_s, u"a -1"_s}));
        for (int recNo = 0; recNo < 4; ++recNo) {
            QCOMPARE(model_->RecNoOf(model_->IndexOf(recNo)), recNo);
            QCOMPARE(model_->IndexOf(recNo, 1).data().toString(), dataSet_.TextAt(recNo, 0));
        }
        QVERIFY(!model_->IndexOf(4).isValid());
        QVERIFY(!model_->IndexOf(-1).isValid());
        QCOMPARE(model_->RecNoOf({}), -1);
        QCOMPARE(model_->ParentRecNo(1), 2);
        QCOMPARE(model_->ParentRecNo(3), -1);
    }

    void WalksInTreeOrderWithPositions()
    {
        dataSet_.Open(Nodes({u"d a"_s, u"c b"_s, u"b a"_s, u"a -1"_s, u"e -1"_s}));
        QCOMPARE(Shape(), u"a(db(c))e"_s);
        QList<int> order;
        for (int node = model_->NextInTreeOrder(-1); node >= 0;
             node = model_->NextInTreeOrder(node)) {
            QCOMPARE(model_->TreePosition(node), int(order.size()));
            order.append(node);
        }
        QCOMPARE(order, (QList<int>{3, 0, 2, 1, 4}));
    }

    void AnEmptyTableHasNoNodes()
    {
        QCOMPARE(model_->NextInTreeOrder(-1), -1);
        QCOMPARE(model_->rowCount(), 0);
        dataSet_.Open(Nodes({}));
        QCOMPARE(model_->NextInTreeOrder(-1), -1);
        QCOMPARE(model_->TreePosition(0), -1);
    }
};

QTEST_GUILESS_MAIN(DataSetTreeModelTest)
#include "DataSetTreeModelTest.moc"
