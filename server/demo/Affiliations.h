#pragma once

#include "demo/Organisations.h"

namespace Qel::Demo {

/// BAS_ORG_AFFILIATION: 400 organisations and their superiors. At the top the platform's own
/// centre, below which pharmacies take every code up to 99; the purchasing centres of the focus
/// provinces, below them hospitals by city and county down to the fifth level; some centres that
/// stand alone, and one that was taken out again, which leaves the next code at the top free.
/// `focus` are codes of the regions that have groups.
TableRows AffiliationRows(const std::vector<Organisation> &organisations, const QStringList &focus);

} // namespace Qel::Demo
