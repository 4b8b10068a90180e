#pragma once

#include "store/Connection.h"

namespace Qel::Bench {

/// Organisations with the keys 200000, 200001, ..., a hundred of them in each region "000000",
/// "000001", ...; a fifth of them, evenly spread, is found by "中医".
void FillOrganisations(Store::Connection &connection, int count);

} // namespace Qel::Bench
