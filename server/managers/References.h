#pragma once

#include "store/Connection.h"

#include <QString>

/// Whether what a posted row refers to is there. An empty id refers to nothing.
namespace Qel::Managers {

bool IsLiveGroup(Store::Connection &connection, const QString &unionId);
/// The user may act for the group, live or deleted.
bool IsAssigned(Store::Connection &connection, const QString &userId, const QString &unionId);
bool IsLiveMember(Store::Connection &connection, const QString &unionId, const QString &orgId);
/// A live type of the live group.
bool IsLiveMemberType(Store::Connection &connection, const QString &unionId,
                      const QString &orgTypeId);
/// Live and enabled: what the lists of candidates offer.
bool IsOrganisationInUse(Store::Connection &connection, const QString &orgId);
/// Live, in use or not: what the organisation picker offers.
bool IsLiveOrganisation(Store::Connection &connection, const QString &orgId);
/// Live members of one group.
bool ShareGroup(Store::Connection &connection, const QString &orgId, const QString &otherOrgId);
/// May log in, for an organisation in use.
bool IsUserInUse(Store::Connection &connection, const QString &userId);
bool IsProductInUse(Store::Connection &connection, const QString &productId);

} // namespace Qel::Managers
