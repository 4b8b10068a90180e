#include "managers/UniUnion.h"

#include "managers/Audit.h"
#include "managers/MemberTypes.h"
#include "managers/TreeCodes.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

struct Group
{
    QString id;
    QString code;
};

const QString UnionTable = u"UNI_UNION"_s;

std::optional<Group> FindLive(Store::Connection &connection, const QString &id)
{
    const auto code = connection.QueryText(
        "SELECT UNION_CODE FROM UNI_UNION WHERE UNION_ID = ?1 AND LAST_OPERATE <> 'D'", {id});
    return code ? std::optional(Group{id, *code}) : std::nullopt;
}

/// The live groups below this one, at any depth.
QList<Group> Descendants(Store::Connection &connection, const QString &id)
{
    const auto statement = connection.Prepare(
        "WITH RECURSIVE BELOW (UNION_ID, UNION_CODE) AS ("
        " SELECT UNION_ID, UNION_CODE FROM UNI_UNION WHERE PARENT_ID = ?1 AND LAST_OPERATE <> 'D'"
        " UNION SELECT U.UNION_ID, U.UNION_CODE FROM UNI_UNION U"
        " JOIN BELOW B ON U.PARENT_ID = B.UNION_ID WHERE U.LAST_OPERATE <> 'D')"
        " SELECT UNION_ID, UNION_CODE FROM BELOW ORDER BY UNION_CODE, UNION_ID");
    statement->Bind(1, id);
    QList<Group> groups;
    while (statement->Step())
        groups.append({statement->ColumnText(0), statement->ColumnText(1)});
    return groups;
}

bool CodeFits(Store::Connection &connection, const QString &code, const QString &parentId)
{
    if (parentId.isEmpty())
        return IsTopCode(code);
    const auto parent = FindLive(connection, parentId);
    return parent && IsCodeBelow(code, parent->code);
}

bool ReferencesExist(Store::Connection &connection, const PostedRow &row)
{
    const QString region = row[u"REGION_ID"_s];
    return connection.Exists("SELECT 1 FROM BAS_ORG WHERE ORG_ID = ?1", {row[u"MASTER_ORGID"_s]}) &&
           (region.isEmpty() ||
            connection.Exists("SELECT 1 FROM BAS_REGION WHERE REGION_ID = ?1", {region}));
}

/// One organisation leads at most one live group.
bool LeadsAnotherGroup(Store::Connection &connection, const QString &orgId, const QString &ownId)
{
    return connection.Exists("SELECT 1 FROM UNI_UNION WHERE MASTER_ORGID = ?1"
                             " AND LAST_OPERATE <> 'D' AND UNION_ID <> COALESCE(?2, ' ')",
                             {orgId, ownId});
}

/// Whether a live group outside `own` has this code.
bool CodeTaken(Store::Connection &connection, const QString &code, const QList<Group> &own)
{
    const auto statement = connection.Prepare(
        "SELECT UNION_ID FROM UNI_UNION WHERE UNION_CODE = ?1 AND LAST_OPERATE <> 'D'");
    statement->Bind(1, code);
    while (statement->Step()) {
        const QString id = statement->ColumnText(0);
        if (std::none_of(own.begin(), own.end(), [&](const Group &one) { return one.id == id; }))
            return true;
    }
    return false;
}

/// What the codes of a changed group's descendants become: the old beginning gives way to the
/// new one.
QList<Group> Recoded(const QList<Group> &descendants, const QString &from, const QString &to)
{
    QList<Group> result;
    if (from == to)
        return result;
    for (const Group &group : descendants)
        if (group.code.startsWith(from))
            result.append({group.id, to + group.code.mid(from.size())});
    return result;
}

void StoreGroup(PostContext &post, const PostedRow &row, const QString &id, bool isNew)
{
    const QByteArrayView sql =
        isNew ? "INSERT INTO UNI_UNION (UNION_ID, PARENT_ID, UNION_CODE, UNION_NAME, UNION_TYPE,"
                " REGION_ID, MASTER_ORGID, REMARK, LAST_USER, LAST_USER_ID, LAST_UPDATE,"
                " ENABLE_FLAG, LAST_OPERATE)"
                " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, '1', '1')"
              : "UPDATE UNI_UNION SET PARENT_ID = ?2, UNION_CODE = ?3, UNION_NAME = ?4,"
                " UNION_TYPE = ?5, REGION_ID = ?6, MASTER_ORGID = ?7, REMARK = ?8,"
                " LAST_USER = ?9, LAST_USER_ID = ?10, LAST_UPDATE = ?11, LAST_OPERATE = '1'"
                " WHERE UNION_ID = ?1";
    post.Write(sql, {id, row[u"PARENT_ID"_s], row[u"UNION_CODE"_s], row[u"UNION_NAME"_s],
                     row[u"UNION_TYPE"_s], row[u"REGION_ID"_s], row[u"MASTER_ORGID"_s],
                     row[u"REMARK"_s], post.lastUser, post.user.userId, post.now});
    LogChange(post, UnionTable, id, {}, isNew ? Change::Insert : Change::Modify);
}

