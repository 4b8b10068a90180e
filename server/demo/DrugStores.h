#pragma once

#include "demo/Users.h"

namespace Qel::Demo {

/// Those who work in the drug stores of hospitals and pharmacies: users besides `users`, who do
/// nothing else.
std::vector<User> MakeStoreKeepers(const std::vector<Organisation> &organisations,
                                   const std::vector<User> &users, const Initials &initials);

/// TRA_BUY_CATALOG and TRA_USER_BUY_CATALOG: the drug stores, and who works with each. `users` are
/// all there are, the keepers too.
std::vector<TableRows> DrugStoreRows(const std::vector<Organisation> &organisations,
                                     const std::vector<User> &users);

} // namespace Qel::Demo
