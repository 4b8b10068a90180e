#include "demo/Orders.h"

#include "demo/DemoFiles.h"
#include "demo/History.h"
#include "demo/Random.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr qsizetype Orders = 20'000;
constexpr qsizetype RolledBackEvery = 500; ///< one order of so many more was taken back whole
constexpr qsizetype AllOrders = Orders + Orders / RolledBackEvery;
constexpr qsizetype LineRolledBackEvery = 150; ///< of one order of so many one more line was
constexpr OfficeTime RollBackAfter = OfficeDay / 4;

/// The lines of the orders one after the other come in shuffled hands of these.
constexpr std::array<int, 5> LinesOfOrder{1, 2, 3, 4, 5};

constexpr int NotAcceptedPercent = 4;
constexpr int RemarkPercent = 12;
constexpr int QuantityUnit = 10;
constexpr int MostUnits = 30;

class Maker
{
public:
    Maker(const std::vector<Quotation> &quotations, const Clerks &clerks, OfficeTime end,
          History &history)
        : clerks_(clerks)
        , begin_(end - TradeTime)
        , history_(history)
    {
        for (const Quotation &quotation : quotations) {
            if (std::any_of(quotation.buyers.begin(), quotation.buyers.end(),
                            [](const BuyerPrice &price) { return price.type != nullptr; }))
                quotations_.push_back(&quotation);
        }
    }

    std::vector<Order> Make()
    {
        std::vector<Order> orders;
        orders.reserve(AllOrders);
        qsizetype live = 0;
        for (qsizetype number = 0; number < AllOrders; ++number) {
            const bool rolledBack = number % (RolledBackEvery + 1) == RolledBackEvery / 2;
            const auto inHand = static_cast<std::size_t>(live % LinesOfOrder.size());
            if (inHand == 0)
                random_.Shuffle(hand_);
            Order order = Draw(number);
            AddLines(order, rolledBack ? LinesOfOrder.back() : hand_[inHand]);
            if (rolledBack)
                RollBack(order);
            else if (++live % LineRolledBackEvery == 0)
                AddRolledBackLine(order);
            orders.push_back(std::move(order));
        }
        return orders;
    }

private:
    Order Draw(qsizetype number)
    {
        constexpr OfficeTime step = TradeTime / AllOrders;
        Order order;
        order.id = MakeId(IdSeries::Order, number);
        order.code = u"DD"_s + Padded(number + 1, 8);
        order.quotation = random_.Pick(quotations_);
        do
            price_ = &random_.Pick(order.quotation->buyers);
        while (!price_->type);
        order.buyer = price_->buyer;
        order.sender = random_.Pick(order.quotation->senders);
        order.time = begin_ + number * step + random_.Below(step);
        order.accepted = !random_.Chance(NotAcceptedPercent);
        if (random_.Chance(RemarkPercent))
            order.remark = random_.Pick(words_[u"订单备注"_s]);
        order.last = clerks_.Of(*order.buyer, order.time);
        return order;
    }

    void AddLines(Order &order, int count)
    {
        while (static_cast<int>(order.lines.size()) < count)
            AddLine(order);
    }

    /// A product that is not in the order yet.
    void AddLine(Order &order)
    {
        const QuotedProduct *product = nullptr;
        do
            product = &random_.Pick(order.quotation->products);
        while (!product->orderable || product->state == State::Deleted ||
               std::any_of(order.lines.begin(), order.lines.end(),
                           [&](const OrderLine &line) { return line.product == product; }));
        order.lines.push_back(
            {MakeId(IdSeries::OrderLine, lines_++), product, product->fen[price_->type->slot],
             random_.Between(1, MostUnits) * QuantityUnit, false, order.last, State::Live});
    }

    void RollBack(Order &order)
    {
        for (OrderLine &line : order.lines)
            RollBack(order, line);
        order.last = NoteRollBack(order, {u"TRA_ORDER"_s, order.id, {}}, Change::LogicalDelete);
        order.state = State::Deleted;
    }

