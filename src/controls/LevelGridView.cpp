// Where the cells of a level grid stand, how they are painted, and what the keys do.

#include "controls/GridHeader.h"
#include "controls/LevelGrid.h"
#include "controls/ViewParts.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

namespace Qel {

// --- Look ----------------------------------------------------------------------------------------

void LevelGrid::SetRowHeight(int height)
{
    rowHeight_ = height;
    doItemsLayout();
}

int LevelGrid::HeaderHeight() const
{
    return header_->LeastHeight();
}

void LevelGrid::SetHeaderHeight(int height)
{
    header_->SetLeastHeight(height);
}

void LevelGrid::SetEmptyHint(const QString &hint)
{
    emptyHint_ = hint;
    viewport()->update();
}

void LevelGrid::ApplySheet(const GridSheet &sheet)
{
    ApplySheetPalette(*this, sheet);
    header_->SetColor(sheet.header);
    headerColor_ = sheet.header;
    background_ = sheet.background;
    hintColor_ = sheet.backgroundText;
    viewport()->update();
}

void LevelGrid::changeEvent(QEvent *event)
{
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        doItemsLayout();
}

// --- Geometry ------------------------------------------------------------------------------------

QList<int> LevelGrid::VisibleColumns(int level) const
{
    if (level == 0)
        return Qel::VisibleColumns(*header_);
    QList<int> visible;
    const QList<GridColumn> &columns = model_->Columns(level);
    for (int column = 0; column < columns.size(); ++column) {
        if (!columns[column].hidden)
            visible.append(column);
    }
    return visible;
}

int LevelGrid::EntryColumn(int level) const
{
    return VisibleColumns(level).value(0);
}

/// Details begin right of their expand mark and are as wide as their own columns, so that ticks
/// stand near the names that they belong to.
QRect LevelGrid::CellRect(int level, int column, int top, int height) const
{
    if (level == 0) {
        const int mark = column == treePosition() ? indentation() : 0;
        return {columnViewportPosition(column) + mark, top, columnWidth(column) - mark, height};
    }
    int left = (level + 1) * indentation() - horizontalOffset();
    const QList<int> visible = VisibleColumns(level);
    for (const int other : visible) {
        const int width = model_->Columns(level)[other].width;
        if (other == column)
            return {left, top, width, height};
        left += width;
    }
    return {};
}

QRect LevelGrid::visualRect(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    // The base knows the columns of the top level only, and of a row where it stands.
    const QRect row = QTreeView::visualRect(index.siblingAtColumn(0));
    if (row.isNull())
        return {};
    return CellRect(model_->LevelOf(index), index.column(), row.top(), row.height());
}

QModelIndex LevelGrid::indexAt(const QPoint &point) const
{
    const QModelIndex row =
        QTreeView::indexAt({columnViewportPosition(treePosition()), point.y()}).siblingAtColumn(0);
    if (!row.isValid())
        return {};
    const int level = model_->LevelOf(row);
    const QList<int> columns = VisibleColumns(level);
    for (const int column : columns) {
        const QRect cell = CellRect(level, column, point.y(), 1);
        if (point.x() >= cell.left() && point.x() <= cell.right())
            return row.siblingAtColumn(column);
    }
    return point.x() < CellRect(level, columns.value(0), 0, 1).left()
               ? row.siblingAtColumn(columns.value(0))
               : QModelIndex();
}

void LevelGrid::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    if (!index.isValid())
        return;
    const int left = horizontalScrollBar()->value();
    QTreeView::scrollTo(index.siblingAtColumn(0), hint);
    horizontalScrollBar()->setValue(left); // the base went to the first column
    const QRect cell = visualRect(index);
    if (cell.left() < 0)
        horizontalScrollBar()->setValue(left + cell.left());
    else if (cell.right() > viewport()->width())
        horizontalScrollBar()->setValue(left +
                                        qMin(cell.left(), cell.right() - viewport()->width() + 1));
}

QModelIndex LevelGrid::LastRow() const
{
    QModelIndex last;
    for (int rows = model_->rowCount(); rows > 0;
         rows = isExpanded(last) ? model_->rowCount(last) : 0)
        last = model_->index(rows - 1, 0, last);
    return last;
}

int LevelGrid::RowsBottom() const
{
    if (indexAt({0, viewport()->height() - 1}).isValid())
        return viewport()->height();
    const QModelIndex last = LastRow();
    return last.isValid() ? visualRect(last).bottom() + 1 : 0;
}

// --- Painting ------------------------------------------------------------------------------------

void LevelGrid::paintEvent(QPaintEvent *event)
{
    PaintEmptyArea(*this, {-horizontalOffset(), 0, header_->length(), RowsBottom()}, background_);
    QTreeView::paintEvent(event);
    const ClientDataSet *top = levels_.isEmpty() ? nullptr : model_->DataSet(0);
    if (top && top->IsActive() && model_->rowCount() == 0)
        PaintHint(*this, emptyHint_, hintColor_);
}

