#pragma once

#include "controls/GridColumn.h"

namespace Qel {

class ClientDataSet;

/// The rows of a look-up table as choices, in their order: one field's values, each shown as the
/// text of another.
ValueList ChoicesOf(const ClientDataSet &rows, QStringView valueField, QStringView textField);

} // namespace Qel
