#include "demo/Quotations.h"

#include "demo/DemoFiles.h"
#include "demo/Random.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

/// Quoting members of a group by its level; the last of them is a manufacturer if one makes enough
/// of the catalogue.
constexpr std::array<int, 4> SellersOfLevel{5, 4, 3, 3};

/// A province's first seller quotes at all nine prices, to fill the largest pages.
constexpr std::size_t MainProducts = 600;
constexpr int FewestProducts = 60;
constexpr int MostProducts = 120;

constexpr std::size_t FewestTypes = 3;
constexpr std::size_t MostTypes = 7;
constexpr int EnabledPercent = 80;     ///< of the types after the first
constexpr int DeletedTypePercent = 20; ///< of the sellers have given a price up
constexpr int DeletedProductEvery = 80;
constexpr int AssignedPercent = 75; ///< of the buyers
constexpr int WithdrawnEvery = 20;  ///< one assignment of so many

/// What a slot's price is of the retail price.
constexpr std::array<int, PriceSlots> PercentOfSlot{92, 94, 96, 97, 90, 84, 98, 88, 80};
constexpr int PercentSpread = 2;

/// A product of BAS_PRODUCT as far as prices need it.
struct Product
{
    QString wrapName;
    QString makerId;
    int retailFen = 0;
    bool enabled = true;
};

struct CatalogueProduct
{
    QString id;
    const Product *product = nullptr;
    bool orderable = true;
};

class Maker
{
public:
    Maker(const std::vector<Group> &groups, const Members &members, const TableRows &products,
          const TableRows &catalogue)
        : groups_(groups)
        , members_(members)
    {
        ReadProducts(products);
        ReadCatalogue(catalogue);
        for (const MemberType &type : members.types)
            types_.insert(type.id, &type);
    }

    std::vector<Quotation> Make()
    {
        for (const Group &group : groups_) {
            if (group.state == State::Live)
                AddGroup(group);
        }
        return std::move(quotations_);
    }

private:
    void ReadProducts(const TableRows &products)
    {
        const qsizetype wrap = products.Place(u"WRAP_NAME"_s);
        const qsizetype maker = products.Place(u"FACTORY_ID"_s);
        const qsizetype price = products.Place(u"RETAIL_PRICE"_s);
        const qsizetype enabled = products.Place(u"ENABLE_FLAG"_s);
        for (const qsizetype row : products.LiveRows())
            products_.insert(products.Text(row, 0),
                             {products.Text(row, wrap), products.Text(row, maker),
                              qRound(products.Text(row, price).toDouble() * 100),
                              products.Text(row, enabled) == u"1"_s});
    }

    void ReadCatalogue(const TableRows &catalogue)
    {
        const qsizetype product = catalogue.Place(u"PRODUCT_ID"_s);
        const qsizetype enabled = catalogue.Place(u"ENABLE_FLAG"_s);
        for (const qsizetype row : catalogue.LiveRows()) {
            const auto known = products_.constFind(catalogue.Text(row, product));
            catalogues_[catalogue.Text(row, 0)].push_back(
                {known.key(), &*known, known->enabled && catalogue.Text(row, enabled) == u"1"_s});
        }
    }

    /// Live members of the group whose type has the flag at this place.
    std::vector<const Organisation *> MembersWith(const Group &group, qsizetype flag) const
    {
        std::vector<const Organisation *> found;
        for (const Membership &membership : members_.memberships) {
            if (membership.groupId == group.id && membership.state == State::Live &&
                types_[membership.memberTypeId]->flags[flag] == u"1"_s)
                found.push_back(membership.organisation);
        }
        return found;
    }

    void AddGroup(const Group &group)
    {
        enum Flag { Buys, Sells, Delivers };
        std::vector<const Organisation *> sellers = MembersWith(group, Sells);
        const std::vector<const Organisation *> senders = MembersWith(group, Delivers);
        const std::vector<const Organisation *> buyers = MembersWith(group, Buys);
        random_.Shuffle(sellers);
        // Those that trade come first, those that make after them.
        std::stable_partition(sellers.begin(), sellers.end(), [](const Organisation *seller) {
            return seller->type == OrgType::Distributor;
        });
        int left = SellersOfLevel[static_cast<std::size_t>(group.Level() - 1)];
        const auto maker = std::find_if(sellers.rbegin(), sellers.rend(), [&](const auto *seller) {
            return OwnProducts(group, *seller).size() > OrderableProducts;
        });
        if (maker != sellers.rend()) {
            AddQuotation(group, **maker, senders, buyers, OwnProducts(group, **maker), false);
            --left;
        }
        for (int number = 0; number < left; ++number) {
            std::vector<CatalogueProduct> choice = catalogues_[group.id];
            random_.Shuffle(choice);
            const bool main = number == 0 && group.parentId.isEmpty();
            const std::size_t count =
                main ? MainProducts
                     : static_cast<std::size_t>(random_.Between(FewestProducts, MostProducts));
            choice.resize(std::min(choice.size(), count));
            AddQuotation(group, *sellers[static_cast<std::size_t>(number)], senders, buyers,
                         std::move(choice), main);
        }
    }

