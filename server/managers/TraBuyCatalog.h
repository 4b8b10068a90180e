#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.TraBuyCatalog: drug stores of buying organisations and who works with them.
QList<Method> TraBuyCatalogMethods();

} // namespace Qel::Managers
