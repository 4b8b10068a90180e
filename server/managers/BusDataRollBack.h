#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.rollback.BusDataRollBack: takes back orders, returns and receipts. Nothing is
/// overwritten that the change log could not lead back to: records are marked, and numbers that
/// change are sums over the records left.
QList<Method> BusDataRollBackMethods();

} // namespace Qel::Managers
