#pragma once

#include "demo/Memberships.h"

namespace Qel::Demo {

/// UNI_UNION_RULE: a third of the groups has the audit of purchase orders set up, with one of its
/// members as the auditor; some of them have switched it off again.
TableRows RuleRows(const std::vector<Group> &groups, const std::vector<Membership> &memberships,
                   History &history);

} // namespace Qel::Demo
