#include "demo/Deliveries.h"

#include "demo/DemoFiles.h"
#include "demo/History.h"
#include "demo/Random.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr OfficeTime Hour = 60 * 60;

/// From one moment to the next.
struct Wait
{
    OfficeTime least;
    OfficeTime most;
};

constexpr Wait ToEnter{OfficeDay / 2, 3 * OfficeDay};     ///< from the order
constexpr Wait ToEnterRest{3 * OfficeDay, 8 * OfficeDay}; ///< from the first part
constexpr Wait ToSend{Hour / 2, 5 * Hour};                ///< from the entry
constexpr Wait ToReceive{Hour, 2 * OfficeDay};            ///< from the sending
constexpr Wait ToInvoice{OfficeDay, 8 * OfficeDay};       ///< from the acceptance
constexpr Wait ToAccept{2 * OfficeDay, 15 * OfficeDay};   ///< from the invoice
constexpr Wait ToReturn{Hour, 12 * OfficeDay};            ///< from the acceptance
constexpr Wait ToRespond{OfficeDay / 2, 6 * OfficeDay};   ///< from the return
constexpr Wait ToInvoiceReturn{Hour, 3 * OfficeDay};      ///< from the response, or the return
constexpr OfficeTime RollBackAfter = 2 * Hour;

// Of a hundred each.
constexpr int NothingDelivered = 5;     ///< orders
constexpr int LineLeftOut = 4;          ///< lines of the others
constexpr int InTwoParts = 12;          ///< lines
constexpr int RestComes = 85;           ///< of those
constexpr int NeverSent = 1;            ///< deliveries that are entered
constexpr int NeverReceived = 2;        ///< deliveries that are sent
constexpr int ReceivedShort = 3;        ///< deliveries that are received
constexpr int InvoicedAtOnce = 12;      ///< with the goods, accepted with them
constexpr int Invoiced = 85;            ///< of the others
constexpr int InvoiceAccepted = 85;     ///< of those
constexpr int Returned = 6;             ///< deliveries that are received
constexpr int Answered = 88;            ///< returns
constexpr int Confirmed = 75;           ///< of those; the others are refused
constexpr int ConfirmedInvoiced = 60;   ///< of the confirmed
constexpr int UnansweredInvoiced = 20;  ///< of those without a response
constexpr int UnansweredTakenBack = 10; ///< of the rest
constexpr int ReceiptTakenBackEvery = 400;

constexpr int PartsOfQuantity = 10; ///< quantities are ordered in tens
constexpr int MostBroken = 3;
constexpr int ReturnedPart = 5; ///< a fifth of what was accepted, at most
constexpr int LeastMonths = 12; ///< that a lot keeps
constexpr int MostMonths = 30;

const QString OrdinaryDeal = u"1"_s;

struct Delivery
{
    const Order *order = nullptr;
    const OrderLine *line = nullptr;
    OfficeTime time = 0; ///< when it was entered
    int quantity = 0;
    int accepted = 0; ///< quantity; 0 before it is received
    bool sent = false;
    bool received = false;
    OfficeTime invoiceTime = 0; ///< 0 without an invoice
    bool invoiceAccepted = false;
    QString lot;
    QString insureDate;
    Stamp last;
};

/// Values of CONFIRM_FLAG.
enum class Response { None, Agreed, Refused };

struct Return
{
    std::size_t delivery = 0; ///< among those made
    OfficeTime time = 0;
    int quantity = 0;
    Response response = Response::None;
    QString remark;
    bool invoiced = false;
    Stamp last;
    State state = State::Live;
};

/// Positions in the order of time.
template <typename Item>
std::vector<std::size_t> ByTime(const std::vector<Item> &items)
{
    std::vector<std::size_t> order(items.size());
    for (std::size_t at = 0; at < order.size(); ++at)
        order[at] = at;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return items[left].time < items[right].time;
    });
    return order;
}

class Maker
{
public:
    Maker(const Clerks &clerks, OfficeTime end, History &history)
        : clerks_(clerks)
        , end_(end)
        , history_(history)
    {
    }

    void Add(Order &order)
    {
        if (order.state == State::Deleted || !order.accepted || random_.Chance(NothingDelivered))
            return;
        for (OrderLine &line : order.lines) {
            if (line.state == State::Live && !random_.Chance(LineLeftOut))
                Deliver(order, line);
        }
    }

    std::vector<TableRows> Tables()
    {
        const std::vector<std::size_t> order = ByTime(deliveries_);
        ids_.resize(deliveries_.size());
        for (std::size_t number = 0; number < order.size(); ++number)
            ids_[order[number]] = MakeId(IdSeries::Delivery, static_cast<qsizetype>(number));
        std::vector<TableRows> tables;
        tables.push_back(Deliveries(order));
        tables.push_back(Returns());
        return tables;
    }

private:
    OfficeTime After(OfficeTime time, const Wait &wait)
    {
        return time + wait.least + random_.Below(wait.most - wait.least);
    }

