#pragma once

#include "demo/Memberships.h"

namespace Qel::Demo {

/// UNI_ORG_RULE: 200 buyers have rules. Where the affiliation names a superior, most have it
/// approve their orders; some have switched that off again, which keeps the superior on file.
TableRows OrganisationRuleRows(const std::vector<Membership> &memberships,
                               const TableRows &affiliation, History &history);

} // namespace Qel::Demo
