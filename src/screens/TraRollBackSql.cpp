#include "screens/TraRollBackSql.h"

#include "frame/QelUtils.h"

#include <span>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

/// One comparison of the return tab, up to its value. That tab writes its own conditions: columns
/// are matched as they are stored, and only some values are made upper case.
struct Piece
{
    QStringView text;
    bool upper;
};

// Pieces follow one another without a blank between them.
constexpr Piece ReturnProductPieces[]{
    {u"AND ( B.PRODUCT_NAME LIKE ", false}, {u"OR B.PRODUCT_NAME_PY LIKE ", true},
    {u"OR B.PRODUCT_NAME_WB LIKE ", true},  {u"OR B.TRADE_NAME LIKE ", false},
    {u"OR B.DOSE_NAME LIKE ", false},       {u"OR B.FACTORY_NAME LIKE ", false},
    {u"OR B.FULL_SPEC LIKE ", false},
};

// Only the seller's name is matched as typed.
constexpr Piece ReturnOrgPieces[]{
    {u"AND ( C.ORG_NAME LIKE ", false}, {u"OR C.ORG_NAME_PY LIKE ", true},
    {u"OR C.ORG_NAME_WB LIKE ", true},  {u"OR E.ORG_NAME LIKE ", true},
    {u"OR E.ORG_NAME_PY LIKE ", true},  {u"OR E.ORG_NAME_WB LIKE ", true},
    {u"OR E.ORG_ABBR LIKE ", true},     {u"OR C.ORG_ABBR LIKE ", true},
};

QString Wrapped(const QString &text)
{
    return Quoted(QString(u'%' + text + u'%'));
}

QString Joined(std::span<const Piece> pieces, const QString &value)
{
    const QString text = value.trimmed();
    if (text.isEmpty())
        return {};
    QString condition;
    for (const Piece &piece : pieces)
        condition.append(piece.text).append(Wrapped(piece.upper ? text.toUpper() : text));
    return condition + u')';
}

QString AndReturnOrder(const QString &value)
{
    const QString text = value.trimmed();
    return text.isEmpty() ? QString() : u"AND D.ORD_CODE LIKE "_s + Wrapped(text);
}

QString AndState(const QString &state)
{
    return state == AllReturnStates ? QString() : u" AND A.CONFIRM_FLAG="_s + Quoted(state);
}

/// A range with fewer dates than `needed` (1 or 2) adds nothing.
QString AndDates(const QString &column, const TRollBackFilter &filter, int needed)
{
    if (int(filter.from.isValid()) + int(filter.to.isValid()) < needed)
        return {};
    return u" AND "_s + DateRangeCondition(column, filter.from, filter.to);
}

/// Both organisations of a row, D and E, by name, short name and initials.
QString AndOrg(const QString &value)
{
    return AndLike(u"D.ORG_NAME,D.ORG_ABBR,D.ORG_NAME_PY,E.ORG_NAME,E.ORG_ABBR,E.ORG_NAME_PY"_s,
                   value);
}

} // namespace

