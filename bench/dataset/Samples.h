#pragma once

#include "dataset/RowSet.h"

#include <QStandardItemModel>
#include <QString>

#include <vector>

namespace Qel::Bench {

inline constexpr int kRows = 100'000;
inline constexpr int kColumns = 12;

using StringColumns = std::vector<std::vector<QString>>;

/// 100,000 rows of 12 texts, half Chinese names and half codes, about 24 MB as a block.
const QByteArray &SampleBlock();
const RowSet &SampleRows();
const QByteArray &SampleJson(); ///< the same as a JSON answer

StringColumns StringColumnsOf(const RowSet &rows);
void FillItemModel(QStandardItemModel &model, const StringColumns &columns);

/// Bytes in use from the allocator, large blocks included.
qint64 BytesInUse();

} // namespace Qel::Bench
