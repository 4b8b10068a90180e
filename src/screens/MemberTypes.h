#pragma once

#include "controls/GridColumn.h"

#include <QString>

namespace Qel {

class ClientDataSet;

// The member types of a group: what role (buyer, seller, deliverer, administrator) a member
// organisation has in it.

/// The roles in the order in which the screens show them: a field of the type, "1" or "0".
inline constexpr const char16_t *RoleFlags[]{u"BUYER_FLAG", u"SALER_FLAG", u"SENDER_FLAG",
                                             u"ADMIN_FLAG"};

/// Loads a group's live member types into `types` anew.
void LoadMemberTypes(const QString &unionId, ClientDataSet &types);

/// The types as choices: ORG_TYPE_ID shown as ORG_TYPE_NAME.
ValueList MemberTypeChoices(const ClientDataSet &types);

} // namespace Qel
