#pragma once

#include "controls/GridHeader.h"

#include <QStringList>

#include <optional>

namespace Qel {

/// The header of a banded grid: a row of band captions, each over the columns bound to it, and the
/// column captions below. A column is dragged within its band and a band as a whole, by its
/// caption; whatever moves sections, the columns of a band stay neighbours. The line between two
/// bands resizes the column left of it. Without bands it is a GridHeader.
class BandHeader : public GridHeader
{
    Q_OBJECT

public:
    explicit BandHeader(QWidget *parent = nullptr);

    /// Of each column, in the model's order, the number of its band from 0; columns of a band
    /// are neighbours. Brings the columns back into the model's order.
    void SetBands(const QStringList &captions, const QList<int> &bandOfColumn);

    int BandHeight() const { return bandHeight_; }
    void SetBandHeight(int height);              ///< least, in device-independent pixels
    void SetBandColor(const QColor &color);      ///< of band captions
    void SetBandBackground(const QColor &color); ///< of the band row where there are no bands

    int BandRowHeight() const;         ///< as painted; 0 without bands
    QRect BandRect(int band) const;    ///< in the viewport; empty if all its columns are hidden
    int BandAt(QPoint position) const; ///< -1: none there
    QList<int> BandOrder() const;      ///< as on the screen, hidden ones too
    /// Puts a band where another one is, which makes room towards the band's old place.
    void MoveBand(int band, int toPlaceOf);

    QSize sizeHint() const override;

protected:
    void paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const override;
    void paintEvent(QPaintEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    struct Drag
    {
        int band;
        int pressedAt;   ///< x
        int target = -1; ///< the band whose place it would take; -1: not dragged yet
    };

    bool HasBands() const { return !captions_.isEmpty(); }
    int ResizedAt(QPoint position) const;
    bool IsBandCaption(QPoint position) const;
    int DropTarget(int x) const;
    void DragBand(int x);
    void ScrollTowards(int x);
    void Arrange(const QList<int> &columns);
    void KeepBandsTogether(int oldPlace, int newPlace);
    void PaintBands(QPainter &painter) const;
    void PaintDropMark(QPainter &painter) const;

    QStringList captions_;
    QList<int> bandOfColumn_;
    int bandHeight_ = 22;
    QColor bandColor_;
    QColor bandBackground_;
    std::optional<Drag> drag_;
    int draggedColumn_ = -1;
    bool arranging_ = false;
};

} // namespace Qel
