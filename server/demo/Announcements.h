#pragma once

#include "demo/Groups.h"

namespace Qel::Demo {

class History;

/// SYS_AFFICHE: 400 announcements to the live groups in the two years before `end`, 60 of them in
/// the last two weeks; of all audiences, published or not, changed before and after. 20 more were
/// deleted: the log alone tells of them.
TableRows AnnouncementRows(const std::vector<Group> &groups, OfficeTime end, History &history);

} // namespace Qel::Demo
