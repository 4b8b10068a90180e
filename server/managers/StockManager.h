#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.stock.StockManager: which organisation may see whose stock.
QList<Method> StockManagerMethods();

} // namespace Qel::Managers
