#include "controls/BandedGrid.h"

#include "controls/BandHeader.h"

namespace Qel {

BandedGrid::BandedGrid(QWidget *parent)
    : DataGrid(new BandHeader, parent)
    , bandHeader_(static_cast<BandHeader *>(horizontalHeader()))
{
}

QStringList BandedGrid::Bands() const
{
    return FormatGridBands(bands_);
}

void BandedGrid::SetBands(const QStringList &bands)
{
    const QList<GridBand> parsed = ParseGridBands(bands);
    if (!parsed.isEmpty() && !Model()->Columns().isEmpty())
        CheckBands(parsed, Model()->Columns());
    bands_ = parsed;
    ShowBands();
}

void BandedGrid::SetColumns(const QStringList &columns)
{
    if (!bands_.isEmpty() && !columns.isEmpty())
        CheckBands(bands_, ParseGridColumns(columns));
    DataGrid::SetColumns(columns);
    ShowBands();
}

/// Bands that came before their columns wait for them.
void BandedGrid::ShowBands()
{
    QStringList captions;
    QList<int> bandOfColumn;
    const bool isBanded = !bands_.isEmpty() && !Model()->Columns().isEmpty();
    for (int band = 0; isBanded && band < bands_.size(); ++band) {
        captions.append(bands_[band].caption);
        bandOfColumn.append(QList<int>(bands_[band].fields.size(), band));
    }
    for (int column = 0; column < Model()->Columns().size(); ++column)
        Model()->SetBand(column, captions.value(bandOfColumn.value(column, -1)));
    bandHeader_->SetBands(captions, bandOfColumn);
}

int BandedGrid::BandHeight() const
{
    return bandHeader_->BandHeight();
}

void BandedGrid::SetBandHeight(int height)
{
    bandHeader_->SetBandHeight(height);
}

void BandedGrid::ApplySheet(const GridSheet &sheet)
{
    DataGrid::ApplySheet(sheet);
    bandHeader_->SetBandColor(sheet.bandHeader);
    bandHeader_->SetBandBackground(sheet.bandBackground);
}

/// The header moves its picture along; captions that stand in the middle of what is seen move on
/// their own.
void BandedGrid::scrollContentsBy(int dx, int dy)
{
    DataGrid::scrollContentsBy(dx, dy);
    if (dx != 0)
        bandHeader_->viewport()->update();
}

} // namespace Qel
