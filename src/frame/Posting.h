#pragma once

#include "wire/Wire.h"

#include <QString>

namespace Qel {

/// Posts one row of named values, in their order, to a manager's method through the shared
/// request list and returns the result code of its answer. What the server returned besides
/// stands in the shared result list.
QString PostRow(const QString &manager, const QString &method, const Wire::NamedValues &values);

/// A key that the server made for row `index` of the last post; empty if it made none.
QString PostedValue(QStringView name, int index = 0);

} // namespace Qel
