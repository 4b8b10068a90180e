#include "controls/DataGrid.h"

#include "TestTable.h"
#include "controls/DateEdit.h"
#include "controls/ImageComboBox.h"

#include <QClipboard>
#include <QDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Test;

class DataGridTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ClientDataSet> dataSet_;
    std::unique_ptr<DataGrid> grid_;

    QPoint CellCenter(int row, int column) const
    {
        return grid_->visualRect(grid_->model()->index(row, column)).center();
    }
    void Click(int row, int column)
    {
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, CellCenter(row, column));
    }
    void Show()
    {
        grid_->resize(560, 240);
        grid_->show();
        QVERIFY(QTest::qWaitForWindowExposed(grid_.get()));
    }

private slots:
    void init()
    {
        dataSet_ = std::make_unique<ClientDataSet>();
        grid_ = std::make_unique<DataGrid>();
        grid_->SetColumns({u"SELECTED|选择|40|check"_s, u"ORG_NAME|企业名称|200|text"_s,
                           u"ORG_TYPE|企业类型|90|combo"_s, u"OPENED|日期|100|date"_s,
                           u"ORG_ID|编号|80||hidden"_s});
        grid_->SetValueList(u"org_type", ParseValueList({u"4|医院"_s, u"5|药房"_s}));
        grid_->SetDataSet(dataSet_.get());
        dataSet_->Open(
            Rows({u"ORG_ID"_s, u"ORG_NAME:6"_s, u"ORG_TYPE"_s, u"SELECTED"_s, u"OPENED"_s},
                 {{u"7"_s, u"仁爱医院"_s, u"4"_s, u"0"_s, u"2024-03-05"_s},
                  {u"8"_s, u"百草药房"_s, u"5"_s, u"0"_s, u""_s},
                  {u"9"_s, u"济世堂"_s, u"5"_s, u"0"_s, u""_s}}));
    }

    void cleanup()
    {
        grid_.reset();
        dataSet_.reset();
    }

    void HasACurrentRowWheneverThereAreRows()
    {
        QCOMPARE(grid_->currentIndex().row(), 0);
        QCOMPARE(grid_->currentIndex().column(), 0);
        QVERIFY(grid_->selectionModel()->isRowSelected(0));
        dataSet_->Close();
        QVERIFY(!grid_->currentIndex().isValid());
        dataSet_->Open(Rows({u"ORG_ID"_s}, {{u"1"_s}}));
        QCOMPARE(grid_->currentIndex().row(), 0);
    }

    void FollowsTheDataSet()
    {
        dataSet_->SetRecNo(2);
        QCOMPARE(grid_->currentIndex().row(), 2);
        dataSet_->Locate(u"ORG_ID", {u"8"_s});
        QCOMPARE(grid_->currentIndex().row(), 1);
        dataSet_->Delete();
        QCOMPARE(dataSet_->FieldText(u"ORG_ID"), u"9"_s);
        QCOMPARE(grid_->currentIndex().row(), 1);
        dataSet_->Delete();
        QCOMPARE(grid_->currentIndex().row(), 0);
        QVERIFY(grid_->selectionModel()->isRowSelected(0));
        dataSet_->Append();
        QCOMPARE(grid_->currentIndex().row(), 1);
    }

    void LeadsTheDataSet()
    {
        Show();
        Click(1, 1);
        QCOMPARE(dataSet_->RecNo(), 1);
        QTest::keyClick(grid_.get(), Qt::Key_Down);
        QCOMPARE(dataSet_->RecNo(), 2);
        QTest::keyClick(grid_.get(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(dataSet_->RecNo(), 0);
    }

    void LeavingARowPostsIt()
    {
        dataSet_->Append();
        dataSet_->SetFieldText(u"ORG_NAME", u"新"_s);
        Show();
        Click(0, 1);
        QVERIFY(!dataSet_->IsEditing());
        QCOMPARE(dataSet_->RecNo(), 0);
        QCOMPARE(dataSet_->RecordCount(), 4);
    }

    void ARemovedRowDoesNotMoveTheDataSetElsewhere()
    {
        dataSet_->SetRecNo(1);
        dataSet_->DeleteRows([](int recNo) { return recNo == 0; });
        QCOMPARE(dataSet_->FieldText(u"ORG_ID"), u"8"_s);
        QCOMPARE(grid_->currentIndex().row(), 0);
    }

    void SuspendedItStaysAndThenFollows()
    {
        {
            const ControlsSuspender suspender(*dataSet_);
            dataSet_->SetRecNo(2);
            QCOMPARE(grid_->currentIndex().row(), 0);
        }
        QCOMPARE(grid_->currentIndex().row(), 2);
    }

    void EnterAndDoubleClickAreReported()
    {
        Show();
        QSignalSpy activated(grid_.get(), &DataGrid::RowActivated);
        QSignalSpy doubleClicked(grid_.get(), &DataGrid::RowDoubleClicked);
        QTest::keyClick(grid_.get(), Qt::Key_Return);
        QTest::keyClick(grid_.get(), Qt::Key_Enter);
        QCOMPARE(activated.size(), 2);
        Click(1, 1); // the first half of a double click
        QTest::mouseDClick(grid_->viewport(), Qt::LeftButton, {}, CellCenter(1, 1));
        QCOMPARE(doubleClicked.size(), 1);
        QCOMPARE(dataSet_->RecNo(), 1);
    }

    void EnterInAnEmptyGridReportsNothing()
    {
        dataSet_->Close();
        QSignalSpy activated(grid_.get(), &DataGrid::RowActivated);
        QTest::keyClick(grid_.get(), Qt::Key_Return);
        QCOMPARE(activated.size(), 0);
    }

    void EnterInADialogDoesNotPressTheDefaultButtonBesides()
    {
        QDialog dialog;
        QVBoxLayout layout(&dialog);
        layout.addWidget(grid_.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QSignalSpy accepted(&dialog, &QDialog::accepted);
        QSignalSpy activated(grid_.get(), &DataGrid::RowActivated);
        QTest::keyClick(grid_.get(), Qt::Key_Return);
        QCOMPARE(activated.size(), 1);
        QCOMPARE(accepted.size(), 0);
        layout.removeWidget(grid_.get());
        grid_->setParent(nullptr);
    }

    void AClickOnTheTickPostsIt()
    {
        Show();
        Click(1, 0);
        QCOMPARE(dataSet_->TextAt(1, 3), u"1"_s);
        QVERIFY(!dataSet_->IsEditing());
        Click(1, 0);
        QCOMPARE(dataSet_->TextAt(1, 3), u"0"_s);
        grid_->SetColumnReadOnly(u"SELECTED", true);
        Click(1, 0);
        QCOMPARE(dataSet_->TextAt(1, 3), u"0"_s);
    }

    void TheBlankKeyTicksTheRow()
    {
        Show();
        grid_->setCurrentIndex(grid_->model()->index(0, 0));
        QTest::keyClick(grid_.get(), Qt::Key_Space);
        QCOMPARE(dataSet_->TextAt(0, 3), u"1"_s);
    }

    void TheBlankKeyTicksFromAColumnThatIsOnlyShown()
    {
        grid_->SetColumns({u"SELECTED|选择|40|check"_s, u"ORG_ID|编号|80"_s});
        Show();
        grid_->setCurrentIndex(grid_->model()->index(2, 1));
        QTest::keyClick(grid_.get(), Qt::Key_Space);
        QCOMPARE(dataSet_->TextAt(2, 3), u"1"_s);
    }

    void EnterInAnEditorDoesNotPressTheDefaultButtonBesides()
    {
        QDialog dialog;
        QVBoxLayout layout(&dialog);
        layout.addWidget(grid_.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QSignalSpy accepted(&dialog, &QDialog::accepted);
        QSignalSpy finished(&dialog, &QDialog::finished);
        QPushButton button(&dialog);
        button.setDefault(true);
        connect(&button, &QPushButton::clicked, &dialog, &QDialog::accept);
        grid_->EditCell(u"ORG_NAME");
        auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        editor->setText(u"仁心"_s);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(dataSet_->TextAt(0, 1), u"仁心"_s);
        QCOMPARE(accepted.size() + finished.size(), 0);
        layout.removeWidget(grid_.get());
        grid_->setParent(nullptr);
    }

    void OpensTheEditorOfTheCellThatIsAskedFor_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("opened"); // column, -1: none
        QTest::newRow("a field") << u"org_name"_s << 0 << 1;
        QTest::newRow("the current cell") << u""_s << 3 << 3;
        QTest::newRow("the first that has an editor") << u""_s << 0 << 1;
        QTest::newRow("a tick has none") << u"SELECTED"_s << 1 << -1;
        QTest::newRow("a hidden one") << u"ORG_ID"_s << 1 << -1;
        QTest::newRow("no such field") << u"NONE"_s << 1 << -1;
    }
    void OpensTheEditorOfTheCellThatIsAskedFor()
    {
        QFETCH(QString, field);
        QFETCH(int, from);
        QFETCH(int, opened);
        Show();
        grid_->setCurrentIndex(grid_->model()->index(1, from));
        grid_->EditCell(field);
        QCOMPARE(bool(grid_->findChild<QWidget *>(u"cellEditor"_s)), opened >= 0);
        QCOMPARE(grid_->currentIndex(), grid_->model()->index(1, opened < 0 ? from : opened));
    }

    void OpensNoEditorInAnEmptyTable()
    {
        Show();
        dataSet_->Close();
        grid_->EditCell();
        grid_->EditCell(u"ORG_NAME");
        QVERIFY(!grid_->findChild<QWidget *>(u"cellEditor"_s));
    }

    void FinishingEditingTakesWhatWasTyped()
    {
        Show();
        grid_->FinishEditing(); // nothing to finish
        grid_->EditCell(u"ORG_NAME");
        auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        editor->setText(u"仁心"_s);
        grid_->FinishEditing();
        QCOMPARE(dataSet_->TextAt(0, 1), u"仁心"_s);
        QVERIFY(grid_->hasFocus());
        grid_->FinishEditing();
        QCOMPARE(dataSet_->TextAt(0, 1), u"仁心"_s);
    }

    void TextIsEditedInPlaceWithinTheFieldsSize()
    {
        Show();
        Click(0, 1);
        QTest::keyClick(grid_.get(), Qt::Key_F2);
        auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        QCOMPARE(editor->maxLength(), 6);
        QCOMPARE(editor->text(), u"仁爱医院"_s);
        editor->setText(u"仁心"_s);
        QSignalSpy activated(grid_.get(), &DataGrid::RowActivated);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(dataSet_->TextAt(0, 1), u"仁心"_s);
        QCOMPARE(activated.size(), 0);
    }

    void TabInAnEditorGoesOnToTheNextCellThatCanBeEdited()
    {
        const auto editedCell = [this] {
            const bool isEditing = grid_->findChild<QWidget *>(u"cellEditor"_s);
            const QModelIndex cell = grid_->currentIndex();
            return isEditing ? u"%1,%2"_s.arg(cell.row()).arg(cell.column()) : u"none"_s;
        };
        const auto press = [this](Qt::Key key) {
            QTest::keyClick(grid_->findChild<QWidget *>(u"cellEditor"_s), key);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        grid_->SetColumnReadOnly(u"ORG_TYPE", true);
        Show();
        grid_->EditCell(u"ORG_NAME");
        auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        editor->setText(u"仁心"_s);
        press(Qt::Key_Tab);
        QCOMPARE(editedCell(), u"0,3"_s); // past what is read-only
        QCOMPARE(dataSet_->TextAt(0, 1), u"仁心"_s);
        press(Qt::Key_Tab);
        QCOMPARE(editedCell(), u"none"_s); // a tick, in the next row
        QCOMPARE(grid_->currentIndex(), grid_->model()->index(1, 0));
        QCOMPARE(dataSet_->RecNo(), 1);
        grid_->SetColumnVisible(u"SELECTED", false);
        grid_->EditCell(u"ORG_NAME");
        press(Qt::Key_Backtab);
        QCOMPARE(editedCell(), u"0,3"_s); // past ticks that are hidden
        press(Qt::Key_Tab);
        QCOMPARE(editedCell(), u"1,1"_s);
        grid_->FinishEditing();
        grid_->setCurrentIndex(grid_->model()->index(2, 1));
        grid_->EditCell(u"OPENED");
        press(Qt::Key_Tab);
        QCOMPARE(editedCell(), u"none"_s); // behind the last
        QVERIFY(grid_->hasFocus());
    }

    void TabGoesThroughTheCellsAsTheyStandOnTheScreen()
    {
        Show();
        grid_->SetColumnVisible(u"SELECTED", false);
        grid_->horizontalHeader()->moveSection(3, 0);
        grid_->EditCell(u"OPENED");
        QTest::keyClick(grid_->findChild<QWidget *>(u"cellEditor"_s), Qt::Key_Tab);
        QCOMPARE(grid_->currentIndex().column(), 1);
    }

    void SaysWhenACellIsLeftWithAnotherValue()
    {
        Show();
        QSignalSpy validating(grid_.get(), &DataGrid::CellValidating);
        QStringList before;
        connect(grid_.get(), &DataGrid::CellValidating, this,
                [&](const QString &field) { before.append(dataSet_->FieldText(field)); });
        Click(1, 0); // ticks have no editor
        grid_->EditCell(u"ORG_NAME");
        grid_->FinishEditing(); // left as it was
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(validating.size(), 0);
        grid_->EditCell(u"ORG_NAME");
        grid_->findChild<QLineEdit *>(u"cellEditor"_s)->setText(u"新药房"_s);
        QCOMPARE(validating.size(), 0);
        grid_->FinishEditing();
        QCOMPARE(validating, (QList<QVariantList>{{u"ORG_NAME"_s}}));
        QCOMPARE(before, QStringList{u"百草药房"_s}); // the field does not have it yet
        QCOMPARE(dataSet_->TextAt(1, 1), u"新药房"_s);
    }

    void EscLeavesTheCellAsItWas()
    {
        Show();
        Click(0, 1);
        QTest::keyClick(grid_.get(), Qt::Key_F2);
        auto *editor = grid_->findChild<QLineEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        editor->setText(u"x"_s);
        QTest::keyClick(editor, Qt::Key_Escape);
        QCOMPARE(dataSet_->TextAt(0, 1), u"仁爱医院"_s);
    }

    void AChoiceFromTheValueListIsWrittenAtOnce()
    {
        Show();
        Click(0, 2);
        auto *combo = grid_->findChild<ImageComboBox *>(u"cellEditor"_s);
        QVERIFY(combo);
        QCOMPARE(combo->EditValue(), u"4"_s);
        QCOMPARE(combo->Items(), (QStringList{u"4|医院"_s, u"5|药房"_s}));
        combo->setCurrentIndex(1);
        emit combo->activated(1);
        QCOMPARE(dataSet_->TextAt(0, 2), u"5"_s);
        QCOMPARE(grid_->model()->index(0, 2).data().toString(), u"药房"_s);
    }

    void KeysOpenACellsListAndChooseFromIt_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::newRow("F2") << int(Qt::Key_F2) << 0;
        QTest::newRow("F4") << int(Qt::Key_F4) << 0;
        QTest::newRow("blank") << int(Qt::Key_Space) << 0;
        QTest::newRow("Alt+Down") << int(Qt::Key_Down) << int(Qt::AltModifier);
    }
    void KeysOpenACellsListAndChooseFromIt()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        Show();
        grid_->setFocus();
        grid_->setCurrentIndex(grid_->model()->index(0, 2));
        QTest::keyClick(grid_.get(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        auto *combo = grid_->findChild<ImageComboBox *>(u"cellEditor"_s);
        QVERIFY(combo);
        QVERIFY(combo->view()->isVisible());
        QTest::keyClick(combo->view(), Qt::Key_Down);
        QTest::keyClick(combo->view(), Qt::Key_Return);
        QCOMPARE(dataSet_->TextAt(0, 2), u"5"_s);
        QCOMPARE(grid_->currentIndex().row(), 0);
        QTRY_VERIFY(!grid_->findChild<ImageComboBox *>(u"cellEditor"_s));
    }

    void ADateIsEditedInPlace()
    {
        Show();
        grid_->setCurrentIndex(grid_->model()->index(0, 3));
        grid_->edit(grid_->currentIndex());
        auto *date = grid_->findChild<DateEdit *>(u"cellEditor"_s);
        QVERIFY(date);
        QCOMPARE(date->Value().date(), QDate(2024, 3, 5));
        date->SetValue(QDate(2024, 12, 31).startOfDay());
        QTest::keyClick(date, Qt::Key_Return);
        QTRY_COMPARE(dataSet_->TextAt(0, 4), u"2024-12-31"_s);
    }

    void ATypedDateCountsWhenTheCellIsLeft()
    {
        Show();
        grid_->setCurrentIndex(grid_->model()->index(1, 3));
        grid_->edit(grid_->currentIndex());
        auto *date = grid_->findChild<DateEdit *>(u"cellEditor"_s);
        QVERIFY(date);
        date->home(false);
        QTest::keyClicks(date, u"20240229"_s);
        grid_->setFocus();
        QTRY_COMPARE(dataSet_->TextAt(1, 4), u"2024-02-29"_s);
    }

    void ColumnsAreFoundByField()
    {
        QCOMPARE(grid_->ColumnIndex(u"org_name"), 1);
        QCOMPARE(grid_->ColumnIndex(u"NONE"), -1);
        QVERIFY(!grid_->IsColumnVisible(u"ORG_ID"));
        grid_->SetColumnVisible(u"ORG_ID", true);
        QVERIFY(grid_->IsColumnVisible(u"ORG_ID"));
        grid_->SetColumnCaption(u"ORG_ID", u"机构编号"_s);
        QCOMPARE(grid_->ColumnCaption(u"ORG_ID"), u"机构编号"_s);
        grid_->SetColumnVisible(u"NONE", true);
        grid_->SetColumnCaption(u"NONE", u"x"_s);
        QCOMPARE(grid_->ColumnCaption(u"NONE"), QString());
    }

    void TheFocusLeavesAColumnThatIsHidden()
    {
        grid_->SetColumnVisible(u"SELECTED", false);
        QCOMPARE(grid_->currentIndex().column(), 1);
        dataSet_->Close();
        dataSet_->Open(Rows({u"ORG_ID"_s}, {{u"1"_s}}));
        QCOMPARE(grid_->currentIndex().column(), 1);
    }

    void WidthsAndVisibilityOutliveAQuery()
    {
        grid_->horizontalHeader()->resizeSection(1, 321);
        grid_->SetColumnVisible(u"ORG_TYPE", false);
        dataSet_->Close();
        dataSet_->Open(Rows({u"ORG_NAME"_s}, {{u"甲"_s}}));
        QCOMPARE(grid_->columnWidth(1), 321);
        QVERIFY(!grid_->IsColumnVisible(u"ORG_TYPE"));
    }

    void ColumnsComeFromALayout()
    {
        DataGrid grid;
        QVERIFY(grid.setProperty("columns", QStringList{u"A|甲|55"_s, u"B|乙|60"_s}));
        QCOMPARE(grid.columnWidth(0), 55);
        QCOMPARE(grid.Columns(), (QStringList{u"A|甲|55||"_s, u"B|乙|60||"_s}));
    }

    void CopiesTheCellAndTheRow()
    {
        grid_->setCurrentIndex(grid_->model()->index(1, 2));
        QTest::keyClick(grid_.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"药房"_s);
        QTest::keyClick(grid_.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"0\t百草药房\t药房\t"_s);
    }

    void RowsAreAtLeastAsHighAsAskedAndAsTheFontNeeds()
    {
        grid_->SetRowHeight(40);
        QCOMPARE(grid_->rowHeight(0), 40);
        grid_->SetRowHeight(20);
        QFont font = grid_->font();
        font.setPixelSize(60);
        grid_->setFont(font);
        QVERIFY(grid_->rowHeight(0) >= QFontMetrics(font).height());
        QVERIFY(grid_->horizontalHeader()->sizeHint().height() >= 22);
    }

    void AnEmptyListSaysSoAndAClosedOneDoesNot()
    {
        Show();
        dataSet_->Close();
        const QImage closed = grid_->viewport()->grab().toImage();
        dataSet_->Open(Rows({u"ORG_ID"_s}, {}));
        QVERIFY(grid_->viewport()->grab().toImage() != closed);
        grid_->SetEmptyHint({});
        QCOMPARE(grid_->viewport()->grab().toImage(), closed);
    }
};

QTEST_MAIN(DataGridTest)
#include "DataGridTest.moc"
