#pragma once

#include "demo/Quotations.h"
#include "demo/Users.h"

namespace Qel::Demo {

/// Two years of office hours, in which the sample database's orders are given.
inline constexpr OfficeTime TradeTime = OfficeTime{2 * 261} * OfficeDay;

/// Who stores what for an organisation: its first user, or the operator of the sample database.
class Clerks
{
public:
    explicit Clerks(const std::vector<User> &users);

    Stamp Of(const Organisation &organisation, OfficeTime time) const;

private:
    QHash<const Organisation *, Stamp> clerks_; ///< without a time
    Stamp operator_;
};

struct OrderLine
{
    QString id;
    const QuotedProduct *product = nullptr;
    int fen = 0; ///< for one unit of sale, 1/100 yuan
    int quantity = 0;
    bool delivered = false;
    Stamp last;
    State state = State::Live;
};

struct Order
{
    QString id;
    QString code;
    const Quotation *quotation = nullptr;
    const Organisation *buyer = nullptr;
    const Organisation *sender = nullptr;
    OfficeTime time = 0;
    bool accepted = true; ///< by the seller
    QString remark;
    std::vector<OrderLine> lines;
    Stamp last;
    State state = State::Live;
};

/// 20,000 orders with 60,000 lines in the two years before `end`, in the order of time, and a few
/// orders and lines more that were rolled back. They belong to the quotations.
std::vector<Order> MakeOrders(const std::vector<Quotation> &quotations, const Clerks &clerks,
                              OfficeTime end, History &history);

/// TRA_ORDER and TRA_ORDER_ITEM.
std::vector<TableRows> OrderRows(const std::vector<Order> &orders);

} // namespace Qel::Demo
