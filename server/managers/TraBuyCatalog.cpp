#include "managers/TraBuyCatalog.h"

#include "managers/Audit.h"
#include "managers/Records.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QString CatalogTable = u"TRA_BUY_CATALOG"_s;
const QString AssignmentTable = u"TRA_USER_BUY_CATALOG"_s;
const QString CatalogId = u"CATALOG_ID"_s;
const QString BuyOrgId = u"BUY_ORGID"_s;
const QString RelationFlag = u"RELATION_FLAG"_s;

constexpr qsizetype MaxName = 10; // characters; the column has room for more

/// By CATALOG_ID: the name, the organisation.
const RecordTable &Catalogs()
{
    static const RecordTable table(CatalogTable, {CatalogId}, {u"CATALOG_NAME"_s, BuyOrgId});
    return table;
}

/// By CATALOG_ID and USER_ID: the organisation, the product link.
const RecordTable &Assignments()
{
    static const RecordTable table(AssignmentTable, {CatalogId, u"USER_ID"_s},
                                   {BuyOrgId, RelationFlag});
    return table;
}

/// The drug store that the row names, if it is one of the organisation that the row names.
Record FindCatalog(PostContext &post, const PostedRow &row)
{
    Record record = Catalogs().Find(post.connection, {row[CatalogId]});
    return record.values.value(1) == row[BuyOrgId] ? record : Record{};
}

/// Only hospitals and pharmacies keep drug stores.
bool MayHaveCatalogs(Store::Connection &connection, const QString &orgId)
{
    return connection.Exists("SELECT 1 FROM BAS_ORG WHERE ORG_ID = ?1 AND ORG_TYPE IN ('4', '5')"
                             " AND LAST_OPERATE <> 'D'",
                             {orgId});
}

bool IsNameTaken(Store::Connection &connection, const QString &name, const QString &orgId,
                 const QString &ownId)
{
    return connection.Exists("SELECT 1 FROM TRA_BUY_CATALOG WHERE CATALOG_NAME = ?1"
                             " AND BUY_ORGID = ?2 AND CATALOG_ID <> COALESCE(?3, ' ')"
                             " AND LAST_OPERATE <> 'D'",
                             {name, orgId, ownId});
}

/// May log in, for this organisation.
bool IsUserOf(Store::Connection &connection, const QString &userId, const QString &orgId)
{
    return connection.Exists(
        "SELECT 1 FROM USR_USER WHERE USER_ID = ?1 AND ORG_ID = ?2 AND ENABLE_FLAG = '1'",
        {userId, orgId});
}

QStringList AssignedUsers(Store::Connection &connection, const QString &catalogId)
{
    const auto statement =
        connection.Prepare("SELECT USER_ID FROM TRA_USER_BUY_CATALOG WHERE CATALOG_ID = ?1"
                           " AND LAST_OPERATE <> 'D' ORDER BY USER_ID");
    statement->Bind(1, catalogId);
    QStringList users;
    while (statement->Step())
        users.append(statement->ColumnText(0));
    return users;
}

void RemoveUsers(PostContext &post, const QString &catalogId, const QSet<QString> &butFor)
{
    const QStringList users = AssignedUsers(post.connection, catalogId);
    for (const QString &user : users) {
        if (!butFor.contains(user))
            Assignments().Delete(post, {catalogId, user});
    }
}

/// Stores a new drug store (empty CATALOG_ID) or renames one; answers its CATALOG_ID. "-1": another
/// live one of the organisation has the name. "0": it is gone or another organisation's, the
/// organisation keeps none, or the name is blank or too long.
Wire::ResultRow InsertUpdateCatalog(PostContext &post, const PostedRow &row)
{
    const QString id = row[CatalogId];
    const QString orgId = row[BuyOrgId];
    const QString name = row[u"CATALOG_NAME"_s].trimmed();
    const Record old = id.isEmpty() ? Record{} : FindCatalog(post, row);
    if ((!id.isEmpty() && old.state != RowState::Live) || name.isEmpty() || name.size() > MaxName ||
        !MayHaveCatalogs(post.connection, orgId))
        return {Failed, {}};
    if (IsNameTaken(post.connection, name, orgId, id))
        return {FirstRefusal, {}};
    const QString key = id.isEmpty() ? NewKey(post.connection, CatalogTable, CatalogId) : id;
    Catalogs().Put(post, old, {key}, {name, orgId});
    return {Stored, {{CatalogId, key}}};
}

