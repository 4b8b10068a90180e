#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// com.business.basedata.OrgAffiliationManager: which organisation is the superior of which.
QList<Method> OrgAffiliationMethods();

} // namespace Qel::Managers
