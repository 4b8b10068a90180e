#pragma once

#include "demo/Memberships.h"

namespace Qel::Demo {

/// STK_ORG_SET: who distributes and stores drugs lets some of those who are in a group with it see
/// its stock, with or without the quantity; 3,000 permissions, and some that were taken back. One
/// owner has opened its stock to everybody it could.
TableRows StockPermissionRows(const std::vector<Membership> &memberships, History &history);

} // namespace Qel::Demo
