#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.admin.UniUnionOrg: member organisations of groups.
QList<Method> UniUnionOrgMethods();

} // namespace Qel::Managers
