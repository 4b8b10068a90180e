#pragma once

#include <QtGlobal>

#include <vector>

namespace Qel {

/// Which rows of a table are visible, in table order (ascending row numbers). Takes no memory as
/// long as all rows are.
class RowOrder
{
public:
    void SetAll(quint32 rows);               ///< rows 0 .. rows-1
    void SetRows(std::vector<quint32> rows); ///< ascending

    int Size() const { return int(all_ ? count_ : rows_.size()); }
    quint32 At(int position) const { return all_ ? quint32(position) : rows_[size_t(position)]; }
    int PositionOf(quint32 row) const;     ///< -1 if it is not visible
    int FirstAtOrAfter(quint32 row) const; ///< Size() if there is none

    void Append(quint32 row); ///< greater than all others
    void RemoveAt(int position);

private:
    bool all_ = true;
    quint32 count_ = 0;
    std::vector<quint32> rows_;
};

} // namespace Qel
