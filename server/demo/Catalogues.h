#pragma once

#include "demo/Groups.h"

namespace Qel::Demo {

/// UNI_PRODUCT: every live group's catalogue. A sub-group buys from its parent's catalogue, so its
/// own is a part of that. `products` are the keys of the products that there are.
TableRows CatalogueRows(const std::vector<Group> &groups, const QStringList &products,
                        History &history);

} // namespace Qel::Demo
