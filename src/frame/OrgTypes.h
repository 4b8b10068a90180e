#pragma once

#include "controls/GridColumn.h"

namespace Qel {

/// The kinds of organisation (ORG_TYPE) and their captions.
const ValueList &OrgTypes();

/// The caption of the filter entry that stands for every kind.
inline constexpr QStringView AllOrgTypes = u"全部";

/// The same for a filter, with the entry "0" "全部" in front; no organisation has that value.
ValueList OrgTypeFilter();

} // namespace Qel
