#pragma once

#include "dataset/RowOrder.h"
#include "dataset/RowTable.h"

namespace Qel {

/// One column of an open dataset, for loops over many rows: a cell without a call and without the
/// checks of ClientDataSet::BytesAt. Reads the rows as they are at that moment; ends with the
/// table's Close, Open or destruction. `recNo` must be a visible row.
class ColumnReader
{
public:
    ColumnReader(const RowTable &table, const RowOrder &order, int field)
        : table_(table)
        , order_(order)
        , field_(field)
    {
    }

    QByteArrayView Bytes(int recNo) const { return table_.Bytes(Row(recNo), field_); }
    bool IsNull(int recNo) const { return table_.IsNull(Row(recNo), field_); }

private:
    quint32 Row(int recNo) const
    {
        Q_ASSERT(recNo >= 0 && recNo < order_.Size());
        return order_.At(recNo);
    }

    const RowTable &table_;
    const RowOrder &order_;
    const int field_;
};

} // namespace Qel