void StoreCode(PostContext &post, const Group &group)
{
    post.Write("UPDATE UNI_UNION SET UNION_CODE = ?2, LAST_USER = ?3, LAST_USER_ID = ?4,"
               " LAST_UPDATE = ?5 WHERE UNION_ID = ?1",
               {group.id, group.code, post.user.userName, post.user.userId, post.now});
    LogChange(post, UnionTable, group.id, {}, Change::Modify);
}

/// Stores a new group (empty UNION_ID) or changes one; answers its UNION_ID. A group that gets
/// another code takes its sub-groups' codes along.
/// "0": the group is gone, its code does not fit its parent, or it refers to what is not there;
/// "-2": the organisation leads another live group; "-1": another live group has the code. Where
/// both hold it is "-2", which the screen looks at first.
Wire::ResultRow InsertUpdateUnion(PostContext &post, const PostedRow &row)
{
    Store::Connection &connection = post.connection;
    const QString id = row[u"UNION_ID"_s];
    const QString parentId = row[u"PARENT_ID"_s];
    const QString code = row[u"UNION_CODE"_s];
    const QStringList types{QString(), u"1"_s, u"2"_s, u"3"_s};

    const auto old = id.isEmpty() ? std::nullopt : FindLive(connection, id);
    if (!id.isEmpty() && !old)
        return {Failed, {}};
    if (row[u"UNION_NAME"_s].isEmpty() || !types.contains(row[u"UNION_TYPE"_s]) ||
        !CodeFits(connection, code, parentId) || !ReferencesExist(connection, row))
        return {Failed, {}};

    QList<Group> own;
    QList<Group> moved;
    if (old) {
        const QList<Group> below = Descendants(connection, id);
        own = below + QList{*old};
        moved = Recoded(below, old->code, code);
    }
    const bool underItself =
        std::any_of(own.begin(), own.end(), [&](const Group &one) { return one.id == parentId; });
    const bool tooDeep = std::any_of(
        moved.begin(), moved.end(), [](const Group &one) { return one.code.size() > MaxTreeCode; });
    if (underItself || tooDeep)
        return {Failed, {}};

    if (LeadsAnotherGroup(connection, row[u"MASTER_ORGID"_s], id))
        return {SecondRefusal, {}};
    const auto taken = [&](const Group &one) { return CodeTaken(connection, one.code, own); };
    if (CodeTaken(connection, code, own) || std::any_of(moved.begin(), moved.end(), taken))
        return {FirstRefusal, {}};

    const QString key = old ? id : NewKey(connection, UnionTable, u"UNION_ID"_s);
    StoreGroup(post, row, key, !old);
    for (const Group &group : moved)
        StoreCode(post, group);
    return {Stored, {{u"UNION_ID"_s, key}}};
}

/// "0": there is no such live group; "-2": it has members; "-1": it has sub-groups. Where both
/// hold it is "-2", which the screen looks at first.
Wire::ResultRow DeleteUnion(PostContext &post, const PostedRow &row)
{
    Store::Connection &connection = post.connection;
    const QString id = row[u"UNION_ID"_s];
    if (!FindLive(connection, id))
        return {Failed, {}};
    if (connection.Exists("SELECT 1 FROM UNI_ORG WHERE UNION_ID = ?1 AND LAST_OPERATE <> 'D'",
                          {id}))
        return {SecondRefusal, {}};
    if (connection.Exists("SELECT 1 FROM UNI_UNION WHERE PARENT_ID = ?1 AND LAST_OPERATE <> 'D'",
                          {id}))
        return {FirstRefusal, {}};
    // The code proposal looks at ENABLE_FLAG, everything else at LAST_OPERATE.
    post.Write("UPDATE UNI_UNION SET LAST_OPERATE = 'D', ENABLE_FLAG = 'D', LAST_USER = ?2,"
               " LAST_USER_ID = ?3, LAST_UPDATE = ?4 WHERE UNION_ID = ?1",
               {id, post.user.userName, post.user.userId, post.now});
    LogChange(post, UnionTable, id, {}, Change::LogicalDelete);
    return {Stored, {}};
}

} // namespace

QList<Method> UniUnionMethods()
{
    const QString manager = u"com.business.admin.UniUnion"_s;
    return {
        {manager,
         u"insert_update_UniUnion"_s,
         UnionTable,
         {u"UNION_ID"_s, u"PARENT_ID"_s, u"UNION_CODE"_s, u"UNION_NAME"_s, u"UNION_TYPE"_s,
          u"REGION_ID"_s, u"MASTER_ORGID"_s, u"REMARK"_s},
         {u"UNION_ID"_s},
         InsertUpdateUnion},
        {manager, u"delete_UniUnion"_s, UnionTable, {u"UNION_ID"_s}, {u"UNION_ID"_s}, DeleteUnion},
        {manager,
         u"insert_update_UniOrgType"_s,
         u"UNI_ORG_TYPE"_s,
         {u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s, u"UNION_ID"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s,
          u"SENDER_FLAG"_s, u"ADMIN_FLAG"_s, u"REMARK"_s, u"LAST_OPERATE"_s},
         {u"ORG_TYPE_ID"_s},
         InsertUpdateMemberType,
         {},
         true},
    };
}

} // namespace Qel::Managers
