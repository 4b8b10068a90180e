#include "controls/DataTree.h"

#include "TestTable.h"

#include <QClipboard>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

namespace {

//  0 a
//  2   b
//  1     c
//  3   d
//  4 e
RowSet Nodes()
{
    return Rows({u"ID"_s, u"PARENT_ID"_s, u"NAME"_s, u"FULL"_s},
                {{u"a"_s, u"-1"_s, u"北京"_s, u"北京市"_s},
                 {u"c"_s, u"b"_s, u"西城"_s, u"北京市西城区"_s},
                 {u"b"_s, u"a"_s, u"市区"_s, u"北京市市区"_s},
                 {u"d"_s, u"a"_s, u"郊区"_s, u"北京市郊区"_s},
                 {u"e"_s, u"-1"_s, u"天津"_s, u"天津市"_s}});
}

} // namespace

class DataTreeTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ClientDataSet> dataSet_;
    std::unique_ptr<DataTree> tree_;

    void Show()
    {
        tree_->resize(400, 240);
        tree_->show();
        QVERIFY(QTest::qWaitForWindowExposed(tree_.get()));
    }

private slots:
    void init()
    {
        dataSet_ = std::make_unique<ClientDataSet>();
        tree_ = std::make_unique<DataTree>();
        QVERIFY(tree_->setProperty("keyField", u"ID"_s));
        QVERIFY(tree_->setProperty("parentField", u"PARENT_ID"_s));
        QVERIFY(tree_->setProperty("rootValue", u"-1"_s));
        QVERIFY(tree_->setProperty("columns", QStringList{u"ID|编号|60||hidden"_s,
                                                          u"NAME|名称|160"_s, u"FULL|全称|160"_s}));
        tree_->SetDataSet(dataSet_.get());
        dataSet_->Open(Nodes());
    }

    void cleanup()
    {
        tree_.reset();
        dataSet_.reset();
    }

    void FocusAndCurrentRowAreTheSame()
    {
        Show();
        QCOMPARE(tree_->FocusedNode(), 0);
        dataSet_->SetRecNo(4);
        QCOMPARE(tree_->FocusedNode(), 4);
        QTest::keyClick(tree_.get(), Qt::Key_Up);
        QCOMPARE(dataSet_->RecNo(), 0);
        dataSet_->Close();
        QCOMPARE(tree_->FocusedNode(), -1);
    }

    void AFocusedNodeIsRevealed()
    {
        Show();
        QVERIFY(!tree_->IsExpanded(0));
        tree_->FocusNode(1);
        QCOMPARE(dataSet_->FieldText(u"ID"), u"c"_s);
        QVERIFY(tree_->IsExpanded(0));
        QVERIFY(tree_->IsExpanded(2));
        QVERIFY(tree_->visualRect(tree_->currentIndex()).isValid());
    }

    void LocatingInTheDataSetRevealsToo()
    {
        Show();
        dataSet_->Locate(u"ID", {u"c"_s});
        QCOMPARE(tree_->FocusedNode(), 1);
        QVERIFY(tree_->IsExpanded(2));
    }

    void LinesAndFocusStandInTheFirstVisibleColumn()
    {
        QCOMPARE(tree_->treePosition(), 1);
        QCOMPARE(tree_->currentIndex().column(), 1);
        tree_->SetColumnVisible(u"ID", true);
        QCOMPARE(tree_->treePosition(), 0);
    }

    void ExpandingIsNotRecursive()
    {
        tree_->ExpandFocused();
        QVERIFY(tree_->IsExpanded(0));
        QVERIFY(!tree_->IsExpanded(2));
        tree_->FocusNode(4);
        tree_->ExpandFocused(); // no children
        QVERIFY(!tree_->IsExpanded(4));
    }

    void ExpandsAndCollapsesByKey()
    {
        Show();
        QTest::keyClick(tree_.get(), Qt::Key_Plus);
        QVERIFY(tree_->IsExpanded(0));
        QTest::keyClick(tree_.get(), Qt::Key_Minus);
        QVERIFY(!tree_->IsExpanded(0));
        QTest::keyClick(tree_.get(), Qt::Key_Right);
        QVERIFY(tree_->IsExpanded(0));
    }

    void ExpandAllAndCollapseAll()
    {
        tree_->ExpandAll();
        QVERIFY(tree_->IsExpanded(0) && tree_->IsExpanded(2));
        tree_->FocusNode(1);
        tree_->CollapseAll();
        QVERIFY(!tree_->IsExpanded(0));
        QCOMPARE(tree_->FocusedNode(), 0); // the ancestor that is still seen
    }

    void ACollapsedNodeTakesTheFocusOfWhatItHides()
    {
        tree_->FocusNode(1);
        tree_->collapse(tree_->Model()->IndexOf(0));
        QCOMPARE(tree_->FocusedNode(), 0);
        QCOMPARE(dataSet_->RecNo(), 0);
        QVERIFY(!tree_->IsExpanded(0));
    }

    void TheSameTableKeepsWhatIsExpanded()
    {
        tree_->ExpandNode(0);
        {
            const ControlsSuspender suspender(*dataSet_);
            dataSet_->SetRecNo(4);
            dataSet_->Edit();
            dataSet_->SetFieldText(u"NAME", u"津"_s);
            dataSet_->Post();
        }
        QVERIFY(tree_->IsExpanded(0));
        QVERIFY(!tree_->IsExpanded(2));
        QCOMPARE(tree_->FocusedNode(), 4);
        dataSet_->Open(Nodes());
        QVERIFY(!tree_->IsExpanded(0)); // another table starts collapsed
    }

    void NodesCanBeWalkedAndRead()
    {
        QCOMPARE(tree_->TopLevelCount(), 2);
        QCOMPARE(tree_->TopLevelNode(1), 4);
        QCOMPARE(tree_->TopLevelNode(2), -1);
        QVERIFY(tree_->HasChildren(2));
        QVERIFY(!tree_->HasChildren(3));
        QCOMPARE(tree_->NextNode(-1), 0);
        QCOMPARE(tree_->NextNode(0), 2);
        QCOMPARE(tree_->NextNode(1), 3);
        QCOMPARE(tree_->NextNode(4), -1);
        QCOMPARE(tree_->AbsoluteIndex(4), 4);
        QCOMPARE(tree_->AbsoluteIndex(1), 2);
        QCOMPARE(tree_->NodeText(1, u"full"), u"北京市西城区"_s);
        QCOMPARE(tree_->NodeText(1, u"PARENT_ID"), u"b"_s); // no column of that field
        QCOMPARE(tree_->NodeText(1, u"NONE"), QString());
        QCOMPARE(tree_->NodeText(-1, u"NAME"), QString());
        QCOMPARE(tree_->ColumnCount(), 3);
    }

    void ANodeContainsATextInAnyColumn()
    {
        QVERIFY(tree_->NodeContains(1, u"西城区"_s));
        QVERIFY(tree_->NodeContains(1, u"c"_s));  // hidden column
        QVERIFY(!tree_->NodeContains(1, u"C"_s)); // case counts
        QVERIFY(!tree_->NodeContains(1, u"天津"_s));
        QVERIFY(!tree_->NodeContains(1, QString()));
    }

    void TellsOfAnotherFocusedNodeOnce()
    {
        Show();
        QSignalSpy changed(tree_.get(), &DataTree::FocusedNodeChanged);
        QTest::keyClick(tree_.get(), Qt::Key_Down);
        QCOMPARE(changed.size(), 1);
        tree_->FocusNode(4); // already there
        QCOMPARE(changed.size(), 1);
        dataSet_->SetRecNo(3);
        QCOMPARE(changed.size(), 2);
    }

    void AnotherTableIsAnotherNode()
    {
        QSignalSpy changed(tree_.get(), &DataTree::FocusedNodeChanged);
        dataSet_->Open(Nodes());
        QVERIFY(changed.size() >= 1);
        QCOMPARE(tree_->FocusedNode(), 0);
    }

    void ABlockedFocusChangeIsNotSentLater()
    {
        QSignalSpy changed(tree_.get(), &DataTree::FocusedNodeChanged);
        {
            const DataTree::FocusSignalBlocker blocker(*tree_);
            dataSet_->Open(Nodes());
            dataSet_->SetRecNo(4);
        }
        QCOMPARE(changed.size(), 0);
        tree_->FocusNode(4);
        QCOMPARE(changed.size(), 0);
        tree_->FocusNode(0);
        QCOMPARE(changed.size(), 1);
    }

    void KeysAndDoubleClickAreReported()
    {
        Show();
        QSignalSpy activated(tree_.get(), &DataTree::NodeActivated);
        QSignalSpy doubleClicked(tree_.get(), &DataTree::NodeDoubleClicked);
        QSignalSpy search(tree_.get(), &DataTree::SearchRequested);
        QTest::keyClick(tree_.get(), Qt::Key_Return);
        QCOMPARE(activated.size(), 1);
        QTest::keyClick(tree_.get(), Qt::Key_F3);
        QCOMPARE(search.size(), 1);
        const QRect cell = tree_->visualRect(tree_->currentIndex());
        QTest::mouseClick(tree_->viewport(), Qt::LeftButton, {}, cell.center());
        QTest::mouseDClick(tree_->viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(doubleClicked.size(), 1);
    }

    void EnterInAnEmptyTreeReportsNothing()
    {
        dataSet_->Close();
        QSignalSpy activated(tree_.get(), &DataTree::NodeActivated);
        QTest::keyClick(tree_.get(), Qt::Key_Return);
        QCOMPARE(activated.size(), 0);
    }

    void AnAppendedChildIsFocusedInItsParent()
    {
        Show();
        dataSet_->Append();
        dataSet_->SetFieldText(u"ID", u"f"_s);
        dataSet_->SetFieldText(u"PARENT_ID", u"e"_s);
        dataSet_->Post();
        QCOMPARE(tree_->FocusedNode(), 5);
        QCOMPARE(tree_->currentIndex().parent().siblingAtColumn(1).data().toString(), u"天津"_s);
        dataSet_->Delete();
        QCOMPARE(tree_->FocusedNode(), dataSet_->RecNo());
        QVERIFY(!tree_->HasChildren(4));
    }

    void CopiesTheCellAndTheRow()
    {
        QTest::keyClick(tree_.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"北京"_s);
        QTest::keyClick(tree_.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"北京\t北京市"_s);
    }

    void RowsAreAtLeastAsHighAsAsked()
    {
        Show();
        tree_->SetRowHeight(33);
        QCOMPARE(tree_->visualRect(tree_->currentIndex()).height(), 33);
    }

    void LinesTakeTheirColour()
    {
        Show();
        tree_->ExpandAll();
        tree_->SetLines(DataTree::TreeLines::Solid);
        tree_->SetLineColor(QColor(0, 200, 0));
        const auto greens = [this] {
            const QImage image = tree_->viewport()->grab().toImage();
            int count = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    count += image.pixelColor(x, y) == QColor(0, 200, 0);
            }
            return count;
        };
        const int solid = greens();
        QVERIFY(solid > 20);
        tree_->SetLines(DataTree::TreeLines::Dotted);
        QVERIFY(greens() > 5 && greens() < solid);
        tree_->SetLines(DataTree::TreeLines::None);
        QCOMPARE(greens(), 0);
    }
};

QTEST_MAIN(DataTreeTest)
#include "DataTreeTest.moc"
