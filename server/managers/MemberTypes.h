#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// One row of a group's list of member types, which is posted whole: adds it (empty ORG_TYPE_ID),
/// changes it or, with LAST_OPERATE "D", deletes it; answers its ORG_TYPE_ID. Any other
/// LAST_OPERATE is stored as live. A row that changes nothing touches nothing, even if the type
/// was deleted meanwhile.
/// "0": the group or the type is gone, the type is another group's, it has no name or its flags
/// are neither "0" nor "1"; "-1": live members have the type that is to be deleted.
Wire::ResultRow InsertUpdateMemberType(PostContext &post, const PostedRow &row);

} // namespace Qel::Managers
