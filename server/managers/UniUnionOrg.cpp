#include "managers/UniUnionOrg.h"

#include "managers/Records.h"
#include "managers/References.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QStringList Keys{u"UNION_ID"_s, u"ORG_ID"_s};

const RecordTable &Memberships()
{
    static const RecordTable table(u"UNI_ORG"_s, Keys, {u"ORG_TYPE_ID"_s});
    return table;
}

/// The members of one list mostly share a few types.
bool HasMemberType(PostContext &post, const QString &unionId, const QString &orgTypeId)
{
    const QStringList type{unionId, orgTypeId};
    if (post.found.contains(type))
        return true;
    if (!IsLiveMemberType(post.connection, unionId, orgTypeId))
        return false;
    post.found.insert(type);
    return true;
}

/// Adds an organisation to a group, or gives a member another type. The two come with the same
/// values; it is the change that names its LAST_USER, an addition does not.
/// "-1": the organisation to add is a member, which another operator may just have made it: its
/// type stays as it is. "0": the member to change is none any more, the group has no such type, or
/// the organisation is not in use.
Wire::ResultRow InsertUpdateMember(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of(Keys);
    const QString orgTypeId = row[u"ORG_TYPE_ID"_s];
    const bool isChange = row.Has(u"LAST_USER"_s);

    if (!HasMemberType(post, keys[0], orgTypeId))
        return {Failed, {}};
    const Record old = Memberships().Find(post.connection, keys);
    const bool isMember = old.state == RowState::Live;
    if (isMember && !isChange)
        return {FirstRefusal, {}};
    if (!isMember && (isChange || !IsOrganisationInUse(post.connection, keys[1])))
        return {Failed, {}};
    Memberships().Put(post, old, keys, {orgTypeId});
    return {Stored, {}};
}

/// Takes a member out of its group. "0": it is not a member.
Wire::ResultRow DeleteMember(PostContext &post, const PostedRow &row)
{
    return {Memberships().Delete(post, row.Of(Keys)) ? Stored : Failed, {}};
}

} // namespace

QList<Method> UniUnionOrgMethods()
{
    const QString manager = u"com.business.admin.UniUnionOrg"_s;
    const QString table = u"UNI_ORG"_s;
    return {
        {manager, u"insert_update_UniUnionOrg"_s, table, Keys + QStringList{u"ORG_TYPE_ID"_s}, Keys,
         InsertUpdateMember},
        {manager, u"delete_UniOrg"_s, table, Keys, Keys, DeleteMember},
    };
}

} // namespace Qel::Managers
