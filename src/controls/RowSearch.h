#pragma once

#include "dataset/ClientDataSet.h"

namespace Qel {

/// The first visible row from `first` to the last whose field contains `text` (plain,
/// case-sensitive), or -1. Works on the bytes. An empty text is contained in nothing.
int FindRowContaining(const ClientDataSet &dataSet, QStringView field, const QString &text,
                      int first = 0);

} // namespace Qel