void LevelGrid::drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                        const QModelIndex &index) const
{
    const int level = model_->LevelOf(index);
    const bool isHeader = model_->IsHeader(index);
    const QList<int> columns = VisibleColumns(level);
    const QRect first = CellRect(level, columns.value(0), option.rect.top(), option.rect.height());
    const QRect gutter(QPoint(-horizontalOffset(), first.top()),
                       QPoint(first.left() - 1, first.bottom()));
    const QRect whole(0, first.top(), viewport()->width(), first.height());
    painter->fillRect(whole, background_.isValid() && level > 0 ? background_
                                                                : palette().color(QPalette::Base));
    if (!isHeader)
        PaintExpandMark(*painter, gutter, index);

    QStyleOptionViewItem row = option;
    row.state.setFlag(QStyle::State_Selected,
                      !isHeader && selectionModel()->isRowSelected(index.row(), index.parent()));
    row.palette.setCurrentColorGroup(row.state.testFlag(QStyle::State_Active) ? QPalette::Normal
                                                                              : QPalette::Inactive);
    // Counted from the first detail; above it stands the header row.
    const bool isOdd = (index.row() - (level > 0 ? 1 : 0)) % 2 == 1;
    row.features.setFlag(QStyleOptionViewItem::Alternate, isOdd);
    for (const int column : columns) {
        const QRect cell = CellRect(level, column, first.top(), first.height());
        const QModelIndex at = index.siblingAtColumn(column);
        if (isHeader)
            GridHeader::PaintCaption(*painter, cell, cell,
                                     headerColor_.isValid() ? headerColor_
                                                            : palette().color(QPalette::Button),
                                     at.data().toString());
        else
            PaintCell(*painter, row, at, cell);
    }
}

/// A cell with thin lines below and right of it, as a plain grid has them.
void LevelGrid::PaintCell(QPainter &painter, const QStyleOptionViewItem &row,
                          const QModelIndex &cell, const QRect &rect) const
{
    QStyleOptionViewItem option = row;
    option.rect = rect.adjusted(0, 0, -1, -1);
    option.state.setFlag(QStyle::State_HasFocus, hasFocus() && cell == currentIndex());
    painter.fillRect(rect, palette().brush(option.features.testFlag(QStyleOptionViewItem::Alternate)
                                               ? QPalette::AlternateBase
                                               : QPalette::Base));
    itemDelegateForIndex(cell)->paint(&painter, option, cell);
    const int hint = style()->styleHint(QStyle::SH_Table_GridLineColor, &option, this);
    painter.setPen(QColor::fromRgb(QRgb(hint)));
    painter.drawLine(rect.topRight(), rect.bottomRight());
    painter.drawLine(rect.bottomLeft(), rect.bottomRight());
}

void LevelGrid::PaintExpandMark(QPainter &painter, const QRect &gutter,
                                const QModelIndex &index) const
{
    if (!model_->hasChildren(index.siblingAtColumn(0)))
        return;
    const QPoint center(gutter.right() + 1 - indentation() / 2, gutter.center().y());
    Qel::PaintExpandMark(painter, *this, center, isExpanded(index.siblingAtColumn(0)));
}

// --- Keys ----------------------------------------------------------------------------------------

void LevelGrid::keyPressEvent(QKeyEvent *event)
{
    const QModelIndex current = currentIndex();
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        event->setAccepted(current.isValid());
        if (current.isValid())
            emit FocusedLevel()->RowActivated();
        return;
    case Qt::Key_Plus:
        expand(current.siblingAtColumn(0));
        return;
    case Qt::Key_Minus:
        collapse(current.siblingAtColumn(0));
        return;
    default:
        if (!CopyByKey(*event, VisibleColumns(qMax(0, model_->LevelOf(current))), current))
            QTreeView::keyPressEvent(event);
    }
}

/// Typing does not search: the base would look into the columns of the top level only.
void LevelGrid::keyboardSearch(const QString &text)
{
    Q_UNUSED(text);
}

/// The cell of a row that the focus enters when it comes from the cell `like`.
QModelIndex LevelGrid::InColumn(const QModelIndex &row, const QModelIndex &like) const
{
    const int level = model_->LevelOf(row);
    return row.siblingAtColumn(level == model_->LevelOf(like) ? like.column() : EntryColumn(level));
}

QModelIndex LevelGrid::NextFocusable(QModelIndex index, int step) const
{
    do
        index = step > 0 ? indexBelow(index) : indexAbove(index);
    while (model_->IsHeader(index));
    return index;
}

int LevelGrid::RowsOnPage() const
{
    return qMax(1, viewport()->height() / LeastRowHeight(*this, rowHeight_) - 1);
}

QModelIndex LevelGrid::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    Q_UNUSED(modifiers);
    const QModelIndex current = currentIndex();
    const QModelIndex row = current.siblingAtColumn(0);
    if (!row.isValid())
        return model_->index(0, EntryColumn(0));
    const auto steps = [this, row](int step, int count) {
        QModelIndex at = row;
        for (QModelIndex next = NextFocusable(at, step); next.isValid() && count-- > 0;
             next = NextFocusable(at, step))
            at = next;
        return at;
    };
    QModelIndex wanted = row;
    switch (action) {
    case MoveUp:
    case MovePrevious:
        wanted = steps(-1, 1);
        break;
    case MoveDown:
    case MoveNext:
        wanted = steps(1, 1);
        break;
    case MovePageUp:
        wanted = steps(-1, RowsOnPage());
        break;
    case MovePageDown:
        wanted = steps(1, RowsOnPage());
        break;
    case MoveHome:
        wanted = model_->index(0, 0);
        break;
    case MoveEnd:
        wanted = LastRow();
        break;
    case MoveLeft:
        if (isExpanded(row) && model_->hasChildren(row))
            collapse(row);
        else if (row.parent().isValid())
            wanted = row.parent();
        break;
    case MoveRight:
        if (isExpanded(row) && model_->hasChildren(row))
            wanted = model_->index(1, 0, row);
        else
            expand(row);
        break;
    }
    return InColumn(wanted, current);
}

void LevelGrid::CopyCell() const
{
    CopyText(CellAsText(currentIndex()));
}

void LevelGrid::CopyRow() const
{
    CopyText(RowAsText(VisibleColumns(qMax(0, model_->LevelOf(currentIndex()))), currentIndex()));
}

} // namespace Qel
