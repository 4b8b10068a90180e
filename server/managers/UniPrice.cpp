#include "managers/UniPrice.h"

#include "managers/Records.h"
#include "managers/References.h"
#include "store/PlainNumber.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

constexpr double HighestPrice = 99999999; // yuan; what the screen's editor takes

const QString ProductPriceKey = u"PRICE_ID"_s;
const QString TypeKey = u"PRICE_TYPE_ID"_s;
const QStringList Quote{u"UNION_ID"_s, u"SALE_ORGID"_s};
const QStringList Prices{u"COST_PRICE"_s, u"PRICE_01"_s, u"PRICE_02"_s, u"PRICE_03"_s,
                         u"PRICE_04"_s,   u"PRICE_05"_s, u"PRICE_06"_s, u"PRICE_07"_s,
                         u"PRICE_08"_s,   u"PRICE_09"_s};
const QStringList ProductPrice = Quote + QStringList{u"PRODUCT_ID"_s, u"SEND_ORGID"_s} + Prices;
const QStringList TypeContents =
    Quote + QStringList{u"PRICE_FIELD"_s, u"PRICE_NAME"_s, u"ENABLE_FLAG"_s};
const QStringList BuyerKeys = Quote + QStringList{u"BUY_ORGID"_s};

const RecordTable &ProductPrices()
{
    static const RecordTable table(u"PRC_UNI_PRICE_PRODUCT"_s, {ProductPriceKey}, ProductPrice);
    return table;
}

const RecordTable &PriceTypes()
{
    static const RecordTable table(u"PRC_UNI_PRICE_TYPE"_s, {TypeKey}, TypeContents);
    return table;
}

/// The change log names the first two keys: who quotes to whom.
const RecordTable &BuyerTypes()
{
    static const RecordTable table(u"PRC_UNI_PRICE_ORG"_s,
                                   {u"SALE_ORGID"_s, u"BUY_ORGID"_s, u"UNION_ID"_s}, {TypeKey});
    return table;
}

/// A live member of the live group whose type has the flag. The rows of a list share the seller.
bool IsMemberWith(PostContext &post, const QByteArray &flag, const QString &unionId,
                  const QString &orgId)
{
    const QStringList member{QString::fromLatin1(flag), unionId, orgId};
    if (post.found.contains(member))
        return true;
    if (!post.connection.Exists("SELECT 1 FROM UNI_ORG M, UNI_ORG_TYPE T, UNI_UNION U, BAS_ORG O"
                                " WHERE M.UNION_ID = ?1 AND M.ORG_ID = ?2"
                                " AND T.ORG_TYPE_ID = M.ORG_TYPE_ID AND U.UNION_ID = M.UNION_ID"
                                " AND O.ORG_ID = M.ORG_ID AND M.LAST_OPERATE <> 'D'"
                                " AND T.LAST_OPERATE <> 'D' AND U.LAST_OPERATE <> 'D'"
                                " AND O.LAST_OPERATE <> 'D' AND T." +
                                    flag + " = '1'",
                                {unionId, orgId}))
        return false;
    post.found.insert(member);
    return true;
}

bool IsSeller(PostContext &post, const PostedRow &row)
{
    return IsMemberWith(post, "SALER_FLAG", row[Quote[0]], row[Quote[1]]);
}

bool IsInCatalogue(Store::Connection &connection, const QString &unionId, const QString &productId)
{
    return connection.Exists("SELECT 1 FROM UNI_PRODUCT C, BAS_PRODUCT P WHERE C.UNION_ID = ?1"
                             " AND C.PRODUCT_ID = ?2 AND P.PRODUCT_ID = C.PRODUCT_ID"
                             " AND C.LAST_OPERATE <> 'D' AND P.LAST_OPERATE <> 'D'",
                             {unionId, productId});
}

