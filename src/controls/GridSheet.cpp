#include "controls/GridSheet.h"

#include <QAbstractItemView>
#include <QPalette>

#include <cmath>

namespace Qel {

namespace {

/// Relative luminance as WCAG 2 defines it, 0 (black) to 1 (white).
double Luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

} // namespace

QColor ReadableTextOn(const QColor &background)
{
    // Contrast with black and with white is the same at (L + 0.05)^2 = 0.05 * 1.05.
    const double bound = std::sqrt(0.05 * 1.05) - 0.05;
    return Luminance(background) > bound ? QColor(Qt::black) : QColor(Qt::white);
}

void ApplySheetPalette(QAbstractItemView &view, const GridSheet &sheet)
{
    QPalette palette = view.palette();
    const auto set = [&palette](QPalette::ColorGroup group, QPalette::ColorRole role,
                                const QColor &color) {
        if (color.isValid())
            palette.setColor(group, role, color);
    };
    set(QPalette::All, QPalette::Base, sheet.content);
    set(QPalette::All, QPalette::Base, sheet.contentEven);
    set(QPalette::All, QPalette::AlternateBase, sheet.contentOdd);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        set(group, QPalette::Highlight, sheet.selection);
        if (sheet.selection.isValid())
            set(group, QPalette::HighlightedText, ReadableTextOn(sheet.selection));
    }
    set(QPalette::Inactive, QPalette::Highlight, sheet.inactive);
    view.setPalette(palette);
}

} // namespace Qel
