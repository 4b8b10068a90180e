#include "controls/BandHeader.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <numeric>

namespace Qel {

namespace {

constexpr int DropMarkWidth = 3;
constexpr int ScrollStep = 16; // with each mouse move beyond the border of the header

} // namespace

BandHeader::BandHeader(QWidget *parent)
    : GridHeader(parent)
{
    connect(this, &QHeaderView::sectionMoved, this,
            [this](int, int oldPlace, int newPlace) { KeepBandsTogether(oldPlace, newPlace); });
    // A band caption is as wide as its columns: more than the section that changed has to be drawn.
    const auto repaint = [this] { viewport()->update(0, 0, viewport()->width(), BandRowHeight()); };
    connect(this, &QHeaderView::sectionResized, this, repaint);
    connect(this, &QHeaderView::sectionMoved, this, repaint);
}

// --- Bands ---------------------------------------------------------------------------------------

void BandHeader::SetBands(const QStringList &captions, const QList<int> &bandOfColumn)
{
    drag_.reset();
    captions_ = captions;
    bandOfColumn_ = bandOfColumn;
    QList<int> columns(count());
    std::iota(columns.begin(), columns.end(), 0);
    Arrange(columns);
    SetBandHeight(bandHeight_);
}

void BandHeader::SetBandHeight(int height)
{
    bandHeight_ = height;
    updateGeometry();
    emit geometriesChanged();
    viewport()->update();
}

void BandHeader::SetBandColor(const QColor &color)
{
    bandColor_ = color;
    viewport()->update();
}

void BandHeader::SetBandBackground(const QColor &color)
{
    bandBackground_ = color;
    viewport()->update();
}

int BandHeader::BandRowHeight() const
{
    return HasBands() ? HeightOfRow(bandHeight_) : 0;
}

QSize BandHeader::sizeHint() const
{
    return GridHeader::sizeHint() + QSize(0, BandRowHeight());
}

QRect BandHeader::BandRect(int band) const
{
    QRect rect;
    for (int column = 0; column < bandOfColumn_.size() && column < count(); ++column) {
        if (bandOfColumn_[column] == band && !isSectionHidden(column))
            rect |= QRect(sectionViewportPosition(column), 0, sectionSize(column), BandRowHeight());
    }
    return rect;
}

int BandHeader::BandAt(QPoint position) const
{
    const int column = logicalIndexAt(position);
    return position.y() < BandRowHeight() ? bandOfColumn_.value(column, -1) : -1;
}

QList<int> BandHeader::BandOrder() const
{
    QList<int> order;
    for (int place = 0; place < count(); ++place) {
        const int band = bandOfColumn_.value(logicalIndex(place), -1);
        if (band >= 0 && !order.contains(band))
            order.append(band);
    }
    return order;
}

// --- Order ---------------------------------------------------------------------------------------

void BandHeader::Arrange(const QList<int> &columns)
{
    const QScopedValueRollback guard(arranging_, true);
    for (int place = 0; place < columns.size(); ++place)
        moveSection(visualIndex(columns[place]), place);
}

void BandHeader::MoveBand(int band, int toPlaceOf)
{
    QList<int> order = BandOrder();
    const qsizetype from = order.indexOf(band);
    const qsizetype to = order.indexOf(toPlaceOf);
    if (from < 0 || to < 0 || from == to)
        return;
    order.move(from, to);
    QList<int> columns;
    for (const int next : order) {
        for (int place = 0; place < count(); ++place) {
            if (bandOfColumn_.value(logicalIndex(place), -1) == next)
                columns.append(logicalIndex(place));
        }
    }
    Arrange(columns);
}

/// A move that would part a band's columns is taken back.
void BandHeader::KeepBandsTogether(int oldPlace, int newPlace)
{
    if (arranging_ || !HasBands())
        return;
    QList<int> bands;
    for (int place = 0; place < count(); ++place)
        bands.append(bandOfColumn_.value(logicalIndex(place), -1));
    const qsizetype runs = std::unique(bands.begin(), bands.end()) - bands.begin();
    if (runs == captions_.size())
        return;
    const QScopedValueRollback guard(arranging_, true);
    moveSection(newPlace, oldPlace);
}

// --- Mouse ---------------------------------------------------------------------------------------

/// The column that a press at the border of a section resizes, as QHeaderView sees it; -1: none.
int BandHeader::ResizedAt(QPoint position) const
{
    const int column = logicalIndexAt(position);
    if (column < 0)
        return -1;
    const int grip = style()->pixelMetric(QStyle::PM_HeaderGripMargin, nullptr, this);
    const int left = sectionViewportPosition(column);
    if (position.x() > left + sectionSize(column) - grip)
        return column;
    int place = visualIndex(column);
    if (position.x() >= left + grip)
        return -1;
    while (--place >= 0) {
        if (!isSectionHidden(logicalIndex(place)))
            return logicalIndex(place);
    }
    return -1;
}

/// Not so the borders of bands, which resize as the borders of columns do.
bool BandHeader::IsBandCaption(QPoint position) const
{
    if (BandAt(position) < 0)
        return false;
    const int resized = ResizedAt(position);
    return resized < 0 || BandRect(bandOfColumn_.value(resized, -1)).right() !=
                              sectionViewportPosition(resized) + sectionSize(resized) - 1;
}

void BandHeader::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    draggedColumn_ = -1;
    if (!IsBandCaption(position)) {
        if (ResizedAt(position) < 0)
            draggedColumn_ = logicalIndexAt(position);
        GridHeader::mousePressEvent(event);
    } else if (event->button() == Qt::LeftButton && sectionsMovable()) {
        drag_ = Drag{BandAt(position), position.x()};
    }
}