    void Deliver(const Order &order, OrderLine &line)
    {
        const bool split = random_.Chance(InTwoParts);
        const int first =
            split ? line.quantity / PartsOfQuantity * random_.Between(3, 7) : line.quantity;
        const OfficeTime entered = After(order.time, ToEnter);
        AddDelivery(order, line, entered, first);
        const OfficeTime rest = After(entered, ToEnterRest);
        if (split && random_.Chance(RestComes))
            AddDelivery(order, line, rest, line.quantity - first);
    }

    void AddDelivery(const Order &order, OrderLine &line, OfficeTime time, int quantity)
    {
        Delivery delivery;
        delivery.order = &order;
        delivery.line = &line;
        delivery.time = time;
        delivery.quantity = quantity;
        const QChar series(u'A' + random_.Below(6));
        delivery.lot = QString::number(random_.Between(100'000, 999'999)) + series;
        delivery.insureDate = OfficeDate(time)
                                  .addMonths(random_.Between(LeastMonths, MostMonths))
                                  .toString(u"yyyy-MM-dd 00:00:00"_s);
        delivery.last = clerks_.Of(*order.sender, time);
        if (time >= end_)
            return;

        const OfficeTime sent = After(time, ToSend);
        const OfficeTime received = After(sent, ToReceive);
        if (sent < end_ && !random_.Chance(NeverSent)) {
            delivery.sent = line.delivered = true;
            delivery.last = line.last = clerks_.Of(*order.sender, sent);
            if (received < end_ && !random_.Chance(NeverReceived))
                Receive(delivery, received);
        }
        deliveries_.push_back(std::move(delivery));
    }

    void Receive(Delivery &delivery, OfficeTime time)
    {
        delivery.received = true;
        delivery.accepted = delivery.quantity -
                            (random_.Chance(ReceivedShort) ? random_.Between(1, MostBroken) : 0);
        delivery.last = clerks_.Of(*delivery.order->buyer, time);
        Invoice(delivery, time);
        if (random_.Chance(Returned)) {
            ReturnGoods(delivery, time);
        } else if (!delivery.invoiceAccepted && random_.Below(ReceiptTakenBackEvery) == 0) {
            delivery.received = false;
            takenBack_.push_back(deliveries_.size());
        }
    }

    void Invoice(Delivery &delivery, OfficeTime received)
    {
        if (random_.Chance(InvoicedAtOnce)) {
            delivery.invoiceTime = delivery.time;
            delivery.invoiceAccepted = true;
            return;
        }
        const OfficeTime invoiced = After(received, ToInvoice);
        if (!random_.Chance(Invoiced) || invoiced >= end_)
            return;
        delivery.invoiceTime = invoiced;
        delivery.last = clerks_.Of(*delivery.order->sender, invoiced);
        const OfficeTime accepted = After(invoiced, ToAccept);
        if (!random_.Chance(InvoiceAccepted) || accepted >= end_)
            return;
        delivery.invoiceAccepted = true;
        delivery.last = clerks_.Of(*delivery.order->buyer, accepted);
    }

    void ReturnGoods(const Delivery &delivery, OfficeTime received)
    {
        const Order &order = *delivery.order;
        Return made;
        made.delivery = deliveries_.size();
        made.time = After(received, ToReturn);
        if (made.time >= end_)
            return;
        made.quantity = random_.Between(1, std::max(1, delivery.accepted / ReturnedPart));
        made.last = clerks_.Of(*order.buyer, made.time);
        const OfficeTime answered = After(made.time, ToRespond);
        if (random_.Chance(Answered) && answered < end_)
            Answer(made, order, answered);
        else if (random_.Chance(UnansweredInvoiced))
            InvoiceReturn(made, order, made.time);
        else if (random_.Chance(UnansweredTakenBack) && made.time + RollBackAfter < end_)
            made.state = State::Deleted;
        returns_.push_back(std::move(made));
    }

    void Answer(Return &made, const Order &order, OfficeTime time)
    {
        const bool confirmed = random_.Chance(Confirmed);
        made.response = confirmed ? Response::Agreed : Response::Refused;
        made.remark = random_.Pick(words_[confirmed ? u"退货确认"_s : u"退货拒绝"_s]);
        made.last = clerks_.Of(*order.sender, time);
        if (confirmed && random_.Chance(ConfirmedInvoiced))
            InvoiceReturn(made, order, time);
    }

