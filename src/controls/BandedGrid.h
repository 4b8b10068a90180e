#pragma once

#include "controls/DataGrid.h"
#include "controls/GridBand.h"

namespace Qel {

class BandHeader;

/// A grid with two header rows: every column is bound to a band, whose caption spans the band's
/// visible columns; a band without any is not shown. Columns are moved within their band, bands as
/// a whole. Without bands it is a DataGrid.
///
/// Layouts give the bands as data beside the columns, in either order:
/// <property name="bands" stdset="0"><stringlist>, each "caption|FIELD,FIELD,...".
class BandedGrid : public DataGrid
{
    Q_OBJECT
    Q_PROPERTY(QStringList bands READ Bands WRITE SetBands)
    Q_PROPERTY(int bandHeight READ BandHeight WRITE SetBandHeight)

public:
    explicit BandedGrid(QWidget *parent = nullptr);

    QStringList Bands() const;
    /// The fields of all bands in a row are those of the columns. Throws EQelError if the grid has
    /// columns and they are not, and then changes nothing; so does SetColumns in a grid that has
    /// bands. Columns come back into their order.
    void SetBands(const QStringList &bands);
    void SetColumns(const QStringList &columns) override;

    int BandHeight() const; ///< least, in device-independent pixels; a larger font makes it grow
    void SetBandHeight(int height);
    void ApplySheet(const GridSheet &sheet) override;

protected:
    void scrollContentsBy(int dx, int dy) override;

private:
    void ShowBands();

    QList<GridBand> bands_;
    BandHeader *bandHeader_;
};

} // namespace Qel
