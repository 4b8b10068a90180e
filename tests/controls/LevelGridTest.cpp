#include "controls/LevelGrid.h"

#include "LevelSample.h"

#include <QClipboard>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

class LevelGridTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<LevelSample> sample_;
    std::unique_ptr<LevelGrid> grid_;
    GridLevel *orgView_ = nullptr;
    GridLevel *storeView_ = nullptr;
    GridLevel *userView_ = nullptr;

    void Show()
    {
        grid_->resize(420, 300);
        grid_->show();
        QVERIFY(QTest::qWaitForWindowExposed(grid_.get()));
    }
    QString Focused() const { return grid_->currentIndex().siblingAtColumn(0).data().toString(); }
    /// The current rows of the three tables, by their names.
    QString Current() const
    {
        return sample_->orgs.FieldText(u"ORG_NAME") + u'|' +
               sample_->stores.FieldText(u"STORE_NAME") + u'|' +
               sample_->users.FieldText(u"USER_NAME");
    }
    void Press(std::initializer_list<Qt::Key> keys)
    {
        for (const Qt::Key key : keys)
            QTest::keyClick(grid_.get(), key);
    }

private slots:
    void init()
    {
        sample_ = std::make_unique<LevelSample>();
        grid_ = std::make_unique<LevelGrid>();
        QVERIFY(grid_->setProperty("levels", SampleLevels()));
        QVERIFY(grid_->setProperty("columns", SampleColumns()));
        orgView_ = grid_->Level(u"OrgView");
        storeView_ = grid_->Level(u"StoreView");
        userView_ = grid_->Level(u"UserView");
        orgView_->SetDataSet(&sample_->orgs);
        storeView_->SetDataSet(&sample_->stores);
        userView_->SetDataSet(&sample_->users);
        sample_->Open();
    }

    void cleanup()
    {
        grid_.reset();
        sample_.reset();
    }

    void TheLayoutIsKeptAsItWasGiven()
    {
        QCOMPARE(grid_->property("levels").toStringList(), SampleLevels());
        QCOMPARE(ParseGridColumns(userView_->Columns()).size(), 3);
        QCOMPARE(grid_->property("columns").toStringList().size(), SampleColumns().size());
        QCOMPARE(grid_->findChild<GridLevel *>(u"StoreView"_s), storeView_);
        QVERIFY_THROWS_EXCEPTION(EQelError, grid_->SetColumns({u"NoView.X|x"_s}));
    }

    void OpensCollapsedWithTheFirstRowFocused()
    {
        Show();
        QCOMPARE(Focused(), u"市一医院"_s);
        QCOMPARE(grid_->FocusedLevel(), orgView_);
        QVERIFY(!orgView_->IsExpanded(0));
    }

    void ExpandAllShowsEveryLevelAndCollapseAllHidesThem()
    {
        Show();
        grid_->ExpandAll();
        QVERIFY(orgView_->IsExpanded(0) && orgView_->IsExpanded(2));
        QVERIFY(storeView_->IsExpanded(0) && storeView_->IsExpanded(1));
        QVERIFY(grid_->visualRect(grid_->Model()->IndexOf(2, 1)).isValid());
        userView_->FocusRow(1);
        QCOMPARE(Current(), u"大药房|总库|赵 丙"_s);
        grid_->CollapseAll();
        QCOMPARE(Focused(), u"大药房"_s);
        QVERIFY(!orgView_->IsExpanded(2));
        grid_->expand(grid_->Model()->IndexOf(0, 2));
        QVERIFY(!storeView_->IsExpanded(1)); // the descendants were collapsed too
    }

    void AFocusedDetailMakesItsMastersCurrent()
    {
        Show();
        userView_->FocusRow(1);
        QCOMPARE(Focused(), u"赵 丙"_s);
        QCOMPARE(Current(), u"大药房|总库|赵 丙"_s);
        storeView_->FocusRow(2);
        QCOMPARE(Current().section(u'|', 0, 1), u"市一医院|中药库"_s);
    }

    void BelowAFocusedMasterTheCurrentRowIsOneOfItsDetails()
    {
        Show();
        sample_->orgs.SetRecNo(2);
        QCOMPARE(Current(), u"大药房|总库|赵 丙"_s);
        sample_->orgs.SetRecNo(0);
        QCOMPARE(Current(), u"市一医院|西药库|王 甲"_s);
        sample_->orgs.SetRecNo(1); // has none: what is current elsewhere stays
        QCOMPARE(Current(), u"县医院|西药库|王 甲"_s);
        QCOMPARE(Focused(), u"县医院"_s);
    }

    void ADataSetThatMovesTakesTheFocusWithIt()
    {
        Show();
        QVERIFY(sample_->users.Locate(u"USER_ID", {u"u3"_s}));
        QCOMPARE(Focused(), u"赵 丙"_s);
        QVERIFY(storeView_->IsExpanded(1));
        sample_->orgs.First();
        QCOMPARE(Focused(), u"市一医院"_s);
    }

    void AMoveAmongTheDetailsOfTheFocusedRowLeavesTheFocus()
    {
        Show();
        QVERIFY(sample_->stores.Locate(u"STORE_ID", {u"s3"_s}));
        QCOMPARE(Focused(), u"市一医院"_s);
        QCOMPARE(sample_->stores.FieldText(u"STORE_NAME"), u"中药库"_s);
    }

    void EachLevelTellsOfItsOwnFocus()
    {
        Show();
        QSignalSpy org(orgView_, &GridLevel::RowFocused);
        QSignalSpy store(storeView_, &GridLevel::RowFocused);
        QSignalSpy user(userView_, &GridLevel::RowFocused);
        grid_->ExpandAll();
        Press({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down});
        QCOMPARE(QList<qsizetype>({org.size(), store.size(), user.size()}),
                 QList<qsizetype>({0, 1, 2}));
        orgView_->FocusRow(2);
        QCOMPARE(org.size(), 1);
        orgView_->FocusRow(2); // had it
        QCOMPARE(org.size(), 1);
    }

    void KeysPassOverHeaderRows()
    {
        Show();
        grid_->ExpandAll();
        Press({Qt::Key_Down});
        QCOMPARE(Focused(), u"西药库"_s);
        Press({Qt::Key_Down, Qt::Key_Down});
        QCOMPARE(Focused(), u"李 乙"_s);
        Press({Qt::Key_Up, Qt::Key_Up, Qt::Key_Up});
        QCOMPARE(Focused(), u"市一医院"_s);
        Press({Qt::Key_End});
        QCOMPARE(Focused(), u"赵 丙"_s);
        Press({Qt::Key_Home});
        QCOMPARE(Focused(), u"市一医院"_s);
        Press({Qt::Key_PageDown});
        QCOMPARE(Focused(), u"赵 丙"_s);
        Press({Qt::Key_PageUp});
        QCOMPARE(Focused(), u"市一医院"_s);
    }

    void LeftAndRightExpandCollapseAndStepBetweenLevels()
    {
        Show();
        Press({Qt::Key_Right});
        QVERIFY(orgView_->IsExpanded(0));
        QCOMPARE(Focused(), u"市一医院"_s);
        Press({Qt::Key_Right, Qt::Key_Right, Qt::Key_Right});
        QCOMPARE(Focused(), u"王 甲"_s);
        Press({Qt::Key_Left});
        QCOMPARE(Focused(), u"西药库"_s);
        Press({Qt::Key_Left});
        QVERIFY(!storeView_->IsExpanded(0));
        Press({Qt::Key_Left, Qt::Key_Left});
        QVERIFY(!orgView_->IsExpanded(0));
        Press({Qt::Key_Plus});
        QVERIFY(orgView_->IsExpanded(0));
        Press({Qt::Key_Minus});
        QVERIFY(!orgView_->IsExpanded(0));
    }

    void EnterAndDoubleClickAreReportedToTheLevelOfTheRow()
    {
        Show();
        grid_->ExpandAll();
        QSignalSpy org(orgView_, &GridLevel::RowActivated);
        QSignalSpy user(userView_, &GridLevel::RowActivated);
        QSignalSpy doubleClicked(userView_, &GridLevel::RowDoubleClicked);
        Press({Qt::Key_Return});
        QCOMPARE(org.size(), 1);
        const QRect cell = grid_->visualRect(grid_->Model()->IndexOf(2, 0, 2));
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(Current(), u"市一医院|西药库|王 甲"_s);
        QCOMPARE(grid_->currentIndex().column(), 2);
        QTest::mouseDClick(grid_->viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(doubleClicked.size(), 1);
        Press({Qt::Key_Enter});
        QCOMPARE(user.size(), 1);
        QCOMPARE(org.size(), 1);
    }

    void AClickOnAHeaderRowChangesNothing()
    {
        Show();
        grid_->ExpandAll();
        storeView_->FocusRow(0);
        const QModelIndex header = grid_->Model()->index(0, 0, grid_->Model()->IndexOf(1, 0));
        QSignalSpy doubleClicked(userView_, &GridLevel::RowDoubleClicked);
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {},
                          grid_->visualRect(header).center());
        QTest::mouseDClick(grid_->viewport(), Qt::LeftButton, {},
                           grid_->visualRect(header).center());
        QCOMPARE(Focused(), u"西药库"_s);
        QCOMPARE(doubleClicked.size(), 0);
        Press({Qt::Key_Return}); // still answers
        QCOMPARE(Focused(), u"西药库"_s);
    }

    void AClickOnTheExpandMarkOfADetailExpandsIt()
    {
        Show();
        grid_->expand(grid_->Model()->IndexOf(0, 0));
        const QRect row = grid_->visualRect(grid_->Model()->IndexOf(1, 0));
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {},
                          {row.left() - grid_->indentation() / 2, row.center().y()});
        QVERIFY(storeView_->IsExpanded(0));
    }

    void TheContextMenuIsThatOfTheFocusedLevel()
    {
        Show();
        QAction edit(u"改"_s);
        QAction assign(u"派"_s);
        storeView_->SetActions({&edit});
        userView_->SetActions({&assign});
        QCOMPARE(grid_->actions(), QList<QAction *>());
        storeView_->FocusRow(0);
        QCOMPARE(grid_->actions(), QList<QAction *>{&edit});
        userView_->FocusRow(0);
        QCOMPARE(grid_->actions(), QList<QAction *>{&assign});
        grid_->SetLevelMenus({u"OrgView|ActionNew,-,ActionEdit"_s});
        QCOMPARE(orgView_->MenuActions(), QStringList({u"ActionNew"_s, u"-"_s, u"ActionEdit"_s}));
        grid_.reset();
    }

    void CopiesTheCellAndTheRowOfTheLevel()
    {
        Show();
        storeView_->FocusRow(0);
        QTest::keyClick(grid_.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"西药库"_s);
        userView_->FocusRow(0);
        QTest::keyClick(grid_.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"王 甲\t1\tu1"_s);
    }

    void TwoRowsAppendedInARowStandUnderTheFocusedMaster()
    {
        Show();
        sample_->orgs.SetRecNo(1);
        sample_->AppendStore(u"s5"_s, u"一库"_s, u"o2"_s);
        sample_->AppendStore(u"s6"_s, u"二库"_s, u"o2"_s);
        QCOMPARE(Focused(), u"县医院"_s);
        QCOMPARE(grid_->Model()->DetailCount(0, 1), 2);
        QCOMPARE(sample_->stores.FieldText(u"STORE_NAME"), u"二库"_s);
    }

    void ARowAppendedBesideTheFocusedOneTakesTheFocus()
    {
        Show();
        storeView_->FocusRow(0);
        sample_->AppendStore(u"s5"_s, u"新库"_s, u"o2"_s);
        QCOMPARE(Focused(), u"新库"_s);
        QCOMPARE(Current().section(u'|', 0, 1), u"县医院|新库"_s);
    }

    void TheFocusOfADeletedRowFallsToItsSiblingAndThenToItsMaster()
    {
        Show();
        storeView_->FocusRow(0);
        sample_->stores.Delete(); // in its table the next row is another organisation's
        QCOMPARE(Focused(), u"中药库"_s);
        QCOMPARE(Current().section(u'|', 0, 1), u"市一医院|中药库"_s);
        sample_->stores.Delete();
        QCOMPARE(Focused(), u"市一医院"_s);
        QCOMPARE(sample_->orgs.RecNo(), 0);
    }

    void ADeletedMasterHandsOnTheFocusOfItsDetail()
    {
        Show();
        userView_->FocusRow(2);
        QCOMPARE(Focused(), u"李 乙"_s);
        sample_->stores.Delete();
        QCOMPARE(Focused(), u"中药库"_s);
    }

    void ADetailDeletedUnderTheFocusedMasterLeavesTheFocus()
    {
        Show();
        sample_->orgs.SetRecNo(2);
        sample_->stores.Delete(); // its only one
        QCOMPARE(Focused(), u"大药房"_s);
        sample_->orgs.SetRecNo(0);
        sample_->stores.Delete(); // what comes after it is nobody's
        QCOMPARE(Focused(), u"市一医院"_s);
        QCOMPARE(sample_->stores.FieldText(u"STORE_NAME"), u"西药库"_s);
    }

    void WhatIsExpandedAndFocusedSurvivesManyDeletions()
    {
        Show();
        grid_->ExpandAll();
        storeView_->FocusRow(1);
        sample_->users.DeleteRows([](int recNo) { return recNo == 0; });
        QVERIFY(orgView_->IsExpanded(0) && storeView_->IsExpanded(0) && storeView_->IsExpanded(1));
        QCOMPARE(Focused(), u"总库"_s);
        QCOMPARE(Current(), u"大药房|总库|赵 丙"_s);
    }

    void TablesOpenedAnewStartCollapsedAtTheFirstRow()
    {
        Show();
        grid_->ExpandAll();
        userView_->FocusRow(1);
        {
            const ControlsSuspender org(sample_->orgs);
            const ControlsSuspender store(sample_->stores);
            const ControlsSuspender user(sample_->users);
            sample_->users.Close();
            sample_->stores.Close();
            sample_->orgs.Close();
            sample_->Open();
            grid_->CollapseAll();
            sample_->orgs.First();
        }
        QCOMPARE(Focused(), u"市一医院"_s);
        QVERIFY(!orgView_->IsExpanded(0));
        QCOMPARE(Current(), u"市一医院|西药库|王 甲"_s);
    }

    void ASuspendedTableIsNotMoved()
    {
        Show();
        const ControlsSuspender quiet(sample_->stores);
        sample_->orgs.SetRecNo(2);
        QCOMPARE(sample_->stores.RecNo(), 0);
    }

    void ARowBeingEditedIsNotLeft()
    {
        Show();
        sample_->stores.Edit();
        sample_->stores.SetFieldText(u"STORE_NAME", u"改名"_s);
        sample_->orgs.SetRecNo(2);
        QVERIFY(sample_->stores.IsEditing());
        sample_->stores.Post();
        QCOMPARE(sample_->stores.FieldText(u"STORE_NAME"), u"改名"_s);
    }

    void AClosedTableHasNoFocus()
    {
        Show();
        QSignalSpy changed(grid_.get(), &LevelGrid::FocusedRowChanged);
        sample_->orgs.Close();
        QCOMPARE(grid_->FocusedLevel(), nullptr);
        QCOMPARE(changed.size(), 1);
        QSignalSpy activated(orgView_, &GridLevel::RowActivated);
        Press({Qt::Key_Return, Qt::Key_Down});
        QCOMPARE(activated.size(), 0);
    }

    void ATableThatIsDestroyedTellsNobody()
    {
        Show();
        auto stores = std::make_unique<ClientDataSet>();
        stores->Open(
            Rows({u"STORE_ID"_s, u"STORE_NAME"_s, u"ORG_ID"_s}, {{u"s1"_s, u"库"_s, u"o1"_s}}));
        storeView_->SetDataSet(stores.get());
        storeView_->FocusRow(0);
        QSignalSpy org(orgView_, &GridLevel::RowFocused);
        stores.reset();
        QCOMPARE(org.size(), 0);
        QCOMPARE(grid_->Model()->DetailCount(0, 0), 0);
    }

    void DetailCellsStandUnderTheirOwnCaptions()
    {
        Show();
        grid_->ExpandAll();
        const LevelGridModel &model = *grid_->Model();
        const QModelIndex store = model.IndexOf(1, 0);
        for (int column = 0; column < 3; ++column) {
            const QRect caption = grid_->visualRect(model.index(0, column, store));
            const QRect cell = grid_->visualRect(model.index(1, column, store));
            QCOMPARE(caption.left(), cell.left());
            QCOMPARE(caption.width(), cell.width());
            QCOMPARE(grid_->indexAt(cell.center()), model.index(1, column, store));
        }
        // right of the masters', each as wide as its own level says
        QVERIFY(grid_->visualRect(model.index(1, 0, store)).left() >
                grid_->visualRect(store).left());
        QCOMPARE(grid_->visualRect(model.index(1, 2, store)).width(), 60);
    }

    void AHiddenColumnTakesNoRoom()
    {
        Show();
        grid_->ExpandAll();
        QVERIFY(grid_->visualRect(grid_->Model()->IndexOf(1, 0, 1)).isEmpty());
    }

    void RowsAreAtLeastAsHighAsAsked()
    {
        Show();
        grid_->SetRowHeight(33);
        grid_->ExpandAll();
        QCOMPARE(grid_->visualRect(grid_->Model()->IndexOf(0, 0)).height(), 33);
        QCOMPARE(grid_->visualRect(grid_->Model()->IndexOf(2, 0)).height(), 33);
        grid_->SetHeaderHeight(40);
        QCOMPARE(grid_->HeaderHeight(), 40);
    }
};

QTEST_MAIN(LevelGridTest)
#include "LevelGridTest.moc"
