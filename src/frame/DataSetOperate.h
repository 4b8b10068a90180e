#pragma once

#include "wire/Wire.h"

namespace Qel {

class ClientDataSet;

// What screens do to their own tables after a successful write, instead of querying again. Names
// that the table has no field for are passed over: a posted row also carries values that are no
// columns.

/// Appends and posts a row. A table that is not open is created first, with a text field for
/// each name.
void AppendRow(ClientDataSet &dataSet, const Wire::NamedValues &values);

/// Sets and posts fields of the current row.
void EditRow(ClientDataSet &dataSet, const Wire::NamedValues &values);

} // namespace Qel
