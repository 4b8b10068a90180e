#pragma once

#include <QColor>
#include <QList>
#include <QModelIndex>
#include <QString>

class QAbstractItemView;
class QHeaderView;
class QKeyEvent;
class QPainter;
class QPoint;
class QWidget;

namespace Qel {

struct GridColumn;

// What the grid and the tree do alike; they have no base class in common below QAbstractItemView.

void SetUpRowView(QAbstractItemView &view);
/// Widths and visibility of the columns to the header.
void ShowColumns(QHeaderView &header, const QList<GridColumn> &columns);
QList<int> VisibleColumns(const QHeaderView &header); ///< in their order on the screen
int FirstVisibleColumn(const QHeaderView &header);    ///< from the left; 0 if all are hidden
int LeastRowHeight(const QAbstractItemView &view, int wanted);
/// Fills the viewport beside `rows` (its content rectangle) and draws the hint of an empty list.
void PaintEmptyArea(QAbstractItemView &view, const QRect &rows, const QColor &background);
void PaintHint(QAbstractItemView &view, const QString &hint, const QColor &color);
/// The box with a plus or a minus before a row that has others below it.
void PaintExpandMark(QPainter &painter, const QWidget &view, QPoint center, bool expanded);
QString CellAsText(const QModelIndex &index); ///< as shown; of a tick the stored text
/// The texts of the row of `index` in the columns given, with tabs between them.
QString RowAsText(const QList<int> &columns, const QModelIndex &index);
/// Ctrl+C and Ctrl+Shift+C, the latter for the columns given; true if the key was one of them.
bool CopyByKey(const QKeyEvent &event, const QList<int> &columns, const QModelIndex &current);
void CopyText(const QString &text);

} // namespace Qel
