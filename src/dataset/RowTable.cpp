#include "dataset/RowTable.h"

#include <utility>

namespace Qel {

RowTable::RowTable(RowSet rows)
    : loaded_(std::move(rows))
    , columns_(loaded_.Columns())
    , loadedRows_(quint32(loaded_.RowCount()))
    , overlay_(size_t(loaded_.FieldCount()))
{
}

bool RowTable::IsUntouched() const
{
    if (addedRows_ > 0 || HasDeleted())
        return false;
    for (int field = 0; field < loaded_.FieldCount(); ++field) {
        if (IsColumnTouched(field))
            return false;
    }
    return true;
}

void RowTable::SetCode(quint32 row, int field, CellCode code)
{
    std::vector<CellCode> &column = overlay_[size_t(field)];
    if (row >= column.size()) {
        // Up to the last row at once: a column that is edited once is mostly edited on.
        const size_t before = column.size();
        column.resize(RowCount(), AsLoaded);
        for (size_t i = std::max(before, size_t(loadedRows_)); i < column.size(); ++i)
            column[i] = Null;
    }
    column[row] = code;
}

void RowTable::Fill(int field, CellCode code)
{
    overlay_[size_t(field)].assign(RowCount(), code);
}

quint32 RowTable::AddRow()
{
    return loadedRows_ + addedRows_++;
}

void RowTable::Delete(quint32 row)
{
    if (deleted_.size() <= row)
        deleted_.resize(RowCount(), false);
    deleted_[row] = true;
}

} // namespace Qel