    /// Nothing unless enough of them can be ordered.
    std::vector<CatalogueProduct> OwnProducts(const Group &group, const Organisation &maker) const
    {
        std::vector<CatalogueProduct> own;
        std::size_t orderable = 0;
        if (maker.type == OrgType::Manufacturer) {
            for (const CatalogueProduct &product : *catalogues_.constFind(group.id)) {
                if (product.product->makerId == maker.id) {
                    own.push_back(product);
                    orderable += product.orderable ? 1 : 0;
                }
            }
        }
        if (orderable < OrderableProducts)
            own.clear();
        return own;
    }

    void AddQuotation(const Group &group, const Organisation &seller,
                      const std::vector<const Organisation *> &senders,
                      const std::vector<const Organisation *> &buyers,
                      std::vector<CatalogueProduct> choice, bool main)
    {
        Quotation quotation{&group, &seller, {}, {}, {}, {}};
        if (seller.type == OrgType::Manufacturer)
            quotation.senders = senders;
        else
            quotation.senders = {&seller};
        AddTypes(quotation, main);
        AddProducts(quotation, std::move(choice));
        AddBuyers(quotation, buyers);
        quotations_.push_back(std::move(quotation));
    }

    void AddTypes(Quotation &quotation, bool main)
    {
        std::array<std::size_t, PriceSlots> shuffled{};
        for (std::size_t slot = 0; slot < PriceSlots; ++slot)
            shuffled[slot] = slot;
        std::size_t count = PriceSlots;
        if (!main) {
            random_.Shuffle(shuffled);
            count = static_cast<std::size_t>(
                random_.Between(static_cast<int>(FewestTypes), static_cast<int>(MostTypes)));
            std::sort(shuffled.begin(), shuffled.begin() + static_cast<std::ptrdiff_t>(count));
        }
        const QStringList &names = words_[u"价格类型"_s];
        const auto add = [&](std::size_t slot, bool enabled, State state) {
            quotation.types.push_back({MakeId(IdSeries::PriceType, typesMade_++), slot,
                                       names[static_cast<qsizetype>(slot)], enabled, state});
        };
        for (std::size_t number = 0; number < count; ++number)
            add(shuffled[number], main || number == 0 || random_.Chance(EnabledPercent),
                State::Live);
        if (!main && random_.Chance(DeletedTypePercent))
            add(shuffled[count], true, State::Deleted);
    }

    void AddProducts(Quotation &quotation, std::vector<CatalogueProduct> choice)
    {
        // So that the first few can be ordered.
        std::stable_partition(choice.begin(), choice.end(),
                              [](const CatalogueProduct &product) { return product.orderable; });
        for (const CatalogueProduct &chosen : choice) {
            const int retail = chosen.product->retailFen;
            QuotedProduct quoted{chosen.id, chosen.product->wrapName, chosen.orderable, retail, {},
                                 {}};
            for (const PriceType &type : quotation.types) {
                const int percent =
                    PercentOfSlot[type.slot] + random_.Between(-PercentSpread, PercentSpread);
                quoted.fen[type.slot] = std::max(1, retail * percent / 100);
            }
            if (quotation.products.size() % DeletedProductEvery == DeletedProductEvery - 1)
                quoted.state = State::Deleted;
            quotation.products.push_back(std::move(quoted));
        }
    }

    void AddBuyers(Quotation &quotation, const std::vector<const Organisation *> &buyers)
    {
        std::vector<const PriceType *> offered;
        for (const PriceType &type : quotation.types) {
            if (type.enabled && type.state == State::Live)
                offered.push_back(&type);
        }
        for (const Organisation *buyer : buyers) {
            if (!random_.Chance(AssignedPercent))
                continue;
            const PriceType *type = random_.Pick(offered);
            quotation.buyers.push_back(
                {buyer, random_.Below(WithdrawnEvery) == 0 ? nullptr : type});
        }
    }

    const std::vector<Group> &groups_;
    const Members &members_;
    WordLists words_;
    Random random_{u"PRC_UNI_PRICE"};
    QHash<QString, const MemberType *> types_;
    QHash<QString, Product> products_;
    QHash<QString, std::vector<CatalogueProduct>> catalogues_; ///< by group
    qsizetype typesMade_ = 0;
    std::vector<Quotation> quotations_;
};

} // namespace

std::vector<Quotation> MakeQuotations(const std::vector<Group> &groups, const Members &members,
                                      const TableRows &products, const TableRows &catalogue)
{
    return Maker(groups, members, products, catalogue).Make();
}

} // namespace Qel::Demo
