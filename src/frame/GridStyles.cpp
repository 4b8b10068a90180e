#include "frame/GridStyles.h"

#include "dataset/QelError.h"

#include <QColor>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr QRgb white = 0xFFFFFFFF;
constexpr QRgb grey = 0xFF808080;
constexpr QRgb blue = 0xFF0000FF;
constexpr QRgb red = 0xFFFF0000;
constexpr QRgb navy = 0xFF000080;

constexpr NamedStyle namedStyles[] = {
    {"CellFontBlue"_L1, {}, blue},
    {"CellFontRed"_L1, {}, red},
    {"CellCanEdit"_L1, 0xFFFEEEC2, {}},
    {"GridBackGround"_L1, 0xFFF8F9FC, grey},
    {"GridBandBackGround"_L1, 0xFFCAD3DD, {}},
    {"GridBandBackHead"_L1, 0xFFA3AEC4, {}},
    {"GridContent"_L1, white, {}},
    {"GridContentEven"_L1, white, {}},
    {"GridPreview"_L1, white, {}},
    {"GridContentOdd"_L1, 0xFFF4F9FB, {}},
    {"GridFilterBox"_L1, 0xFFFFFFD2, {}},
    {"GridFooter"_L1, 0xFFCAD3DD, {}},
    {"GridGroup"_L1, 0xFFF1EFE2, {}},
    {"GridGroupByBox"_L1, 0xFFFED547, {}},
    {"GridIncSearch"_L1, 0xFFFED547, {}},
    {"GridHeader"_L1, 0xFF316AC5, {}},
    {"GridInactive"_L1, 0xFFABC4FE, {}},
    {"GridSelection"_L1, 0xFFABC4FE, {}},
    {"GridIndicator"_L1, 0xFFA3AEC4, {}},
    {"BarTitleStyle"_L1, {}, navy, 15, true},
};

QColor Background(QLatin1StringView style)
{
    return QColor::fromRgb(GridStyle(style).background.value());
}

QColor Text(QLatin1StringView style)
{
    return QColor::fromRgb(GridStyle(style).text.value());
}

void AddBands(GridSheet &sheet)
{
    sheet.bandBackground = Background("GridBandBackGround"_L1);
    sheet.bandHeader = Background("GridBandBackHead"_L1);
}

/// What all three sheets assign in the same way.
GridSheet CommonSheet()
{
    GridSheet sheet;
    sheet.background = Background("GridBackGround"_L1);
    sheet.backgroundText = Text("GridBackGround"_L1);
    sheet.content = Background("GridContent"_L1);
    sheet.contentEven = Background("GridContentEven"_L1);
    sheet.contentOdd = Background("GridContentOdd"_L1);
    sheet.inactive = Background("GridInactive"_L1);
    sheet.selection = Background("GridSelection"_L1);
    sheet.footer = Background("GridFooter"_L1);
    sheet.header = Background("GridHeader"_L1);
    return sheet;
}

constexpr QStringView song = u"宋体";

/// The families that stand in for 宋体, best first: its own other names, then what a desktop
/// with Chinese fonts has.
void NameSubstitutes()
{
    static const bool named = [] {
        const QStringList substitutes{u"SimSun"_s,
                                      u"NSimSun"_s,
                                      u"Songti SC"_s,
                                      u"Noto Sans CJK SC"_s,
                                      u"Source Han Sans SC"_s,
                                      u"WenQuanYi Zen Hei"_s,
                                      u"WenQuanYi Micro Hei"_s,
                                      u"Noto Serif CJK SC"_s,
                                      u"AR PL UMing CN"_s};
        QFont::insertSubstitutions(song.toString(), substitutes);
        return true;
    }();
    Q_UNUSED(named)
}

} // namespace

std::span<const NamedStyle> NamedStyles()
{
    return namedStyles;
}

const NamedStyle &GridStyle(QLatin1StringView name)
{
    const auto found = std::find_if(std::begin(namedStyles), std::end(namedStyles),
                                    [name](const NamedStyle &style) { return style.name == name; });
    if (found == std::end(namedStyles))
        throw EQelError(u"没有名为 %1 的样式。"_s.arg(name));
    return *found;
}

GridSheet TableSheet()
{
    GridSheet sheet = CommonSheet();
    sheet.filterBox = Background("GridFilterBox"_L1);
    sheet.incSearch = Background("GridIncSearch"_L1);
    sheet.group = Background("GridGroup"_L1);
    sheet.groupByBox = Background("GridGroupByBox"_L1);
    sheet.indicator = Background("GridIndicator"_L1);
    sheet.preview = Background("GridPreview"_L1);
    return sheet;
}

GridSheet BandTableSheet()
{
    GridSheet sheet = TableSheet();
    AddBands(sheet);
    return sheet;
}

GridSheet TreeListSheet()
{
    GridSheet sheet = CommonSheet();
    AddBands(sheet);
    sheet.bandContent = Background("GridContent"_L1);
    return sheet;
}

QFont SongFont(int pixelSize, bool bold)
{
    NameSubstitutes();
    QFont font(song.toString());
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    return font;
}

QFont SongFontInPoints(int pointSize)
{
    NameSubstitutes();
    return QFont(song.toString(), pointSize);
}

} // namespace Qel
