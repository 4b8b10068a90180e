#include "managers/BusDataRollBack.h"

#include "managers/Records.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QString OrderKey = u"ORD_ID"_s;
const QString LineKey = u"ORD_ITEM_ID"_s;
const QString DeliveryKey = u"SEND_ID"_s;
const QString ReturnKey = u"RETURN_ID"_s;
const QString Yes = u"1"_s;
const QString No = u"0"_s;
const QString NoLines = u"0"_s;

const RecordTable &Orders()
{
    static const RecordTable table(u"TRA_ORDER"_s, {OrderKey}, {u"ITEM_COUNT"_s, u"ITEM_MONEY"_s});
    return table;
}

const RecordTable &Lines()
{
    static const RecordTable table(u"TRA_ORDER_ITEM"_s, {LineKey}, {OrderKey});
    return table;
}

const RecordTable &Deliveries()
{
    static const RecordTable table(u"TRA_SEND"_s, {DeliveryKey}, {u"RECEIVE_FLAG"_s});
    return table;
}

const RecordTable &Returns()
{
    static const RecordTable table(u"TRA_RETURN"_s, {ReturnKey}, {});
    return table;
}

/// A delivery that is entered counts, sent or not: it names the line.
bool IsDelivered(Store::Connection &connection, const QString &lineId)
{
    return connection.Exists("SELECT 1 FROM TRA_ORDER_ITEM WHERE ORD_ITEM_ID = ?1 AND STATE = '1'"
                             " UNION ALL SELECT 1 FROM TRA_SEND WHERE ORD_ITEM_ID = ?1"
                             " AND LAST_OPERATE <> 'D'",
                             {lineId});
}

QStringList LiveLines(Store::Connection &connection, const QString &orderId)
{
    const auto statement = connection.Prepare("SELECT ORD_ITEM_ID FROM TRA_ORDER_ITEM"
                                              " WHERE ORD_ID = ?1 AND LAST_OPERATE <> 'D'"
                                              " ORDER BY ORD_ITEM_ID");
    statement->Bind(1, orderId);
    QStringList lines;
    while (statement->Step())
        lines += statement->ColumnText(0);
    return lines;
}

/// Number and money of the lines left; an order without lines goes, too. The sum keeps what prices
/// below a cent add up to: what is rounded away is the noise of binary fractions
/// (which PostgreSQL rounds as decimal numbers only).
void SettleOrder(PostContext &post, const QString &orderId)
{
    const auto totals = post.connection.QueryRow(
        "SELECT COUNT(*), COALESCE(CAST(ROUND(CAST(SUM(HIT_PRICE * ORD_QTY) AS NUMERIC), 6)"
        " AS DOUBLE PRECISION), 0) FROM TRA_ORDER_ITEM"
        " WHERE ORD_ID = ?1 AND LAST_OPERATE <> 'D'",
        {orderId});
    if (totals->value(0) == NoLines)
        Orders().Delete(post, {orderId});
    else
        Orders().Put(post, Orders().Find(post.connection, {orderId}), {orderId}, *totals);
}

/// Takes back a line of an order, or with ALL_FLAG "1" the whole order that the line is of. "-1":
/// the line, or one of the order's, is delivered; "0": the line or its order is gone.
Wire::ResultRow RollBackOrder(PostContext &post, const PostedRow &row)
{
    const QString lineId = row[LineKey];
    const Record line = Lines().Find(post.connection, {lineId});
    const QString orderId = line.values.value(0);
    if (line.state != RowState::Live ||
        Orders().Find(post.connection, {orderId}).state != RowState::Live)
        return {Failed, {}};

    const bool isWhole = row[u"ALL_FLAG"_s] == Yes;
    for (const QString &one : isWhole ? LiveLines(post.connection, orderId) : QStringList{lineId}) {
        if (IsDelivered(post.connection, one))
            return {FirstRefusal, {}};
        Lines().Delete(post, {one});
    }
    SettleOrder(post, orderId);
    return {Stored, {}};
}

/// Takes back a buyer's return, which the delivery then knows nothing of. "-1": the seller has
/// invoiced it; "-2": the seller has confirmed it; "0": it is gone.
Wire::ResultRow RollBackReturn(PostContext &post, const PostedRow &row)
{
    const QString id = row[ReturnKey];
    const auto state = post.connection.QueryRow("SELECT INVOICE_FLAG, CONFIRM_FLAG FROM TRA_RETURN"
                                                " WHERE RETURN_ID = ?1 AND LAST_OPERATE <> 'D'",
                                                {id});
    if (!state)
        return {Failed, {}};
    if (state->value(0) == Yes)
        return {FirstRefusal, {}};
    if (state->value(1) == Yes)
        return {SecondRefusal, {}};
    Returns().Delete(post, {id});
    return {Stored, {}};
}

bool HasReturns(Store::Connection &connection, const QString &deliveryId)
{
    return connection.Exists("SELECT 1 FROM TRA_RETURN WHERE SEND_ID = ?1 AND LAST_OPERATE <> 'D'",
                             {deliveryId});
}

/// Takes back the buyer's acceptance of a delivery, which then waits for it again. "-1": the buyer
/// has accepted the invoice; "0": the delivery is gone or not accepted, or goods of it were
/// returned.
Wire::ResultRow RollBackReceipt(PostContext &post, const PostedRow &row)
{
    const QString id = row[DeliveryKey];
    const auto invoiced =
        post.connection.QueryText("SELECT INVOICE_FLAG FROM TRA_SEND WHERE SEND_ID = ?1"
                                  " AND SEND_FLAG = '1' AND RECEIVE_FLAG = '1'"
                                  " AND LAST_OPERATE <> 'D'",
                                  {id});
    if (!invoiced)
        return {Failed, {}};
    if (*invoiced == Yes)
        return {FirstRefusal, {}};
    if (HasReturns(post.connection, id))
        return {Failed, {}};
    Deliveries().Put(post, Deliveries().Find(post.connection, {id}), {id}, {No});
    return {Stored, {}};
}

} // namespace

QList<Method> BusDataRollBackMethods()
{
    const auto method = [](const QString &name, const QString &table, const QString &key,
                           MethodFunction run, const QStringList &flags = {}) {
        return Method{.manager = u"com.business.rollback.BusDataRollBack"_s,
                      .name = name,
                      .table = table,
                      .parameters = {key},
                      .key = {key},
                      .run = run,
                      .flags = flags};
    };
    return {
        method(u"DataRollBack"_s, u"TRA_ORDER_ITEM"_s, LineKey, RollBackOrder, {u"ALL_FLAG"_s}),
        method(u"ReturnRollBack"_s, u"TRA_RETURN"_s, ReturnKey, RollBackReturn),
        method(u"ReceiveRollBack"_s, u"TRA_SEND"_s, DeliveryKey, RollBackReceipt),
    };
}

} // namespace Qel::Managers
