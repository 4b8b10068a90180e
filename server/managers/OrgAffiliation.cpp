#include "managers/OrgAffiliation.h"

#include "managers/Audit.h"
#include "managers/References.h"
#include "managers/TreeCodes.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QString Affiliation = u"BAS_ORG_AFFILIATION"_s;

/// A live row of the tree.
struct Place
{
    QString id;
    QString orgId;
    QString parentOrgId; ///< empty at the top
    QString code;

    bool operator==(const Place &) const = default;
};

std::optional<Place> FindLive(Store::Connection &connection, const char *column,
                              const QString &value)
{
    const QByteArray sql =
        QByteArray("SELECT ID, ORG_ID, PARENT_ORGID, TREE_CODE FROM BAS_ORG_AFFILIATION WHERE ") +
        column + " = ?1 AND ENABLE_FLAG <> 'D'";
    const auto row = connection.QueryRow(sql, {value});
    return row ? std::optional(Place{row->at(0), row->at(1), row->at(2), row->at(3)})
               : std::nullopt;
}

/// The live rows right below the organisation; `hidden` are those whose own organisation is
/// deleted, which no screen shows.
QStringList ChildIds(Store::Connection &connection, const QString &orgId, bool hidden)
{
    const auto statement = connection.Prepare(
        hidden ? "SELECT A.ID FROM BAS_ORG_AFFILIATION A JOIN BAS_ORG B ON B.ORG_ID = A.ORG_ID"
                 " WHERE A.PARENT_ORGID = ?1 AND A.ENABLE_FLAG <> 'D' AND B.LAST_OPERATE = 'D'"
                 " ORDER BY A.ID"
               : "SELECT ID FROM BAS_ORG_AFFILIATION WHERE PARENT_ORGID = ?1"
                 " AND ENABLE_FLAG <> 'D' ORDER BY ID");
    statement->Bind(1, orgId);
    QStringList ids;
    while (statement->Step())
        ids.append(statement->ColumnText(0));
    return ids;
}

/// Whether the organisation is the superior or above it. It need not stand in the tree: a place may
/// be left below an organisation that has none.
bool IsAtOrAbove(Store::Connection &connection, const QString &orgId, const QString &superiorId)
{
    // It begins with a column and not with the parameter, which has the collation of none.
    return connection.Exists("WITH RECURSIVE ABOVE (ORG_ID) AS ("
                             "SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID = ?2"
                             " UNION SELECT A.PARENT_ORGID FROM BAS_ORG_AFFILIATION A"
                             " JOIN ABOVE B ON A.ORG_ID = B.ORG_ID WHERE A.ENABLE_FLAG <> 'D')"
                             " SELECT 1 FROM ABOVE WHERE ORG_ID = ?1",
                             {orgId, superiorId});
}

/// The code and the superior belong together, and the superior is one that the tree shows.
bool CodeFits(Store::Connection &connection, const Place &place)
{
    if (place.parentOrgId.isEmpty())
        return IsTopCode(place.code);
    const auto parent = FindLive(connection, "ORG_ID", place.parentOrgId);
    return parent && IsCodeBelow(place.code, parent->code) &&
           IsLiveOrganisation(connection, parent->orgId);
}

void StorePlace(PostContext &post, const Place &place, bool isNew)
{
    const QByteArrayView sql =
        isNew ? "INSERT INTO BAS_ORG_AFFILIATION (ID, ORG_ID, PARENT_ORGID, TREE_CODE, TREE_LEVEL,"
                " LAST_USER, LAST_USER_ID, LAST_UPDATE, ENABLE_FLAG, LAST_OPERATE)"
                " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, '1', '1')"
              : "UPDATE BAS_ORG_AFFILIATION SET ORG_ID = ?2, PARENT_ORGID = ?3, TREE_CODE = ?4,"
                " TREE_LEVEL = ?5, LAST_USER = ?6, LAST_USER_ID = ?7, LAST_UPDATE = ?8"
                " WHERE ID = ?1";
    post.Write(sql, {place.id, place.orgId, place.parentOrgId, place.code, LevelOfCode(place.code),
                     post.lastUser, post.user.userId, post.now});
    LogChange(post, Affiliation, place.id, {}, isNew ? Change::Insert : Change::Modify);
}

void HangBelow(PostContext &post, const QString &id, const QString &parentOrgId)
{
    post.Write("UPDATE BAS_ORG_AFFILIATION SET PARENT_ORGID = ?2, LAST_USER = ?3,"
               " LAST_USER_ID = ?4, LAST_UPDATE = ?5 WHERE ID = ?1",
               {id, parentOrgId, post.lastUser, post.user.userId, post.now});
    LogChange(post, Affiliation, id, {}, Change::Modify);
}

