#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace Qel {

struct GridColumn;

/// A caption above neighbouring columns of a grid.
struct GridBand
{
    QString caption;
    QStringList fields; ///< of its columns, in their order

    friend bool operator==(const GridBand &, const GridBand &) = default;
};

/// The text form used in layouts: "caption|FIELD,FIELD,...". Throws EQelError that quotes a line
/// without fields.
GridBand ParseGridBand(const QString &line);
QString FormatGridBand(const GridBand &band);
QList<GridBand> ParseGridBands(const QStringList &lines);
QStringList FormatGridBands(const QList<GridBand> &bands);

/// Throws EQelError, naming band and column, unless the fields of all bands in a row are the fields
/// of the columns: every column in exactly one band and in its order.
void CheckBands(const QList<GridBand> &bands, const QList<GridColumn> &columns);

} // namespace Qel