/// Whether the text is a price as Canonical would write it; false for some that are. Most of what
/// screens post and the database gives is, and need not become a number to compare.
bool IsCanonical(QStringView price)
{
    constexpr qsizetype most = 9; // characters, so that none is above the highest
    if (price.isEmpty() || price.size() > most)
        return false;
    const qsizetype point = price.indexOf(u'.');
    const QStringView whole = price.first(point < 0 ? price.size() : point);
    const QStringView part = point < 0 ? QStringView() : price.sliced(point + 1);
    const auto isDigits = [](QStringView text) {
        return std::all_of(text.begin(), text.end(),
                           [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
    };
    return !whole.isEmpty() && whole.size() < most && isDigits(whole) && isDigits(part) &&
           (whole == u"0" || !whole.startsWith(u'0')) &&
           (point < 0 || (!part.isEmpty() && !part.endsWith(u'0')));
}

/// The price as it compares and is shown, with 15 digits; empty stays empty (no price), anything
/// that is none becomes null.
std::optional<QString> Canonical(const QString &price)
{
    if (IsCanonical(price))
        return price;
    if (price.trimmed().isEmpty())
        return QString();
    bool isNumber = false;
    const double value = price.trimmed().toDouble(&isNumber);
    if (!isNumber || !(value >= 0 && value <= HighestPrice))
        return std::nullopt;
    return QString::fromLatin1(Store::PlainNumber(value));
}

/// With every price in its canonical form; nothing if one is none.
std::optional<QStringList> WithCanonicalPrices(QStringList values)
{
    for (qsizetype at = values.size() - Prices.size(); at < values.size(); ++at) {
        const auto price = Canonical(values[at]);
        if (!price)
            return std::nullopt;
        values[at] = *price;
    }
    return values;
}

/// The record that holds the product's prices; live or marked.
QString PriceOf(Store::Connection &connection, const QStringList &contents)
{
    return connection
        .QueryText("SELECT PRICE_ID FROM PRC_UNI_PRICE_PRODUCT WHERE UNION_ID = ?1"
                   " AND SALE_ORGID = ?2 AND PRODUCT_ID = ?3",
                   {contents[0], contents[1], contents[2]})
        .value_or(QString());
}

/// Stores the prices of a product, once a group and seller: another operator who was faster to
/// quote it has made the record that this one changes. LAST_OPERATE "D" deletes the record, also of
/// one who sells there no longer or of a product that left the catalogue; the next prices take it
/// over. Answers PRODUCT_ID and PRICE_ID. "0": the organisation does not sell there, the product is
/// not in the catalogue, the price record is another product's, there is none to delete, or a price
/// is no number from 0 to 99999999.
Wire::ResultRow InsertUpdateProductPrice(PostContext &post, const PostedRow &row)
{
    const QStringList posted = row.Of(ProductPrice);
    const QString known = row[ProductPriceKey];
    QString id = known.isEmpty() ? PriceOf(post.connection, posted) : known;
    Record old = ProductPrices().Find(post.connection, {id});
    constexpr qsizetype whose = 3; // group, seller and product
    if (!known.isEmpty() && old.values.first(qMin(whose, old.values.size())) != posted.first(whose))
        return {Failed, {}};
    const auto stored = [&]() -> Wire::ResultRow {
        return {Stored, {{u"PRODUCT_ID"_s, posted[2]}, {ProductPriceKey, id}}};
    };
    if (row[u"LAST_OPERATE"_s] == Deletion)
        return ProductPrices().EnsureDeleted(post, {id}) ? stored() : Wire::ResultRow{Failed, {}};

    const auto contents = WithCanonicalPrices(posted);
    if (!contents || !IsSeller(post, row) || !IsInCatalogue(post.connection, posted[0], posted[2]))
        return {Failed, {}};
    if (id.isEmpty())
        id = NewKey(post.connection, u"PRC_UNI_PRICE_PRODUCT"_s, ProductPriceKey);
    if (old.state != RowState::Absent)
        old.values = WithCanonicalPrices(old.values).value_or(old.values);
    ProductPrices().Put(post, old, {id}, *contents);
    return stored();
}

bool IsSlot(const QString &slot)
{
    return slot.size() == 2 && slot[0] == u'0' && slot[1] >= u'1' && slot[1] <= u'9';
}

bool IsSlotTaken(Store::Connection &connection, const QStringList &contents, const QString &id)
{
    return connection.Exists("SELECT 1 FROM PRC_UNI_PRICE_TYPE WHERE UNION_ID = ?1"
                             " AND SALE_ORGID = ?2 AND PRICE_FIELD = ?3"
                             " AND PRICE_TYPE_ID <> COALESCE(?4, '')"
                             " AND LAST_OPERATE <> 'D'",
                             {contents[0], contents[1], contents[2], id});
}

/// Only buyers count that an operator can take the type from: what a former member had is in no
/// list, and once the type is gone it means nothing.
bool IsAssigned(Store::Connection &connection, const QString &typeId)
{
    return connection.Exists(
        "SELECT 1 FROM PRC_UNI_PRICE_ORG P, UNI_ORG M, UNI_ORG_TYPE T, BAS_ORG O"
        " WHERE P.PRICE_TYPE_ID = ?1 AND M.UNION_ID = P.UNION_ID"
        " AND M.ORG_ID = P.BUY_ORGID AND T.ORG_TYPE_ID = M.ORG_TYPE_ID"
        " AND O.ORG_ID = M.ORG_ID AND P.LAST_OPERATE <> 'D'"
        " AND M.LAST_OPERATE <> 'D' AND T.LAST_OPERATE <> 'D'"
        " AND O.LAST_OPERATE <> 'D' AND T.BUYER_FLAG = '1'",
        {typeId});
}

/// Adds a price type (empty PRICE_TYPE_ID), changes it or, with LAST_OPERATE "D", deletes it;
/// answers PRICE_TYPE_ID. "-1": the slot has a type, or the type to delete is assigned to buyers;
/// "0": the type is gone or another seller's, the organisation does not sell there, or the slot,
/// the name or the flag makes no sense.
Wire::ResultRow InsertUpdatePriceType(PostContext &post, const PostedRow &row)
{
    QString id = row[TypeKey];
    const QStringList contents = row.Of(TypeContents);
    const bool isDeletion = row[u"LAST_OPERATE"_s] == Deletion;
    const Record old = id.isEmpty() ? Record() : PriceTypes().Find(post.connection, {id});
    const bool isKnown =
        old.state != RowState::Absent && old.values.mid(0, 2) == contents.mid(0, 2);
    if (!IsSeller(post, row) || (id.isEmpty() ? isDeletion : !isKnown))
        return {Failed, {}};
    if (isDeletion) {
        if (IsAssigned(post.connection, id))
            return {FirstRefusal, {}};
        PriceTypes().EnsureDeleted(post, {id});
        return {Stored, {{TypeKey, id}}};
    }
    if (isKnown && old.values == contents)
        return {Stored, {{TypeKey, id}}}; // also one that another operator deleted: nobody asked
    if (old.state == RowState::Deleted || !IsSlot(contents[2]) || contents[3].trimmed().isEmpty() ||
        !IsFlag(contents[4]))
        return {Failed, {}};
    if (IsSlotTaken(post.connection, contents, id))
        return {FirstRefusal, {}};
    if (id.isEmpty())
        id = NewKey(post.connection, u"PRC_UNI_PRICE_TYPE"_s, TypeKey);
    PriceTypes().Put(post, old, {id}, contents);
    return {Stored, {{TypeKey, id}}};
}

/// Gives a buyer one of the seller's enabled price types; the empty one takes the buyer's away.
/// "0": one of the two is no such member, or the seller has no such type in use.
Wire::ResultRow InsertUpdateBuyerType(PostContext &post, const PostedRow &row)
{
    const QStringList keys = row.Of({u"SALE_ORGID"_s, u"BUY_ORGID"_s, u"UNION_ID"_s});
    const QString type = row[TypeKey];
    if (!IsSeller(post, row) || !IsMemberWith(post, "BUYER_FLAG", keys[2], keys[1]))
        return {Failed, {}};
    if (!type.isEmpty() &&
        !post.connection.Exists("SELECT 1 FROM PRC_UNI_PRICE_TYPE WHERE PRICE_TYPE_ID = ?1"
                                " AND UNION_ID = ?2 AND SALE_ORGID = ?3 AND ENABLE_FLAG = '1'"
                                " AND LAST_OPERATE <> 'D'",
                                {type, keys[2], keys[0]}))
        return {Failed, {}};
    BuyerTypes().Put(post, BuyerTypes().Find(post.connection, keys), keys, {type});
    return {Stored, {}};
}

} // namespace

QList<Method> UniPriceMethods()
{
    const QString manager = u"com.business.admin.UniPrice"_s;
    const QStringList operation{u"LAST_OPERATE"_s};
    return {
        {manager, u"insertUpdatePrcUniPriceProduct"_s, u"PRC_UNI_PRICE_PRODUCT"_s,
         QStringList{ProductPriceKey} + ProductPrice + operation,
         Quote + QStringList{u"PRODUCT_ID"_s}, InsertUpdateProductPrice},
        {manager,
         u"insertUpdatePrcUniPriceType"_s,
         u"PRC_UNI_PRICE_TYPE"_s,
         QStringList{TypeKey} + TypeContents + operation,
         {TypeKey},
         InsertUpdatePriceType},
        {manager, u"insertUpdatePrcUniPriceOrg"_s, u"PRC_UNI_PRICE_ORG"_s,
         BuyerKeys + QStringList{TypeKey}, BuyerKeys, InsertUpdateBuyerType},
    };
}

} // namespace Qel::Managers
