#include "managers/UniProduct.h"

#include "managers/Records.h"
#include "managers/References.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QStringList Keys{u"UNION_ID"_s, u"PRODUCT_ID"_s};
const QString Enabled = u"1"_s;

const RecordTable &Catalogue()
{
    static const RecordTable table(u"UNI_PRODUCT"_s, Keys, {u"ENABLE_FLAG"_s});
    return table;
}

/// Takes a product into a group's catalogue, enabled; one that was moved out before takes over its
/// old row. "-1": it is in the catalogue; "0": there is no such group, or no such product that is
/// in use.
Wire::ResultRow MoveIn(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of(Keys);
    if (!IsLiveGroup(post.connection, keys[0]) || !IsProductInUse(post.connection, keys[1]))
        return {Failed, {}};
    const Record old = Catalogue().Find(post.connection, keys);
    if (old.state == RowState::Live)
        return {FirstRefusal, {}};
    Catalogue().Put(post, old, keys, {Enabled});
    return {Stored, {}};
}

/// Takes a product out of a group's catalogue. One that another operator was faster to move out is
/// out, too: "1" without a trace. "0": it never was in the catalogue.
Wire::ResultRow MoveOut(PostContext &post, const PostedRow &row)
{
    return {Catalogue().EnsureDeleted(post, row.Of(Keys)) ? Stored : Failed, {}};
}

} // namespace

QList<Method> UniProductMethods()
{
    return MethodsOfKeys(
        u"com.business.admin.Uni_Product"_s, u"UNI_PRODUCT"_s, Keys, u"PRODUCT_ID"_s,
        {{u"move_in_Uni_Product"_s, MoveIn}, {u"move_out_Uni_Product"_s, MoveOut}});
}

} // namespace Qel::Managers
