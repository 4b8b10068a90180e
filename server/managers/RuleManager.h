#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.RuleManager: rules of groups and of organisations.
QList<Method> RuleManagerMethods();

} // namespace Qel::Managers
