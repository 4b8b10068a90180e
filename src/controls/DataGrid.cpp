#include "controls/DataGrid.h"

#include "controls/CellDelegate.h"
#include "controls/CurrentRowLink.h"
#include "controls/GridHeader.h"
#include "controls/ViewParts.h"

#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// The keys of drop-down lists, and the one that edits a cell.
bool OpensList(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (event.key() == Qt::Key_Down)
        return modifiers == Qt::AltModifier;
    return modifiers == Qt::NoModifier &&
           (event.key() == Qt::Key_F2 || event.key() == Qt::Key_F4 || event.key() == Qt::Key_Space);
}

} // namespace

DataGrid::DataGrid(QWidget *parent)
    : DataGrid(new GridHeader, parent)
{
}

DataGrid::DataGrid(GridHeader *header, QWidget *parent)
    : QTableView(parent)
    , model_(new DataSetModel(this))
    , header_(header)
    , emptyHint_(u"没有记录"_s)
{
    SetUpRowView(*this);
    setHorizontalHeader(header_);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                    QAbstractItemView::AnyKeyPressed);
    setItemDelegate(new CellDelegate(this));
    FitHeights();
    link_ = new CurrentRowLink(
        this, model_, [this](int recNo, int column) { return model_->index(recNo, column); },
        [](const QModelIndex &index) { return index.row(); });
    connect(link_, &CurrentRowLink::PostFailed, this, &DataGrid::EditFailed);
    connect(model_, &DataSetModel::CellValidating, this, &DataGrid::CellValidating);
    connect(model_, &DataSetModel::EditFailed, this, &DataGrid::EditFailed);
    connect(this, &QAbstractItemView::doubleClicked, this, &DataGrid::RowDoubleClicked);
    connect(this, &QAbstractItemView::clicked, this, &DataGrid::DropDown);
}

DataGrid::~DataGrid() = default;

void DataGrid::SetDataSet(ClientDataSet *dataSet)
{
    link_->SetDataSet(dataSet);
    model_->SetDataSet(dataSet);
}

ClientDataSet *DataGrid::DataSet() const
{
    return model_->DataSet();
}

// --- Columns -------------------------------------------------------------------------------------

QStringList DataGrid::Columns() const
{
    return FormatGridColumns(model_->Columns());
}

void DataGrid::SetColumns(const QStringList &columns)
{
    model_->SetColumns(ParseGridColumns(columns));
    ShowColumns(*header_, model_->Columns());
    link_->SetEntryColumn(FirstVisibleColumn(*header_));
    setCurrentIndex({});
    link_->FollowDataSet();
}

int DataGrid::ColumnIndex(QStringView field) const
{
    return model_->ColumnIndex(field);
}

void DataGrid::SetColumnVisible(QStringView field, bool visible)
{
    const int column = ColumnIndex(field);
    if (column < 0)
        return;
    header_->setSectionHidden(column, !visible);
    const int entry = FirstVisibleColumn(*header_);
    link_->SetEntryColumn(entry);
    const QModelIndex current = currentIndex();
    if (current.isValid() && header_->isSectionHidden(current.column()))
        setCurrentIndex(current.siblingAtColumn(entry));
}

bool DataGrid::IsColumnVisible(QStringView field) const
{
    const int column = ColumnIndex(field);
    return column >= 0 && !header_->isSectionHidden(column);
}

void DataGrid::SetColumnCaption(QStringView field, const QString &caption)
{
    if (const int column = ColumnIndex(field); column >= 0)
        model_->SetCaption(column, caption);
}

QString DataGrid::ColumnCaption(QStringView field) const
{
    const int column = ColumnIndex(field);
    return column < 0 ? QString() : model_->Columns().at(column).caption;
}

void DataGrid::SetColumnReadOnly(QStringView field, bool readOnly)
{
    if (const int column = ColumnIndex(field); column >= 0)
        model_->SetReadOnly(column, readOnly);
}

void DataGrid::SetValueList(QStringView field, const ValueList &values)
{
    if (const int column = ColumnIndex(field); column >= 0)
        model_->SetValueList(column, values);
}

// --- Look ----------------------------------------------------------------------------------------

void DataGrid::SetRowHeight(int height)
{
    rowHeight_ = height;
    FitHeights();
}

int DataGrid::HeaderHeight() const
{
    return header_->LeastHeight();
}

void DataGrid::SetHeaderHeight(int height)
{
    header_->SetLeastHeight(height);
}

void DataGrid::SetEmptyHint(const QString &hint)
{
    emptyHint_ = hint;
    viewport()->update();
}

void DataGrid::ApplySheet(const GridSheet &sheet)
{
    ApplySheetPalette(*this, sheet);
    header_->SetColor(sheet.header);
    background_ = sheet.background;
    hintColor_ = sheet.backgroundText;
    viewport()->update();
}

