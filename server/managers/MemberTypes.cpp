#include "managers/MemberTypes.h"

#include "managers/Audit.h"
#include "managers/Records.h"
#include "managers/References.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QStringList Flags{u"BUYER_FLAG"_s, u"SALER_FLAG"_s, u"SENDER_FLAG"_s, u"ADMIN_FLAG"_s};
const QStringList Contents =
    QStringList{u"UNION_ID"_s, u"ORG_TYPE_NAME"_s} + Flags + QStringList{u"REMARK"_s};

const RecordTable &MemberTypes()
{
    static const RecordTable table(u"UNI_ORG_TYPE"_s, {u"ORG_TYPE_ID"_s}, Contents);
    return table;
}

bool MakesSense(const PostedRow &row)
{
    const QStringList flags = row.Of(Flags);
    return !row[u"ORG_TYPE_NAME"_s].trimmed().isEmpty() &&
           std::all_of(flags.begin(), flags.end(), IsFlag);
}

bool IsInUse(Store::Connection &connection, const QString &orgTypeId)
{
    return connection.Exists("SELECT 1 FROM UNI_ORG WHERE ORG_TYPE_ID = ?1 AND LAST_OPERATE <> 'D'",
                             {orgTypeId});
}

QString Deleted(PostContext &post, const Record &old, const QString &id)
{
    if (old.state == RowState::Deleted)
        return Stored; // another operator was first; it is what is asked for
    if (IsInUse(post.connection, id))
        return FirstRefusal;
    MemberTypes().Delete(post, {id});
    return Stored;
}

} // namespace

Wire::ResultRow InsertUpdateMemberType(PostContext &post, const PostedRow &row)
{
    QString id = row[u"ORG_TYPE_ID"_s];
    const QString unionId = row[u"UNION_ID"_s];
    const bool isDeletion = row[u"LAST_OPERATE"_s] == Deletion;
    const bool isNew = id.isEmpty();

    const Record old = isNew ? Record() : MemberTypes().Find(post.connection, {id});
    const bool isKnown = old.state != RowState::Absent && old.values.value(0) == unionId;
    if (!IsLiveGroup(post.connection, unionId) || (isNew ? isDeletion : !isKnown))
        return {Failed, {}};
    if (isDeletion)
        return {Deleted(post, old, id), {{u"ORG_TYPE_ID"_s, id}}};

    const QStringList contents = row.Of(Contents);
    if (!isNew && old.values == contents)
        return {Stored, {{u"ORG_TYPE_ID"_s, id}}};
    if (old.state == RowState::Deleted || !MakesSense(row))
        return {Failed, {}};
    if (isNew)
        id = NewKey(post.connection, u"UNI_ORG_TYPE"_s, u"ORG_TYPE_ID"_s);
    MemberTypes().Put(post, old, {id}, contents);
    return {Stored, {{u"ORG_TYPE_ID"_s, id}}};
}

} // namespace Qel::Managers