    void InvoiceReturn(Return &made, const Order &order, OfficeTime after)
    {
        const OfficeTime time = After(after, ToInvoiceReturn);
        made.invoiced = time < end_;
        if (made.invoiced)
            made.last = clerks_.Of(*order.sender, time);
    }

    TableRows Deliveries(const std::vector<std::size_t> &order)
    {
        for (const std::size_t at : takenBack_) {
            Delivery &delivery = deliveries_[at];
            delivery.last = history_.Note(
                {u"TRA_SEND"_s, ids_[at], {}}, delivery.order->quotation->group->id,
                std::min(delivery.last.time + RollBackAfter, end_ - 1), {Change::Modify});
        }
        TableRows rows(u"TRA_SEND"_s,
                       {u"SEND_ID"_s,      u"ORD_ITEM_ID"_s,  u"ORD_CODE"_s,     u"ORD_DATE"_s,
                        u"PRODUCT_ID"_s,   u"WRAP_NAME"_s,    u"BUY_ORGID"_s,    u"SALE_ORGID"_s,
                        u"HIT_TYPE"_s,     u"HIT_PRICE"_s,    u"ORD_QTY"_s,      u"SEND_QTY"_s,
                        u"RECEIVE_QTY"_s,  u"LOT_NO"_s,       u"INSURE_DATE"_s,  u"SELL_CODE"_s,
                        u"INVOICE_CODE"_s, u"INVOICE_DATE"_s, u"INVOICE_FLAG"_s, u"SEND_FLAG"_s,
                        u"RECEIVE_FLAG"_s, u"CREATE_DATE"_s});
        for (const std::size_t at : order)
            AddRow(rows, deliveries_[at], ids_[at]);
        return rows;
    }

    static void AddRow(TableRows &rows, const Delivery &delivery, const QString &id)
    {
        const Order &order = *delivery.order;
        const OrderLine &line = *delivery.line;
        const bool invoiced = delivery.invoiceTime != 0;
        const qsizetype number = rows.Count() + 1;
        rows.Add({id,
                  line.id,
                  order.code,
                  OfficeTimeText(order.time),
                  line.product->productId,
                  line.product->wrapName,
                  order.buyer->id,
                  order.quotation->seller->id,
                  OrdinaryDeal,
                  Yuan(line.fen),
                  QString::number(line.quantity),
                  QString::number(delivery.quantity),
                  delivery.accepted == 0 ? QString() : QString::number(delivery.accepted),
                  delivery.lot,
                  delivery.insureDate,
                  u"XS"_s + Padded(number, 8),
                  invoiced ? u"FP"_s + Padded(number, 8) : QString(),
                  invoiced ? OfficeTimeText(delivery.invoiceTime) : QString(),
                  FlagText(delivery.invoiceAccepted),
                  FlagText(delivery.sent),
                  FlagText(delivery.received),
                  OfficeTimeText(delivery.time)},
                 delivery.last);
    }

    TableRows Returns()
    {
        TableRows rows(u"TRA_RETURN"_s,
                       {u"RETURN_ID"_s, u"SEND_ID"_s, u"RETURN_QTY"_s, u"CONFIRM_FLAG"_s,
                        u"CONFIRM_REMARK"_s, u"INVOICE_FLAG"_s, u"RETURN_DATE"_s});
        for (const std::size_t at : ByTime(returns_)) {
            const Return &made = returns_[at];
            const QString id = MakeId(IdSeries::Return, rows.Count());
            const QString &group = deliveries_[made.delivery].order->quotation->group->id;
            const Stamp last =
                made.state == State::Live
                    ? made.last
                    : history_.Note({rows.Table(), id, {}}, group, made.time + RollBackAfter,
                                    {Change::LogicalDelete});
            rows.Add({id, ids_[made.delivery], QString::number(made.quantity),
                      QString::number(static_cast<int>(made.response)), made.remark,
                      FlagText(made.invoiced), OfficeTimeText(made.time)},
                     last, made.state);
        }
        return rows;
    }

    const Clerks &clerks_;
    OfficeTime end_;
    History &history_;
    WordLists words_;
    Random random_{u"TRA_SEND"};
    std::vector<Delivery> deliveries_;
    std::vector<std::size_t> takenBack_; ///< deliveries whose acceptance was rolled back
    std::vector<Return> returns_;
    std::vector<QString> ids_; ///< of the deliveries
};

} // namespace

std::vector<TableRows> DeliveryRows(std::vector<Order> &orders, const Clerks &clerks,
                                    OfficeTime end, History &history)
{
    Maker maker(clerks, end, history);
    for (Order &order : orders)
        maker.Add(order);
    return maker.Tables();
}

} // namespace Qel::Demo
