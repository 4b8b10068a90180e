#pragma once

#include "dataset/RowSet.h"

#include <QStandardItemModel>
#include <QString>

#include <array>
#include <vector>

namespace Qel::Bench {

inline constexpr int kRegions = 44'703; ///< China down to its townships

/// REGION_ID, PARENT_ID, REGION_CODE, REGION_NAME, FULL_NAME.
using RegionRow = std::array<QString, 5>;

/// Made-up regions in the shape of the real ones: 31 provinces, 342 prefectures, 2,978 counties,
/// the rest townships; parents before children, full names the names from the province down.
const std::vector<RegionRow> &Regions();
RowSet RegionTable();

/// The same rows as the tree that an item model holds, every column of a row an item.
void FillItemTree(QStandardItemModel &model, const std::vector<RegionRow> &rows);

} // namespace Qel::Bench
