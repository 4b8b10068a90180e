#pragma once

#include <QList>

namespace Qel {

class ClientDataSet;

// Lists in which the user ticks rows carry a column SELECTED: "1" ticked, "0" not.

/// The ticked rows, as recNos in their order.
QList<int> TickedRows(const ClientDataSet &rows);

/// Ticks every visible row or none: what a select-all box does.
void TickAll(ClientDataSet &rows, bool ticked);

} // namespace Qel