/// Deletes a drug store, and with it who works with it. One that another operator was faster to
/// delete is deleted: "1" without a trace. "0": the organisation never had it.
Wire::ResultRow DeleteCatalog(PostContext &post, const PostedRow &row)
{
    const Record old = FindCatalog(post, row);
    if (old.state == RowState::Absent)
        return {Failed, {}};
    Catalogs().Delete(post, {row[CatalogId]});
    RemoveUsers(post, row[CatalogId], {});
    return {Stored, {}};
}

/// Assigns a user or switches its product link, where the empty flag is "0". A link that is off
/// already, stored or not, stays as it is. "0": the drug store is gone or another organisation's,
/// or the user may not log in for that organisation.
Wire::ResultRow AssignUser(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of({CatalogId, u"USER_ID"_s});
    QString flag = row[RelationFlag].isEmpty() ? u"0"_s : row[RelationFlag];
    if (!IsFlag(flag) || FindCatalog(post, row).state != RowState::Live ||
        !IsUserOf(post.connection, keys[1], row[BuyOrgId]))
        return {Failed, {}};
    const Record old = Assignments().Find(post.connection, keys);
    if (old.state == RowState::Live && old.values[1].isEmpty() && flag == u"0")
        flag.clear();
    Assignments().Put(post, old, keys, {row[BuyOrgId], flag});
    return {Stored, {}};
}

/// Who is not among the rows does not work with their drug stores any more.
void RemoveUsersNotPosted(PostContext &post, const QList<Wire::NamedValues> &rows)
{
    QHash<QString, QSet<QString>> posted;
    for (const Wire::NamedValues &values : rows) {
        const PostedRow row(values);
        posted[row[CatalogId]].insert(row[u"USER_ID"_s]);
    }
    for (auto at = posted.cbegin(); at != posted.cend(); ++at)
        RemoveUsers(post, at.key(), at.value());
}

/// Nobody works with the drug store any more. "0": the organisation never had it.
Wire::ResultRow RemoveAllUsers(PostContext &post, const PostedRow &row)
{
    if (FindCatalog(post, row).state == RowState::Absent)
        return {Failed, {}};
    RemoveUsers(post, row[CatalogId], {});
    return {Stored, {}};
}

} // namespace

QList<Method> TraBuyCatalogMethods()
{
    const QString manager = u"com.business.admin.TraBuyCatalog"_s;
    return {{.manager = manager,
             .name = u"insertUpdateBuyCatalog"_s,
             .table = CatalogTable,
             .parameters = {CatalogId, u"CATALOG_NAME"_s, BuyOrgId},
             .key = {CatalogId},
             .run = InsertUpdateCatalog},
            {.manager = manager,
             .name = u"deleteBuyCatalog"_s,
             .table = CatalogTable,
             .parameters = {CatalogId, BuyOrgId},
             .key = {CatalogId},
             .run = DeleteCatalog},
            {.manager = manager,
             .name = u"insertUpdateTraUserBuyCatalog"_s,
             .table = AssignmentTable,
             .parameters = {u"USER_ID"_s, CatalogId, BuyOrgId, RelationFlag},
             .key = {CatalogId, u"USER_ID"_s},
             .run = AssignUser,
             .finish = RemoveUsersNotPosted},
            {.manager = manager,
             .name = u"deleteTraUserBuyCatalog"_s,
             .table = AssignmentTable,
             .parameters = {CatalogId, BuyOrgId},
             .key = {CatalogId},
             .run = RemoveAllUsers}};
}

} // namespace Qel::Managers
