#pragma once

#include "demo/Orders.h"

namespace Qel::Demo {

/// TRA_SEND and TRA_RETURN: what was delivered of the orders until `end`, accepted, invoiced and
/// returned, all of it later than what it is about. A line that has a delivery on the way becomes
/// delivered.
std::vector<TableRows> DeliveryRows(std::vector<Order> &orders, const Clerks &clerks,
                                    OfficeTime end, History &history);

} // namespace Qel::Demo
