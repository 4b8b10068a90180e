#pragma once

#include <QColor>

class QAbstractItemView;

namespace Qel {

/// The colours of a grid, a banded grid or a tree. An invalid colour leaves what the view has.
struct GridSheet
{
    QColor background;     ///< where there are no rows
    QColor backgroundText; ///< the hint of an empty list
    QColor content;
    QColor contentEven;
    QColor contentOdd;
    QColor preview;
    QColor selection; ///< of a view that has the keyboard focus
    QColor inactive;  ///< selection of a view that has not
    QColor incSearch;
    QColor filterBox;
    QColor header; ///< column headers; their text is black or white, whatever reads better
    QColor indicator;
    QColor footer;
    QColor group;
    QColor groupByBox;
    QColor bandBackground;
    QColor bandContent;
    QColor bandHeader;

    friend bool operator==(const GridSheet &, const GridSheet &) = default;
};

/// Black or white: the one with more contrast on `background`.
QColor ReadableTextOn(const QColor &background);

/// The part of a sheet that every item view's palette can carry: content, odd rows, selection.
void ApplySheetPalette(QAbstractItemView &view, const GridSheet &sheet);

} // namespace Qel
