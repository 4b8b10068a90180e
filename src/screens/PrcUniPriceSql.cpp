#include "screens/PrcUniPriceSql.h"

#include "frame/QelUtils.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

QString AndClass(const QString &productClass)
{
    return productClass.isEmpty() ? QString() : u" and a.product_class = "_s + Quoted(productClass);
}

QString AndStatus(QStringView status)
{
    if (status == u"0")
        return u" AND c.product_id is null "_s;
    if (status == u"1")
        return u" AND c.product_id is not null "_s;
    return {};
}

} // namespace

QString PrcUniPriceSql::Unions(const QString &userId)
{
    return u" SELECT   B.UNION_ID,B.UNION_NAME  FROM UNI_USER_UNION A, UNI_UNION B  where"
           " A.UNION_ID = B.UNION_ID  and   B.LAST_OPERATE <> 'D' and   A.LAST_OPERATE <>"
           " 'D' and   A.USER_ID  = "_s +
           Quoted(userId);
}

QString PrcUniPriceSql::Sellers(const QString &unionId)
{
    return u" select  A.ORG_ID, A.ORG_NAME  from BAS_ORG A,      UNI_ORG B,      UNI_ORG_TYPE"
           " C  where  A.ORG_ID = B.ORG_ID       and B.org_type_id = c.org_type_id       and"
           " B.last_operate <> 'D'       and a.last_operate <> 'D'       and c.last_operate"
           " <> 'D'       and c.Saler_flag ='1'       and B.union_id = "_s +
           Quoted(unionId);
}

QString PrcUniPriceSql::PriceTypes(const TQuote &quote)
{
    return u" select * from PRC_UNI_PRICE_TYPE where last_operate <> 'D' AND SALE_ORGID = "_s +
           Quoted(quote.saleOrgId) + u" AND UNION_ID = "_s + Quoted(quote.unionId);
}

QString PrcUniPriceSql::Products(const TQuote &quote, const TPriceFilter &filter)
{
    // The price row's PRODUCT_ID is NULL where there is none: the product's own is ProductID.
    return u" SELECT A.PRODUCT_SERIAL, A.PRODUCT_NAME, a.product_id as ProductID,"
           "  A.TRADE_NAME, A.FULL_SPEC, A.DOSE_NAME, A.WRAP_NAME, A.FACTORY_NAME,"
           " A.PRODUCT_LEVEL, '0' as SELECTED, C.*  FROM BAS_PRODUCT A,  UNI_PRODUCT B,"
           "  (select * from PRC_UNI_PRICE_PRODUCT    where SALE_ORGID = "_s +
           Quoted(quote.saleOrgId) + u"   and UNION_ID = "_s + Quoted(quote.unionId) +
           u"   and LAST_OPERATE <> 'D' ) C  WHERE A.PRODUCT_ID = B.PRODUCT_ID  and"
           " b.product_id = c.product_id(+)  AND  A.LAST_OPERATE <> 'D'  AND  B.LAST_OPERATE"
           " <> 'D'  AND  B.UNION_ID = "_s +
           Quoted(quote.unionId) + AndClass(filter.productClass) +
           AndLike(u"A.PRODUCT_SERIAL,A.PRODUCT_NAME, A.PRODUCT_NAME_PY, A.PRODUCT_NAME_WB,"
                   "  A.TRADE_NAME, A.TRADE_NAME_PY, A.TRADE_NAME_WB"_s,
                   filter.information) +
           AndLike(u"A.FACTORY_NAME, A.FACTORY_ABBR, A.FACTORY_NAME_PY"_s, filter.factory) +
           AndStatus(filter.status) + u" order by A.PRODUCT_NAME "_s;
}

QString PrcUniPriceSql::Buyers(const TQuote &quote, const QString &org)
{
    return u" select '0' as selected,  b.org_ID,  b.org_name,  d.price_type_id , d.PRICE_NAME"
           "  from UNI_ORG a,       bas_org b,       UNI_ORG_TYPE c,      (select"
           " v.BUY_ORGID,u.PRICE_TYPE_ID,PRICE_NAME from PRC_UNI_PRICE_TYPE u,"
           "                     PRC_UNI_PRICE_ORG v         where u.PRICE_TYPE_ID ="
           " v.PRICE_TYPE_ID        and u.UNION_ID = "_s +
           Quoted(quote.unionId) + u"       and u.SALE_ORGID = "_s + Quoted(quote.saleOrgId) +
           u"       and u.last_operate<>'D' and v.last_operate<>'D' ) d  where a.org_id ="
           " b.org_id  and a.union_id = "_s +
           Quoted(quote.unionId) +
           u" and a.org_type_id = c.org_type_id  and c.buyer_flag = '1'  and a.org_id ="
           " d.buy_orgid(+)  and a.last_operate <> 'D'  and b.last_operate <> 'D'  and"
           " c.last_operate <> 'D' "_s +
           AndLike(u"b.org_code,b.org_name,b.org_name_py"_s, org, u" and ") +
           u" order by b.org_name "_s;
}

} // namespace Qel
