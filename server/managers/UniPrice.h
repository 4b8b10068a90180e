#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.UniPrice: what a selling member quotes to a group, and to whom.
QList<Method> UniPriceMethods();

} // namespace Qel::Managers
