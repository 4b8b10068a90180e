#pragma once

#include "controls/GridSheet.h"

#include <QFont>
#include <QLatin1StringView>
#include <QRgb>

#include <optional>
#include <span>

namespace Qel {

/// One named style of the library. Colours that are not set stay as the control has them.
struct NamedStyle
{
    QLatin1StringView name;
    std::optional<QRgb> background;
    std::optional<QRgb> text;
    int pixelSize = 12; ///< device-independent; the font is 宋体
    bool bold = false;
};

/// All named styles, in one table.
std::span<const NamedStyle> NamedStyles();

/// The style of that name; asking for one that does not exist is a mistake and raises EQelError.
const NamedStyle &GridStyle(QLatin1StringView name);

GridSheet TableSheet();     ///< for plain grids
GridSheet BandTableSheet(); ///< for banded grids: the same and the bands
GridSheet TreeListSheet();  ///< for tree lists

/// "宋体" in device-independent pixels. Says once what stands in for the family on machines that
/// do not have it.
QFont SongFont(int pixelSize = 12, bool bold = false);

/// The same in points: what a form starts with.
QFont SongFontInPoints(int pointSize);

} // namespace Qel