QString TraRollBackSql::Orders(const TRollBackFilter &filter)
{
    // The trade name stands twice among the product's columns.
    return u" SELECT A.ORD_ID,         A.ORD_CODE,         A.ORD_DATE,         A.ORD_TYPE,"
           "         A.ORD_STATE,         A.ORD_REMARK,         A.BUY_ORGID,"
           "         A.SALE_ORGID,         A.SEND_ORGID,         A.ITEM_COUNT,"
           "         A.ITEM_MONEY,         B.ORD_ITEM_ID,         B.HIT_PRICE,"
           "         B.ORD_QTY,         D.ORG_NAME AS BUY_NAME,         D.ORG_ABBR AS"
           " BUY_ABBR,         D.ORG_NAME_PY AS BUY_NAME_PY,         E.ORG_NAME AS"
           " SEND_NAME,         E.ORG_ABBR AS SEND_ABBR,         E.ORG_NAME_PY AS"
           " SEND_NAME_PY,         F.PRODUCT_NAME,         F.PRODUCT_NAME_PY,"
           "         F.TRADE_NAME,         F.TRADE_NAME_PY,         F.UNIT_NAME,"
           "         F.WRAP_NAME,         F.DOSE_NAME,         F.FULL_SPEC,"
           "         F.FACTORY_NAME    FROM TRA_ORDER A,         TRA_ORDER_ITEM B,"
           "         BAS_ORG D,         BAS_ORG E,         BAS_PRODUCT F   WHERE A.ORD_ID ="
           " B.ORD_ID     AND A.BUY_ORGID = D.ORG_ID     AND A.SEND_ORGID = E.ORG_ID     AND"
           " B.PRODUCT_ID = F.PRODUCT_ID     AND A.LAST_OPERATE <> 'D'     AND"
           " B.LAST_OPERATE <> 'D' "_s +
           AndLike(u"A.ORD_CODE"_s, filter.orderCode) +
           AndLike(u"F.PRODUCT_NAME,F.TRADE_NAME,F.PRODUCT_NAME_PY,F.TRADE_NAME,F.FACTORY_NAME"_s,
                   filter.product) +
           AndOrg(filter.org) + AndDates(u"A.ORD_DATE "_s, filter, 1) +
           u" ORDER BY D.ORG_NAME, A.ORD_CODE "_s;
}

QString TraRollBackSql::Returns(const TRollBackFilter &filter)
{
    return u" SELECT  '0' AS SELECTED,    A.*,    B.PRODUCT_NAME,    B.UNIT_NAME,"
           "    B.TRADE_NAME,    B.DOSE_NAME,   B.FULL_SPEC,    B.FACTORY_NAME,"
           "    C.ORG_NAME AS SALE_NAME,    E.ORG_NAME AS BUY_NAME,    D.ORD_CODE,"
           "    D.HIT_PRICE,    D.RECEIVE_QTY,    D.LOT_NO,    D.INSURE_DATE,    D.ORD_DATE"
           "  FROM    TRA_RETURN A,    TRA_SEND D,    BAS_PRODUCT B,    BAS_ORG C,"
           "    BAS_ORG E  WHERE D.PRODUCT_ID=B.PRODUCT_ID    AND A.SEND_ID=D.SEND_ID    AND"
           " D.LAST_OPERATE <> 'D'    AND A.LAST_OPERATE <> 'D'    AND D.BUY_ORGID=E.ORG_ID"
           "    AND D.SALE_ORGID=C.ORG_ID "_s +
           Joined(ReturnProductPieces, filter.product) + Joined(ReturnOrgPieces, filter.org) +
           AndReturnOrder(filter.orderCode) + AndDates(u"A.LAST_UPDATE"_s, filter, 2) +
           AndState(filter.state) + u" ORDER BY D.ORD_CODE "_s;
}

QString TraRollBackSql::Receipts(const TRollBackFilter &filter)
{
    return u" SELECT     A.*,    C.PRODUCT_NAME,    C.TRADE_NAME,    C.DOSE_NAME,"
           "    C.FULL_SPEC,    C.FACTORY_NAME,    D.ORG_NAME AS SALE_NAME,    E.ORG_NAME AS"
           " BUY_NAME  FROM TRA_SEND A,       BAS_PRODUCT C,       BAS_ORG E,       BAS_ORG"
           " D  WHERE A.SEND_FLAG = '1'    AND A.RECEIVE_FLAG = '1'    AND"
           " A.PRODUCT_ID=C.PRODUCT_ID    AND A.SALE_ORGID=D.ORG_ID    AND"
           " A.BUY_ORGID=E.ORG_ID    AND A.LAST_OPERATE <>'D' "_s +
           AndLike(u"C.PRODUCT_NAME,C.PRODUCT_NAME_PY, C.PRODUCT_NAME_WB, C.TRADE_NAME, "
                   " C.TRADE_NAME_PY"_s,
                   filter.product) +
           AndLike(u"A.ORD_CODE"_s, filter.orderCode) + AndDates(u"A.CREATE_DATE"_s, filter, 1) +
           AndOrg(filter.org);
}

} // namespace Qel
