#include "controls/ViewParts.h"

#include "controls/GridColumn.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

namespace Qel {

void SetUpRowView(QAbstractItemView &view)
{
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.setSelectionMode(QAbstractItemView::SingleSelection);
    view.setAlternatingRowColors(true);
    view.setTextElideMode(Qt::ElideRight);
    view.setTabKeyNavigation(false); // Tab leaves the list
    view.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view.setContextMenuPolicy(Qt::ActionsContextMenu);
}

void ShowColumns(QHeaderView &header, const QList<GridColumn> &columns)
{
    for (int i = 0; i < columns.size(); ++i) {
        header.setSectionHidden(i, columns[i].hidden);
        header.resizeSection(i, columns[i].width);
    }
}

QList<int> VisibleColumns(const QHeaderView &header)
{
    QList<int> columns;
    for (int visual = 0; visual < header.count(); ++visual) {
        const int column = header.logicalIndex(visual);
        if (!header.isSectionHidden(column))
            columns.append(column);
    }
    return columns;
}

int FirstVisibleColumn(const QHeaderView &header)
{
    return VisibleColumns(header).value(0);
}

int LeastRowHeight(const QAbstractItemView &view, int wanted)
{
    return qMax(wanted, view.fontMetrics().height() + 3);
}

void PaintEmptyArea(QAbstractItemView &view, const QRect &rows, const QColor &background)
{
    if (!background.isValid())
        return;
    QPainter painter(view.viewport());
    const QRegion empty = QRegion(view.viewport()->rect()) - rows;
    for (const QRect &rect : empty)
        painter.fillRect(rect, background);
}

void PaintHint(QAbstractItemView &view, const QString &hint, const QColor &color)
{
    QPainter painter(view.viewport());
    painter.setPen(color.isValid() ? color : view.palette().color(QPalette::PlaceholderText));
    painter.drawText(view.viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, hint);
}

void PaintExpandMark(QPainter &painter, const QWidget &view, QPoint center, bool expanded)
{
    constexpr int Side = 9; // device-independent pixels
    constexpr int Half = Side / 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(view.palette().color(QPalette::PlaceholderText));
    painter.setBrush(view.palette().base());
    painter.drawRect(QRect(center - QPoint(Half, Half), QSize(Side - 1, Side - 1)));
    painter.setPen(view.palette().color(QPalette::Text));
    painter.drawLine(center - QPoint(Half - 2, 0), center + QPoint(Half - 2, 0));
    if (!expanded)
        painter.drawLine(center - QPoint(0, Half - 2), center + QPoint(0, Half - 2));
    painter.restore();
}

QString CellAsText(const QModelIndex &index)
{
    const QVariant shown = index.data(Qt::DisplayRole);
    return (shown.isValid() ? shown : index.data(Qt::EditRole)).toString();
}

QString RowAsText(const QList<int> &columns, const QModelIndex &index)
{
    QStringList texts;
    for (const int column : columns)
        texts.append(CellAsText(index.siblingAtColumn(column)));
    return texts.join(u'\t');
}

bool CopyByKey(const QKeyEvent &event, const QList<int> &columns, const QModelIndex &current)
{
    if (event.key() != Qt::Key_C || !event.modifiers().testFlag(Qt::ControlModifier) ||
        !current.isValid())
        return false;
    CopyText(event.modifiers().testFlag(Qt::ShiftModifier) ? RowAsText(columns, current)
                                                           : CellAsText(current));
    return true;
}

void CopyText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

} // namespace Qel
