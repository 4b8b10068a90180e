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
    return {QHeaderView::sizeHint().width(), qMax(leastHeight_, fontMetrics().height() + 4)};
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
    painter->fillRect(rect, color_);
    painter->setPen(color_.lighter(150));
    painter->drawLine(rect.topRight(), rect.bottomRight());
    painter->setPen(ReadableTextOn(color_));
    const QString caption = model()->headerData(logicalIndex, Qt::Horizontal).toString();
    const QRect room = rect.adjusted(SidePadding, 0, -SidePadding, 0);
    painter->drawText(room, Qt::AlignCenter | Qt::TextSingleLine,
                      painter->fontMetrics().elidedText(caption, Qt::ElideRight, room.width()));
}

bool GridHeader::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const int section = logicalIndexAt(help->pos());
        const QString caption =
            section < 0 ? QString() : model()->headerData(section, Qt::Horizontal).toString();
        const bool elided =
            fontMetrics().horizontalAdvance(caption) > sectionSize(section) - 2 * SidePadding;
        QToolTip::showText(help->globalPos(), elided ? caption : QString(), this);
        return true;
    }
    return QHeaderView::viewportEvent(event);
}

} // namespace Qel
