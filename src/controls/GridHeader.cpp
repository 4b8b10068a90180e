#include "controls/GridHeader.h"

#include "controls/GridSheet.h"

#include <QGuiApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QToolTip>

namespace Qel {

namespace {

constexpr int SidePadding = 4;
constexpr int LeastSectionWidth = 24;

} // namespace

GridHeader::GridHeader(QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsMovable(true);
    setSectionsClickable(true);
    setHighlightSections(false);
    setMinimumSectionSize(LeastSectionWidth);
    setTextElideMode(Qt::ElideRight);
    setDefaultAlignment(Qt::AlignCenter);
    connect(this, &QHeaderView::sectionResized, this, &GridHeader::FillRoom);
    connect(this, &QHeaderView::sectionMoved, this, &GridHeader::FillRoom);
}

/// Qt's own stretching would also shrink the last column when the others need the room.
void GridHeader::FillRoom()
{
    const bool dragged = QGuiApplication::mouseButtons() != Qt::NoButton;
    if (dragged || filling_)
        return;
    const QScopedValueRollback guard(filling_, true);
    setStretchLastSection(false); // gives the column its own width back
    setStretchLastSection(length() < viewport()->width());
}

void GridHeader::resizeEvent(QResizeEvent *event)
{
    QHeaderView::resizeEvent(event);
    FillRoom();
}

void GridHeader::SetLeastHeight(int height)
{
    leastHeight_ = height;
    updateGeometry();
    emit geometriesChanged();
}

void GridHeader::SetColor(const QColor &color)
{
    color_ = color;
    viewport()->update();
}

QSize GridHeader::sizeHint() const
{
    return {QHeaderView::sizeHint().width(), HeightOfRow(leastHeight_)};
}

int GridHeader::HeightOfRow(int least) const
{
    return qMax(least, fontMetrics().height() + 4);
}

void GridHeader::paintEvent(QPaintEvent *event)
{
    if (color_.isValid()) {
        QPainter painter(viewport());
        painter.fillRect(viewport()->rect(), color_);
    }
    QHeaderView::paintEvent(event);
}

void GridHeader::paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const
{
    if (!color_.isValid()) {
        QHeaderView::paintSection(painter, rect, logicalIndex);
        return;
    }
    PaintCaption(*painter, rect, rect, color_,
                 model()->headerData(logicalIndex, Qt::Horizontal).toString());
}

void GridHeader::PaintCaption(QPainter &painter, const QRect &cell, const QRect &room,
                              const QColor &color, const QString &caption)
{
    painter.fillRect(cell, color);
    // Not drawLine: its pixels are half a pixel beside the cell's at 200 %.
    painter.fillRect(QRect(cell.right(), cell.top(), 1, cell.height()), color.lighter(150));
    painter.setPen(ReadableTextOn(color));
    const QRect text = room.adjusted(SidePadding, 0, -SidePadding, 0);
    painter.drawText(text, Qt::AlignCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(caption, Qt::ElideRight, text.width()));
}

void GridHeader::ShowIfElided(QPoint globalPos, const QString &caption, int width)
{
    const bool elided = fontMetrics().horizontalAdvance(caption) > width - 2 * SidePadding;
    QToolTip::showText(globalPos, elided ? caption : QString(), this);
}

bool GridHeader::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const int section = logicalIndexAt(help->pos());
        const QString caption =
            section < 0 ? QString() : model()->headerData(section, Qt::Horizontal).toString();
        ShowIfElided(help->globalPos(), caption, section < 0 ? 0 : sectionSize(section));
        return true;
    }
    return QHeaderView::viewportEvent(event);
}

} // namespace Qel
