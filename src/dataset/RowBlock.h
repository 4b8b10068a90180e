#pragma once

#include "dataset/FieldDef.h"

#include <QByteArray>
#include <QByteArrayView>

#include <vector>

namespace Qel {

/// The three byte strings of one column of a row block; no `nulls` if no cell is null.
struct BlockColumn
{
    QByteArrayView offsets; ///< little-endian
    QByteArrayView bytes;
    QByteArrayView nulls;
};

/// The row block of docs/wire-protocol.md, keys in deterministic order.
QByteArray WriteRowBlock(const FieldDefs &fields, const std::vector<BlockColumn> &columns,
                         qint64 rows, qint64 total);

/// Size of a block without the columns' contents.
qint64 RowBlockOverhead(const FieldDefs &fields);

} // namespace Qel
