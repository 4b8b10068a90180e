#include "managers/UniUnionOrg.h"

#include "managers/Audit.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

/// Takes a member out of its group. "0": it is not a member.
Wire::ResultRow DeleteMember(PostContext &post, const PostedRow &row)
{
    const QString unionId = row[u"UNION_ID"_s];
    const QString orgId = row[u"ORG_ID"_s];
    const qint64 changed = post.connection.Run(
        "UPDATE UNI_ORG SET LAST_OPERATE = 'D', LAST_USER = ?3, LAST_USER_ID = ?4,"
        " LAST_UPDATE = ?5 WHERE UNION_ID = ?1 AND ORG_ID = ?2 AND LAST_OPERATE <> 'D'",
        {unionId, orgId, post.user.userName, post.user.userId, post.now});
    if (changed == 0)
        return {Failed, {}};
    LogChange(post, u"UNI_ORG"_s, unionId, orgId, Change::LogicalDelete);
    return {Stored, {}};
}

} // namespace

QList<Method> UniUnionOrgMethods()
{
    const QString manager = u"com.business.admin.UniUnionOrg"_s;
    return {
        {manager, u"delete_UniOrg"_s, u"UNI_ORG"_s, {u"UNION_ID"_s, u"ORG_ID"_s}, DeleteMember},
    };
}

} // namespace Qel::Managers
