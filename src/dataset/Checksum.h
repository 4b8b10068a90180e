#pragma once

#include <QByteArrayView>

namespace Qel {

/// XXH64 with seed 0, as its published specification defines it. Finds damage, not malice.
quint64 Checksum(QByteArrayView bytes);

} // namespace Qel
