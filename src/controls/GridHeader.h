#pragma once

#include <QColor>
#include <QHeaderView>

namespace Qel {

/// A flat column header: one colour, captions elided with the full text as tooltip, columns
/// movable and resizable; the last column takes the room that is left over. Least height in
/// device-independent pixels that grows with the font.
class GridHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit GridHeader(QWidget *parent = nullptr);

    int LeastHeight() const { return leastHeight_; }
    void SetLeastHeight(int height);
    void SetColor(const QColor &color); ///< the text is black or white, whatever reads better

    /// A flat cell: filled, a line at its right, the caption elided in the middle of `room`.
    static void PaintCaption(QPainter &painter, const QRect &cell, const QRect &room,
                             const QColor &color, const QString &caption);

    QSize sizeHint() const override;

protected:
    int HeightOfRow(int least) const; ///< with room for the font
    /// Shows `caption` as tooltip if it does not fit into a cell of that width.
    void ShowIfElided(QPoint globalPos, const QString &caption, int width);
    void paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const override;
    void paintEvent(QPaintEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void FillRoom();

    bool filling_ = false;
    int leastHeight_ = 22;
    QColor color_;
};

} // namespace Qel