void BandHeader::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    const bool isDragging = event->buttons().testFlag(Qt::LeftButton);
    if (!isDragging)
        drag_.reset(); // the release went elsewhere
    if (drag_) {
        DragBand(position.x());
        return;
    }
    if (!isDragging && IsBandCaption(position)) {
        unsetCursor(); // left over from the border of a column
        return;
    }
    const int band = bandOfColumn_.value(draggedColumn_, -1);
    if (!isDragging || band < 0) {
        GridHeader::mouseMoveEvent(event);
        return;
    }
    ScrollTowards(position.x());
    const QRect room = BandRect(band);
    const QPointF inBand(std::clamp(position.x(), room.left(), room.right()), position.y());
    QMouseEvent within(event->type(), inBand, mapToGlobal(inBand), event->button(),
                       event->buttons(), event->modifiers(), event->pointingDevice());
    GridHeader::mouseMoveEvent(&within);
}

/// The band under the mouse gives way once the mouse is past its middle, as columns do.
int BandHeader::DropTarget(int x) const
{
    const QList<int> order = BandOrder();
    const qsizetype from = order.indexOf(drag_->band);
    int target = drag_->band;
    for (qsizetype place = from + 1; place < order.size(); ++place) {
        const QRect rect = BandRect(order[place]);
        if (!rect.isEmpty() && x > rect.center().x())
            target = order[place];
    }
    for (qsizetype place = from - 1; place >= 0; --place) {
        const QRect rect = BandRect(order[place]);
        if (!rect.isEmpty() && x < rect.center().x())
            target = order[place];
    }
    return target;
}

void BandHeader::DragBand(int x)
{
    const bool begins = qAbs(x - drag_->pressedAt) >= QApplication::startDragDistance();
    if (drag_->target < 0 && !begins)
        return;
    ScrollTowards(x);
    drag_->target = DropTarget(x);
    viewport()->update();
}

/// What is dragged beyond the border of the grid brings more columns into sight.
void BandHeader::ScrollTowards(int x)
{
    const auto *area = qobject_cast<QAbstractScrollArea *>(parentWidget());
    if (!area)
        return;
    QScrollBar *bar = area->horizontalScrollBar();
    if (x < 0)
        bar->setValue(bar->value() - ScrollStep);
    else if (x >= viewport()->width())
        bar->setValue(bar->value() + ScrollStep);
}

void BandHeader::mouseReleaseEvent(QMouseEvent *event)
{
    draggedColumn_ = -1;
    if (!drag_) {
        GridHeader::mouseReleaseEvent(event);
        return;
    }
    const Drag drag = *drag_;
    drag_.reset();
    viewport()->update();
    if (drag.target >= 0)
        MoveBand(drag.band, drag.target);
}

void BandHeader::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!IsBandCaption(event->position().toPoint()))
        GridHeader::mouseDoubleClickEvent(event);
}

// --- Look ----------------------------------------------------------------------------------------

void BandHeader::paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const
{
    GridHeader::paintSection(painter, rect.adjusted(0, BandRowHeight(), 0, 0), logicalIndex);
}

void BandHeader::paintEvent(QPaintEvent *event)
{
    GridHeader::paintEvent(event);
    if (!HasBands())
        return;
    QPainter painter(viewport());
    PaintBands(painter);
    PaintDropMark(painter);
}

void BandHeader::PaintBands(QPainter &painter) const
{
    const QColor button = palette().color(QPalette::Button);
    const QColor color = bandColor_.isValid() ? bandColor_ : button;
    const QRect row(0, 0, viewport()->width(), BandRowHeight());
    painter.fillRect(row, bandBackground_.isValid() ? bandBackground_ : button);
    for (int band = 0; band < captions_.size(); ++band) {
        // The caption stands in the middle of what is seen of a band that is wider than the grid.
        const QRect cell = BandRect(band);
        if (const QRect seen = cell & row; !seen.isEmpty())
            PaintCaption(painter, cell, seen, color, captions_[band]);
    }
}

void BandHeader::PaintDropMark(QPainter &painter) const
{
    if (!drag_ || drag_->target < 0 || drag_->target == drag_->band)
        return;
    const QRect target = BandRect(drag_->target);
    const bool isAfter = target.left() > BandRect(drag_->band).left();
    const int x = isAfter ? target.right() + 1 : target.left();
    painter.fillRect(QRect(x - DropMarkWidth / 2, 0, DropMarkWidth, height()),
                     palette().color(QPalette::WindowText));
}

bool BandHeader::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        if (const int band = BandAt(help->pos()); band >= 0) {
            ShowIfElided(help->globalPos(), captions_[band],
                         (BandRect(band) & viewport()->rect()).width());
            return true;
        }
    }
    return GridHeader::viewportEvent(event);
}

} // namespace Qel