/// The superior is forgotten: whoever asks for an organisation's superior looks at deleted rows,
/// too.
void Remove(PostContext &post, const QString &id)
{
    post.Write("UPDATE BAS_ORG_AFFILIATION SET ENABLE_FLAG = 'D', LAST_OPERATE = 'D',"
               " PARENT_ORGID = NULL, LAST_USER = ?2, LAST_USER_ID = ?3, LAST_UPDATE = ?4"
               " WHERE ID = ?1",
               {id, post.lastUser, post.user.userId, post.now});
    LogChange(post, Affiliation, id, {}, Change::LogicalDelete);
}

/// Gives an organisation its place in the tree (empty ID) or changes the place; answers its ID.
/// Where the place gets another organisation, those below it follow.
/// "0": the place is gone, the organisation or the superior is not there, the code does not fit the
/// superior or has places below it and would change, or the superior would be below itself;
/// "-2": the organisation has another place; "-1": another place has the code. Where both hold it
/// is "-2", which the screen looks at first.
Wire::ResultRow InsertUpdateAffiliation(PostContext &post, const PostedRow &row)
{
    Store::Connection &connection = post.connection;
    Place place{row[u"ID"_s], row[u"ORG_ID"_s], row[u"PARENT_ORGID"_s], row[u"TREE_CODE"_s]};

    const bool isNew = place.id.isEmpty();
    const auto old = isNew ? std::nullopt : FindLive(connection, "ID", place.id);
    if (!isNew && !old)
        return {Failed, {}};
    if (!IsLiveOrganisation(connection, place.orgId) || !CodeFits(connection, place) ||
        row[u"TREE_LEVEL"_s] != LevelOfCode(place.code))
        return {Failed, {}};
    const bool isRecoded = old && old->code != place.code;
    const QStringList children =
        old ? ChildIds(connection, old->orgId, /*hidden=*/false) : QStringList();
    const QStringList hidden =
        isRecoded ? ChildIds(connection, old->orgId, /*hidden=*/true) : QStringList();
    if (old && ((isRecoded && children.size() > hidden.size()) ||
                IsAtOrAbove(connection, old->orgId, place.parentOrgId)))
        return {Failed, {}};

    const auto ofOrganisation = FindLive(connection, "ORG_ID", place.orgId);
    if (ofOrganisation && ofOrganisation->id != place.id)
        return {SecondRefusal, {}};
    if (IsAtOrAbove(connection, place.orgId, place.parentOrgId))
        return {Failed, {}};
    const auto ofCode = FindLive(connection, "TREE_CODE", place.code);
    if (ofCode && ofCode->id != place.id)
        return {FirstRefusal, {}};

    if (isNew)
        place.id = NewKey(connection, Affiliation, u"ID"_s);
    if (isNew || *old != place)
        StorePlace(post, place, isNew);
    // Nobody sees them: with another code above them they would keep codes that look free.
    for (const QString &child : hidden)
        Remove(post, child);
    if (old && !isRecoded && old->orgId != place.orgId) {
        for (const QString &child : children)
            HangBelow(post, child, place.orgId);
    }
    return {Stored, {{u"ID"_s, place.id}}};
}

/// Takes an organisation out of the tree. "-1": it has subordinates. One that another operator was
/// faster to take out is out: "1" without a trace. "0": it never was in the tree.
Wire::ResultRow DeleteAffiliation(PostContext &post, const PostedRow &row)
{
    Store::Connection &connection = post.connection;
    const QString orgId = row[u"ORG_ID"_s];
    if (row[u"ENABLE_FLAG"_s] != Deletion)
        return {Failed, {}};
    const auto place = FindLive(connection, "ORG_ID", orgId);
    if (!place) {
        const bool was =
            connection.Exists("SELECT 1 FROM BAS_ORG_AFFILIATION WHERE ORG_ID = ?1", {orgId});
        return {was ? Stored : Failed, {}};
    }
    // Places of deleted organisations nobody sees: they hold no superior, they go with it.
    const QStringList hidden = ChildIds(connection, orgId, /*hidden=*/true);
    if (ChildIds(connection, orgId, /*hidden=*/false).size() > hidden.size())
        return {FirstRefusal, {}};
    Remove(post, place->id);
    for (const QString &child : hidden)
        Remove(post, child);
    return {Stored, {}};
}

} // namespace

QList<Method> OrgAffiliationMethods()
{
    const QString manager = u"com.business.basedata.OrgAffiliationManager"_s;
    return {{manager,
             u"insertUpdateOrgAffiliation"_s,
             Affiliation,
             {u"ID"_s, u"ORG_ID"_s, u"PARENT_ORGID"_s, u"TREE_CODE"_s, u"TREE_LEVEL"_s},
             {u"ID"_s},
             InsertUpdateAffiliation},
            {manager,
             u"deleteOrgAffiliation"_s,
             Affiliation,
             {u"ORG_ID"_s, u"ENABLE_FLAG"_s},
             {u"ORG_ID"_s},
             DeleteAffiliation}};
}

} // namespace Qel::Managers