void DataGrid::FitHeights()
{
    const int height = LeastRowHeight(*this, rowHeight_);
    verticalHeader()->setMinimumSectionSize(height);
    verticalHeader()->setDefaultSectionSize(height);
}

void DataGrid::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        FitHeights();
}

void DataGrid::paintEvent(QPaintEvent *event)
{
    const QRect rows(-horizontalOffset(), -verticalOffset(), header_->length(),
                     verticalHeader()->length());
    PaintEmptyArea(*this, rows, background_);
    QTableView::paintEvent(event);
    if (DataSet() && DataSet()->IsActive() && model_->rowCount() == 0)
        PaintHint(*this, emptyHint_, hintColor_);
}

// --- Keys ----------------------------------------------------------------------------------------

void DataGrid::keyPressEvent(QKeyEvent *event)
{
    const QModelIndex current = currentIndex();
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && state() == EditingState) // it ends the editing and is not the window's as well
        return;
    if (isEnter) {
        event->setAccepted(current.isValid());
        if (current.isValid())
            emit RowActivated();
        return;
    }
    if (CopyByKey(*event, VisibleColumns(*header_), current) ||
        (OpensList(*event) && DropDown(current)))
        return;
    if (event->key() == Qt::Key_Space && current.isValid() &&
        !model_->flags(current).testAnyFlags(Qt::ItemIsEditable | Qt::ItemIsUserCheckable)) {
        TickRow(current);
        return;
    }
    QTableView::keyPressEvent(event);
}

/// A click or one of the keys that open a list opens a cell's list. False if it has none.
bool DataGrid::DropDown(const QModelIndex &index)
{
    if (GridEditor(index.data(EditorRole).toInt()) != GridEditor::Combo ||
        !model_->flags(index).testFlag(Qt::ItemIsEditable) || state() == EditingState)
        return false;
    edit(index);
    if (auto *combo = qobject_cast<QComboBox *>(indexWidget(index)))
        combo->showPopup();
    return true;
}

/// The blank key ticks the row from wherever in it the focus is.
void DataGrid::TickRow(const QModelIndex &current)
{
    for (int column = 0; column < model_->columnCount(); ++column) {
        const QModelIndex cell = current.siblingAtColumn(column);
        if (header_->isSectionHidden(column) ||
            !model_->flags(cell).testFlag(Qt::ItemIsUserCheckable))
            continue;
        const bool checked = cell.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        model_->setData(cell, int(checked ? Qt::Unchecked : Qt::Checked), Qt::CheckStateRole);
        return;
    }
}

// --- Editing -------------------------------------------------------------------------------------

bool DataGrid::OpensEditor(const QModelIndex &index) const
{
    return model_->flags(index).testFlag(Qt::ItemIsEditable) &&
           !header_->isSectionHidden(index.column());
}

void DataGrid::EditCell(QStringView field)
{
    FinishEditing();
    setFocus();
    QModelIndex cell = currentIndex();
    if (!field.isEmpty())
        cell = cell.siblingAtColumn(ColumnIndex(field));
    for (int place = 0; !OpensEditor(cell) && field.isEmpty() && place < header_->count(); ++place)
        cell = cell.siblingAtColumn(header_->logicalIndex(place));
    if (!OpensEditor(cell))
        return;
    setCurrentIndex(cell);
    edit(cell);
}

void DataGrid::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    const bool isNext = hint == QAbstractItemDelegate::EditNextItem;
    const bool isPrevious = hint == QAbstractItemDelegate::EditPreviousItem;
    QTableView::closeEditor(editor, isNext || isPrevious ? QAbstractItemDelegate::NoHint : hint);
    if (isNext || isPrevious)
        GoToNextEditable(isNext ? 1 : -1);
}

/// The nearest cell with an editor or a tick, in the direction of reading (1) or against it (-1),
/// row after row; at either end nothing.
void DataGrid::GoToNextEditable(int step)
{
    const QModelIndex current = currentIndex();
    const int columns = header_->count();
    const int cells = columns * model_->rowCount();
    const int place = current.isValid() ? header_->visualIndex(current.column()) : -1;
    for (int at = current.row() * columns + place + step; place >= 0 && at >= 0 && at < cells;
         at += step) {
        const QModelIndex cell = model_->index(at / columns, header_->logicalIndex(at % columns));
        const bool opens = OpensEditor(cell);
        const bool isTick = model_->flags(cell).testFlag(Qt::ItemIsUserCheckable);
        if (!opens && (!isTick || header_->isSectionHidden(cell.column())))
            continue;
        setCurrentIndex(cell);
        if (opens)
            edit(cell);
        return;
    }
}

void DataGrid::FinishEditing()
{
    QWidget *editor = indexWidget(currentIndex());
    if (!editor || state() != EditingState)
        return;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
}

void DataGrid::CopyCell() const
{
    CopyText(CellAsText(currentIndex()));
}

void DataGrid::CopyRow() const
{
    CopyText(RowAsText(VisibleColumns(*header_), currentIndex()));
}

} // namespace Qel
