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

int FirstVisibleColumn(const QHeaderView &header)
{
    for (int visual = 0; visual < header.count(); ++visual) {
        const int column = header.logicalIndex(visual);
        if (!header.isSectionHidden(column))
            return column;
    }
    return 0;
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

QString CellAsText(const QModelIndex &index)
{
    const QVariant shown = index.data(Qt::DisplayRole);
    return (shown.isValid() ? shown : index.data(Qt::EditRole)).toString();
}

QString RowAsText(const QHeaderView &header, const QModelIndex &index)
{
    QStringList texts;
    for (int visual = 0; visual < header.count(); ++visual) {
        const int column = header.logicalIndex(visual);
        if (header.isSectionHidden(column))
            continue;
        texts.append(CellAsText(index.siblingAtColumn(column)));
    }
    return texts.join(u'\t');
}

bool CopyByKey(const QKeyEvent &event, const QHeaderView &header, const QModelIndex &current)
{
    if (event.key() != Qt::Key_C || !event.modifiers().testFlag(Qt::ControlModifier) ||
        !current.isValid())
        return false;
    CopyText(event.modifiers().testFlag(Qt::ShiftModifier) ? RowAsText(header, current)
                                                           : CellAsText(current));
    return true;
}

void CopyText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

} // namespace Qel
