#include "managers/UniUser.h"

#include "managers/Records.h"
#include "managers/References.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QStringList Keys{u"USER_ID"_s, u"UNION_ID"_s};

const RecordTable &Assignments()
{
    static const RecordTable table(u"UNI_USER_UNION"_s, Keys, {});
    return table;
}

/// Assigns a user to a group; one that was moved out before takes over its old row. A user that
/// another operator was faster to assign is assigned: "1" without a trace. "0": there is no such
/// group, or no such user that may log in for an organisation in use.
Wire::ResultRow InsertUser(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of(Keys);
    if (!IsUserInUse(post.connection, keys[0]) || !IsLiveGroup(post.connection, keys[1]))
        return {Failed, {}};
    Assignments().Put(post, Assignments().Find(post.connection, keys), keys, {});
    return {Stored, {}};
}

/// Takes a user out of a group; the user and its other groups stay. One that another operator was
/// faster to move out is out, too: "1" without a trace. "0": it never was in the group.
Wire::ResultRow DeleteUser(PostContext &post, const PostedRow &row)
{
    return {Assignments().EnsureDeleted(post, row.Of(Keys)) ? Stored : Failed, {}};
}

} // namespace

QList<Method> UniUserMethods()
{
    return MethodsOfKeys(u"com.business.admin.UniUser"_s, u"UNI_USER_UNION"_s, Keys, u"USER_ID"_s,
                         {{u"insertUniUser"_s, InsertUser}, {u"deleteUniUser"_s, DeleteUser}});
}

} // namespace Qel::Managers
