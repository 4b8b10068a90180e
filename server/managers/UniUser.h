#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.UniUser: which users may act for which groups.
QList<Method> UniUserMethods();

} // namespace Qel::Managers
