#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.notic.NoticManager: announcements to groups.
QList<Method> NoticManagerMethods();

} // namespace Qel::Managers
