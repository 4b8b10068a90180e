#include "managers/StockManager.h"

#include "managers/Records.h"
#include "managers/References.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QStringList Keys{u"OWNER_ORGID"_s, u"ORG_ID"_s};
const QString ShowQty = u"SHOW_QTY"_s;

const RecordTable &Permissions()
{
    static const RecordTable table(u"STK_ORG_SET"_s, Keys, {ShowQty});
    return table;
}

/// Opens the stock of an owner to a viewer or, with LAST_OPERATE "D", closes it again. "-1": both
/// are one organisation; "-2": they share no group; "0": one of them is deleted, the flag is none,
/// or there never was a permission to delete. What another operator was faster to store or delete
/// stands as it is asked for: "1" without a trace. Of two flags the later one stays.
Wire::ResultRow StockOrgManager(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of(Keys);
    const QString &owner = keys[0];
    const QString &viewer = keys[1];
    if (row[u"LAST_OPERATE"_s] == Deletion)
        return {Permissions().EnsureDeleted(post, keys) ? Stored : Failed, {}};
    if (!IsFlag(row[ShowQty]) || !IsLiveOrganisation(post.connection, owner) ||
        !IsLiveOrganisation(post.connection, viewer))
        return {Failed, {}};
    if (owner == viewer)
        return {FirstRefusal, {}};
    if (!ShareGroup(post.connection, owner, viewer))
        return {SecondRefusal, {}};
    Permissions().Put(post, Permissions().Find(post.connection, keys), keys, {row[ShowQty]});
    return {Stored, {}};
}

} // namespace

QList<Method> StockManagerMethods()
{
    return {{.manager = u"com.business.stock.StockManager"_s,
             .name = u"stockOrgManager"_s,
             .table = u"STK_ORG_SET"_s,
             .parameters = Keys + QStringList{ShowQty, u"LAST_OPERATE"_s},
             .key = Keys,
             .run = StockOrgManager}};
}

} // namespace Qel::Managers
