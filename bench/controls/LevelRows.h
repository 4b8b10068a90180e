#pragma once

#include "dataset/ClientDataSet.h"

#include <QStandardItemModel>

namespace Qel::Bench {

// The largest page of the drug stores: organisations, stores under them, users under these.
inline constexpr int kOrganisations = 200;
inline constexpr int kStores = 1'000;
inline constexpr int kUsers = 5'000;

/// The three tables of a level grid: KEY, LINK (the master's KEY) and the texts A to D.
void OpenLevels(ClientDataSet &organisations, ClientDataSet &stores, ClientDataSet &users);

/// The same rows as the tree that an item model holds, every text an item.
void FillItemLevels(QStandardItemModel &model);

} // namespace Qel::Bench
