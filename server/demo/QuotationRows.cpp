#include "demo/Quotations.h"

#include "demo/History.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

// A seller's work on its prices begins half a day after the one's before it.
constexpr OfficeTime SellerTakes = OfficeDay / 2;
constexpr OfficeTime TypesTake = 10 * 60;      ///< seconds, before the first page of prices
constexpr PagePace PricePace{50, 12 * 60};     ///< a page of products
constexpr OfficeTime PricesTake = 3 * 60 * 60; ///< at most, before the buyers get theirs
constexpr int ChangedEvery = 6;                ///< one price row of so many was changed later

QStringList PriceColumns()
{
    QStringList columns{u"PRICE_ID"_s,   u"UNION_ID"_s,   u"SALE_ORGID"_s,
                        u"SEND_ORGID"_s, u"PRODUCT_ID"_s, u"COST_PRICE"_s};
    for (std::size_t slot = 1; slot <= PriceSlots; ++slot)
        columns += u"PRICE_"_s + Padded(static_cast<qsizetype>(slot), 2);
    return columns;
}

/// The rows of all quotations, table by table.
class Sheets
{
public:
    explicit Sheets(History &history)
        : history_(history)
    {
    }

    void Add(const Quotation &quotation, OfficeTime begin)
    {
        AddTypes(quotation, begin);
        AddProducts(quotation, begin + TypesTake);
        AddBuyers(quotation, begin + TypesTake + PricesTake);
    }

    std::vector<TableRows> Tables()
    {
        std::vector<TableRows> tables;
        tables.push_back(std::move(types_));
        tables.push_back(std::move(prices_));
        tables.push_back(std::move(buyers_));
        return tables;
    }

private:
    static QString Price(int fen) { return fen == 0 ? QString() : Yuan(fen); }

    void AddTypes(const Quotation &quotation, OfficeTime begin)
    {
        const QString &group = quotation.group->id;
        for (const PriceType &type : quotation.types) {
            const Stamp last =
                history_.Note({types_.Table(), type.id, {}}, group, begin, LifeOf(type.state));
            types_.Add({type.id, group, quotation.seller->id, type.name,
                        Padded(static_cast<qsizetype>(type.slot) + 1, 2),
                        type.enabled ? u"1"_s : u"0"_s},
                       last, type.state);
        }
    }

    void AddProducts(const Quotation &quotation, OfficeTime begin)
    {
        const QString &group = quotation.group->id;
        const QString &seller = quotation.seller->id;
        qsizetype number = 0;
        for (const QuotedProduct &product : quotation.products) {
            const QString id = MakeId(IdSeries::Price, prices_.Count());
            const bool changed =
                product.state == State::Live && number % ChangedEvery == ChangedEvery - 1;
            const Stamp last = history_.Note(
                {prices_.Table(), id, {}}, group, begin + PricePace.After(number++),
                changed ? QList{Change::Insert, Change::Modify} : LifeOf(product.state));
            QStringList row{id, group, seller, seller, product.productId, Price(product.costFen)};
            for (const int fen : product.fen)
                row += Price(fen);
            prices_.Add(row, last, product.state);
        }
    }

    void AddBuyers(const Quotation &quotation, OfficeTime begin)
    {
        const QString &group = quotation.group->id;
        const QString &seller = quotation.seller->id;
        for (const BuyerPrice &price : quotation.buyers) {
            const Stamp last = history_.Note(
                {buyers_.Table(), seller, price.buyer->id}, group, begin,
                price.type ? QList{Change::Insert} : QList{Change::Insert, Change::Modify});
            buyers_.Add({group, seller, price.buyer->id, price.type ? price.type->id : QString()},
                        last);
        }
    }

    History &history_;
    TableRows types_{u"PRC_UNI_PRICE_TYPE"_s,
                     {u"PRICE_TYPE_ID"_s, u"UNION_ID"_s, u"SALE_ORGID"_s, u"PRICE_NAME"_s,
                      u"PRICE_FIELD"_s, u"ENABLE_FLAG"_s}};
    TableRows buyers_{u"PRC_UNI_PRICE_ORG"_s,
                      {u"UNION_ID"_s, u"SALE_ORGID"_s, u"BUY_ORGID"_s, u"PRICE_TYPE_ID"_s}};
    TableRows prices_{u"PRC_UNI_PRICE_PRODUCT"_s, PriceColumns()};
};

} // namespace

std::vector<TableRows> QuotationRows(const std::vector<Quotation> &quotations, History &history)
{
    Sheets sheets(history);
    QHash<const Group *, OfficeTime> sellers; // of the group so far
    for (const Quotation &quotation : quotations)
        sheets.Add(quotation, history.Begin(Phase::Prices, quotation.group->id) +
                                  sellers[quotation.group]++ * SellerTakes);
    return sheets.Tables();
}

} // namespace Qel::Demo
