#pragma once

#include "demo/Organisations.h"

namespace Qel::Demo {

/// BAS_PRODUCT: medicines of drugs.csv, each in several strengths and packings by several makers.
TableRows ProductRows(const std::vector<Organisation> &organisations, const Initials &initials);

} // namespace Qel::Demo
