#pragma once

#include "dataset/RowSet.h"
#include "dataset/ValuePool.h"

#include <optional>
#include <vector>

namespace Qel {

/// A RowSet and what was changed since: the overlay of a dataset, without cursor or order.
/// Rows are numbered as they were loaded, then as they were added; a number is never used again,
/// also not after its row was deleted.
class RowTable
{
public:
    /// What a cell holds, as a number that can be kept and put back: 0 what was loaded, 1 null,
    /// otherwise a value of the pool.
    using CellCode = quint32;
    static constexpr CellCode AsLoaded = 0;
    static constexpr CellCode Null = 1;

    RowTable() = default;
    explicit RowTable(RowSet rows);

    const RowSet &Loaded() const { return loaded_; }
    quint32 RowCount() const { return loadedRows_ + addedRows_; } ///< deleted ones too
    quint32 LoadedRowCount() const { return loadedRows_; }
    bool IsColumnTouched(int field) const { return !overlay_[size_t(field)].empty(); }
    bool IsUntouched() const; ///< still exactly what was loaded

    QByteArrayView Bytes(quint32 row, int field) const
    {
        return BytesOfCode(row, field, Code(row, field));
    }
    bool IsNull(quint32 row, int field) const { return IsNullCode(row, field, Code(row, field)); }

    /// What the cell would be with that code.
    QByteArrayView BytesOfCode(quint32 row, int field, CellCode code) const
    {
        if (code == AsLoaded)
            return columns_[field].Cell(row);
        return code == Null ? QByteArrayView() : pool_.At(code - kPoolBase);
    }
    bool IsNullCode(quint32 row, int field, CellCode code) const
    {
        return code == AsLoaded ? columns_[field].IsNull(row) : code == Null;
    }
    CellCode Code(quint32 row, int field) const
    {
        const std::vector<CellCode> &column = overlay_[size_t(field)];
        if (row < column.size())
            return column[row];
        return row < loadedRows_ ? AsLoaded : Null;
    }

    CellCode CodeOf(QByteArrayView utf8) { return pool_.Intern(utf8) + kPoolBase; }
    void SetCode(quint32 row, int field, CellCode code);
    void Fill(int field, CellCode code); ///< every row
    quint32 AddRow();                    ///< all cells null

    bool IsDeleted(quint32 row) const { return row < deleted_.size() && deleted_[row]; }
    void Delete(quint32 row);
    bool HasDeleted() const { return !deleted_.empty(); }

private:
    static constexpr CellCode kPoolBase = 2;

    RowSet loaded_;
    const RowColumn *columns_ = nullptr; ///< those of loaded_, one step nearer
    quint32 loadedRows_ = 0;
    quint32 addedRows_ = 0;
    std::vector<std::vector<CellCode>> overlay_; ///< per field; shorter than the rows or empty
    std::vector<bool> deleted_;
    ValuePool pool_;
};

} // namespace Qel
