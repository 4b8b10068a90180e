#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.Uni_Product: the product catalogues of groups.
QList<Method> UniProductMethods();

} // namespace Qel::Managers
