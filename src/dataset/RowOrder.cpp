#include "dataset/RowOrder.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Qel {

void RowOrder::SetAll(quint32 rows)
{
    all_ = true;
    count_ = rows;
    rows_ = {};
}

void RowOrder::SetRows(std::vector<quint32> rows)
{
    all_ = false;
    rows_ = std::move(rows);
}

int RowOrder::PositionOf(quint32 row) const
{
    const int position = FirstAtOrAfter(row);
    return position < Size() && At(position) == row ? position : -1;
}

int RowOrder::FirstAtOrAfter(quint32 row) const
{
    if (all_)
        return int(std::min(row, count_));
    return int(std::lower_bound(rows_.begin(), rows_.end(), row) - rows_.begin());
}

void RowOrder::Append(quint32 row)
{
    if (all_ && row == count_) {
        ++count_;
        return;
    }
    if (all_) {
        std::vector<quint32> rows(count_);
        std::iota(rows.begin(), rows.end(), 0U);
        SetRows(std::move(rows));
    }
    rows_.push_back(row);
}

void RowOrder::RemoveAt(int position)
{
    if (all_ && quint32(position) + 1 == count_) {
        --count_;
        return;
    }
    if (all_) {
        std::vector<quint32> rows(count_);
        std::iota(rows.begin(), rows.end(), 0U);
        SetRows(std::move(rows));
    }
    rows_.erase(rows_.begin() + position);
}

} // namespace Qel