    void RollBack(const Order &order, OrderLine &line)
    {
        line.last = NoteRollBack(order, {u"TRA_ORDER_ITEM"_s, line.id, {}}, Change::LogicalDelete);
        line.state = State::Deleted;
    }

    /// Only an order that has room for it: five products are sure to be quoted.
    void AddRolledBackLine(Order &order)
    {
        if (order.lines.size() == OrderableProducts)
            return;
        AddLine(order);
        RollBack(order, order.lines.back());
        order.last = NoteRollBack(order, {u"TRA_ORDER"_s, order.id, {}}, Change::Modify);
    }

    Stamp NoteRollBack(const Order &order, const Record &record, Change change)
    {
        return history_.Note(record, order.quotation->group->id, order.time + RollBackAfter,
                             {change});
    }

    const Clerks &clerks_;
    OfficeTime begin_;
    History &history_;
    WordLists words_;
    Random random_{u"TRA_ORDER"};
    std::vector<const Quotation *> quotations_;
    std::array<int, LinesOfOrder.size()> hand_ = LinesOfOrder;
    const BuyerPrice *price_ = nullptr; ///< of the order at hand
    qsizetype lines_ = 0;
};

/// Number and money of the lines that count.
struct Totals
{
    int count = 0;
    qint64 fen = 0;
};

Totals TotalsOf(const Order &order)
{
    Totals totals;
    for (const OrderLine &line : order.lines) {
        // An order that was rolled back keeps its sums.
        if (line.state == State::Live || order.state == State::Deleted) {
            ++totals.count;
            totals.fen += qint64{line.fen} * line.quantity;
        }
    }
    return totals;
}

} // namespace

Clerks::Clerks(const std::vector<User> &users)
    : operator_{users.front().id, users.front().name}
{
    for (const User &user : users) {
        if (user.enabled && user.state == State::Live && !clerks_.contains(user.organisation))
            clerks_.insert(user.organisation, {user.id, user.name});
    }
}

Stamp Clerks::Of(const Organisation &organisation, OfficeTime time) const
{
    Stamp stamp = clerks_.value(&organisation, operator_);
    stamp.time = time;
    return stamp;
}

std::vector<Order> MakeOrders(const std::vector<Quotation> &quotations, const Clerks &clerks,
                              OfficeTime end, History &history)
{
    return Maker(quotations, clerks, end, history).Make();
}

std::vector<TableRows> OrderRows(const std::vector<Order> &orders)
{
    const QString ordinary = u"1"_s;
    TableRows rows(u"TRA_ORDER"_s,
                   {u"ORD_ID"_s, u"ORD_CODE"_s, u"ORD_DATE"_s, u"ORD_TYPE"_s, u"ORD_STATE"_s,
                    u"ORD_REMARK"_s, u"BUY_ORGID"_s, u"SALE_ORGID"_s, u"SEND_ORGID"_s,
                    u"ITEM_COUNT"_s, u"ITEM_MONEY"_s});
    TableRows lines(u"TRA_ORDER_ITEM"_s, {u"ORD_ITEM_ID"_s, u"ORD_ID"_s, u"PRODUCT_ID"_s,
                                          u"HIT_PRICE"_s, u"ORD_QTY"_s, u"STATE"_s});
    for (const Order &order : orders) {
        const Totals totals = TotalsOf(order);
        rows.Add({order.id, order.code, OfficeTimeText(order.time), ordinary,
                  FlagText(order.accepted), order.remark, order.buyer->id,
                  order.quotation->seller->id, order.sender->id, QString::number(totals.count),
                  Yuan(totals.fen)},
                 order.last, order.state);
        for (const OrderLine &line : order.lines)
            lines.Add({line.id, order.id, line.product->productId, Yuan(line.fen),
                       QString::number(line.quantity), FlagText(line.delivered)},
                      line.last, line.state);
    }
    std::vector<TableRows> tables;
    tables.push_back(std::move(rows));
    tables.push_back(std::move(lines));
    return tables;
}

} // namespace Qel::Demo
