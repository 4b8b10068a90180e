#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.UniUnion: groups.
QList<Method> UniUnionMethods();

} // namespace Qel::Managers
