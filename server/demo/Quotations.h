#pragma once

#include "demo/Memberships.h"

#include <array>

namespace Qel::Demo {

inline constexpr std::size_t PriceSlots = 9;

/// A price that a seller has named for a group.
struct PriceType
{
    QString id;
    std::size_t slot = 0; ///< from 0
    QString name;
    bool enabled = true;
    State state = State::Live;
};

/// A product's prices, in 1/100 yuan.
struct QuotedProduct
{
    QString productId;
    QString wrapName;
    bool orderable = true; ///< enabled, in the group's catalogue too
    int costFen = 0;
    std::array<int, PriceSlots> fen{}; ///< 0 without a price
    State state = State::Live;
};

/// Which of the seller's prices a buyer pays.
struct BuyerPrice
{
    const Organisation *buyer = nullptr;
    const PriceType *type = nullptr; ///< none if it was taken away again; belongs to the quotation
};

/// What a selling member quotes to a group. Not to be copied: the buyers point at the types.
struct Quotation
{
    const Group *group = nullptr;
    const Organisation *seller = nullptr;
    std::vector<const Organisation *> senders; ///< who may deliver; the seller itself if it can
    std::vector<PriceType> types;
    std::vector<QuotedProduct> products; ///< the first few are live and orderable
    std::vector<BuyerPrice> buyers;
};

/// So many products at least of every quotation can be ordered at every one of its prices.
inline constexpr std::size_t OrderableProducts = 5;

/// Several sellers' quotations to every live group. `products` and `catalogue` are the rows of
/// BAS_PRODUCT and UNI_PRODUCT.
std::vector<Quotation> MakeQuotations(const std::vector<Group> &groups, const Members &members,
                                      const TableRows &products, const TableRows &catalogue);

/// PRC_UNI_PRICE_TYPE, PRC_UNI_PRICE_PRODUCT and PRC_UNI_PRICE_ORG.
std::vector<TableRows> QuotationRows(const std::vector<Quotation> &quotations, History &history);

} // namespace Qel::Demo
