#include "managers/References.h"

namespace Qel::Managers {

bool IsLiveGroup(Store::Connection &connection, const QString &unionId)
{
    return connection.Exists("SELECT 1 FROM UNI_UNION WHERE UNION_ID = ?1 AND LAST_OPERATE <> 'D'",
                             {unionId});
}

bool IsAssigned(Store::Connection &connection, const QString &userId, const QString &unionId)
{
    return connection.Exists("SELECT 1 FROM UNI_USER_UNION WHERE USER_ID = ?1 AND UNION_ID = ?2"
                             " AND LAST_OPERATE <> 'D'",
                             {userId, unionId});
}

bool IsLiveMember(Store::Connection &connection, const QString &unionId, const QString &orgId)
{
    return connection.Exists("SELECT 1 FROM UNI_ORG WHERE UNION_ID = ?1 AND ORG_ID = ?2"
                             " AND LAST_OPERATE <> 'D'",
                             {unionId, orgId});
}

bool IsLiveMemberType(Store::Connection &connection, const QString &unionId,
                      const QString &orgTypeId)
{
    return connection.Exists("SELECT 1 FROM UNI_ORG_TYPE T, UNI_UNION U"
                             " WHERE T.ORG_TYPE_ID = ?2 AND T.UNION_ID = ?1"
                             " AND U.UNION_ID = ?1 AND T.LAST_OPERATE <> 'D'"
                             " AND U.LAST_OPERATE <> 'D'",
                             {unionId, orgTypeId});
}

bool IsOrganisationInUse(Store::Connection &connection, const QString &orgId)
{
    return connection.Exists("SELECT 1 FROM BAS_ORG WHERE ORG_ID = ?1 AND ENABLE_FLAG = '1'"
                             " AND LAST_OPERATE <> 'D'",
                             {orgId});
}

bool IsLiveOrganisation(Store::Connection &connection, const QString &orgId)
{
    return connection.Exists("SELECT 1 FROM BAS_ORG WHERE ORG_ID = ?1 AND LAST_OPERATE <> 'D'",
                             {orgId});
}

bool ShareGroup(Store::Connection &connection, const QString &orgId, const QString &otherOrgId)
{
    return connection.Exists("SELECT 1 FROM UNI_ORG A, UNI_ORG B WHERE A.ORG_ID = ?1"
                             " AND B.UNION_ID = A.UNION_ID AND B.ORG_ID = ?2"
                             " AND A.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D'",
                             {orgId, otherOrgId});
}

bool IsUserInUse(Store::Connection &connection, const QString &userId)
{
    return connection.Exists("SELECT 1 FROM USR_USER U, BAS_ORG O WHERE U.USER_ID = ?1"
                             " AND U.ENABLE_FLAG = '1' AND U.LAST_OPERATE <> 'D'"
                             " AND O.ORG_ID = U.ORG_ID AND O.ENABLE_FLAG = '1'"
                             " AND O.LAST_OPERATE <> 'D'",
                             {userId});
}

bool IsProductInUse(Store::Connection &connection, const QString &productId)
{
    return connection.Exists("SELECT 1 FROM BAS_PRODUCT WHERE PRODUCT_ID = ?1"
                             " AND ENABLE_FLAG = '1' AND LAST_OPERATE <> 'D'",
                             {productId});
}

} // namespace Qel::Managers
