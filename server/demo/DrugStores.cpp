#include "demo/DrugStores.h"

#include "demo/DemoFiles.h"
#include "demo/Random.h"

#include <QHash>

#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr std::size_t Stores = 1'500;
constexpr std::size_t UsersOfAStore = 4;  ///< so many, 6,000 in all
constexpr std::size_t UsersOfAnOwner = 5; ///< one more than a store needs: somebody is left over
constexpr std::size_t WithoutEvery = 5;   ///< one organisation of so many keeps no store
constexpr std::size_t DeletedEvery = 50;  ///< of one owner of so many a store was deleted
constexpr std::size_t DisabledEvery = 37; ///< one keeper of so many is disabled, though assigned
constexpr int LinkedPercent = 60;         ///< the product link is on
constexpr int NothingStoredPercent = 10;  ///< nothing is stored of it
constexpr OfficeTime FirstStore = 95 * OfficeDay;
constexpr PagePace Pace{3, 900}; ///< the stores of an organisation, and what they take

constexpr std::array HospitalStores{u"西药库",   u"中成药库",   u"中药饮片库", u"急诊药库",
                                    u"住院药库", u"静脉配置库", u"特殊药品库"};
constexpr std::array PharmacyStores{u"总库",       u"冷藏库",     u"中药饮片库", u"处方药库",
                                    u"非处方药库", u"门店周转库", u"特殊药品库"};
constexpr std::size_t MostStores = HospitalStores.size();

/// Hospitals and pharmacies in use, but for the one of so many that keeps no store.
std::vector<const Organisation *> OwnersOf(const std::vector<Organisation> &organisations)
{
    std::vector<const Organisation *> owners;
    std::size_t number = 0;
    for (const Organisation &organisation : organisations) {
        const bool buys =
            organisation.type == OrgType::Hospital || organisation.type == OrgType::Pharmacy;
        if (buys && organisation.InUse() && number++ % WithoutEvery != WithoutEvery - 1)
            owners.push_back(&organisation);
    }
    return owners;
}

QString StoreName(const Organisation &owner, std::size_t number)
{
    const auto &names = owner.type == OrgType::Hospital ? HospitalStores : PharmacyStores;
    return QString::fromUtf16(names[number]);
}

QHash<QString, std::vector<const User *>> UsersByOrganisation(const std::vector<User> &users)
{
    QHash<QString, std::vector<const User *>> byOrganisation;
    for (const User &user : users) {
        if (user.state == State::Live)
            byOrganisation[user.organisation->id].push_back(&user);
    }
    return byOrganisation;
}

class Maker
{
public:
    explicit Maker(const std::vector<User> &users)
        : usersOf_(UsersByOrganisation(users))
    {
        for (const User &user : users) {
            if (user.organisation->type == OrgType::Operator && user.enabled &&
                user.state == State::Live)
                operators_.push_back(&user);
        }
    }

    std::vector<TableRows> Make(const std::vector<const Organisation *> &owners)
    {
        std::size_t left = Stores;
        for (std::size_t number = 0; number < owners.size(); ++number) {
            const std::size_t count = left / (owners.size() - number);
            const bool deletedOne = number % DeletedEvery == DeletedEvery - 1 && count < MostStores;
            for (std::size_t store = 0; store < count + (deletedOne ? 1 : 0); ++store)
                AddStore(*owners[number], store, store < count ? State::Live : State::Deleted);
            left -= count;
        }
        return {std::move(stores_), std::move(assignments_)};
    }

private:
    void AddStore(const Organisation &owner, std::size_t number, State state)
    {
        const QString id = MakeId(IdSeries::DrugStore, stores_.Count());
        const User &by =
            *operators_[static_cast<std::size_t>(stores_.Count()) / MostStores % operators_.size()];
        const Stamp last{by.id, by.name, FirstStore + Pace.After(stores_.Count())};
        stores_.Add({id, StoreName(owner, number), owner.id}, last, state);
        const std::vector<const User *> &users = usersOf_[owner.id];
        for (std::size_t place = 0; place < UsersOfAStore; ++place) {
            const User &user = *users[(place + number) % users.size()];
            assignments_.Add({id, user.id, owner.id, RelationFlag()}, last, state);
        }
    }

    QString RelationFlag()
    {
        const int percent = random_.Below(100);
        if (percent < NothingStoredPercent)
            return {};
        return FlagText(percent < NothingStoredPercent + LinkedPercent);
    }

    QHash<QString, std::vector<const User *>> usersOf_; ///< live, by organisation
    std::vector<const User *> operators_;
    TableRows stores_{u"TRA_BUY_CATALOG"_s, {u"CATALOG_ID"_s, u"CATALOG_NAME"_s, u"BUY_ORGID"_s}};
    TableRows assignments_{u"TRA_USER_BUY_CATALOG"_s,
                           {u"CATALOG_ID"_s, u"USER_ID"_s, u"BUY_ORGID"_s, u"RELATION_FLAG"_s}};
    Random random_{u"TRA_USER_BUY_CATALOG"};
};

} // namespace

std::vector<User> MakeStoreKeepers(const std::vector<Organisation> &organisations,
                                   const std::vector<User> &users, const Initials &initials)
{
    const WordLists words;
    Random random(u"DRUG STORE KEEPERS");
    const QHash<QString, std::vector<const User *>> present = UsersByOrganisation(users);
    std::vector<User> keepers;
    for (const Organisation *owner : OwnersOf(organisations)) {
        for (std::size_t count = present[owner->id].size(); count < UsersOfAnOwner; ++count) {
            const auto number = static_cast<qsizetype>(users.size() + keepers.size());
            User keeper;
            keeper.id = MakeId(IdSeries::User, number);
            const QString &given = random.Pick(words[u"名"_s]);
            keeper.name = random.Pick(words[u"姓"_s]) + given;
            keeper.code = initials.Pinyin(keeper.name).toLower() + Padded(number, 4);
            keeper.remark = u"药库管理员"_s;
            keeper.organisation = owner;
            keeper.enabled = keepers.size() % DisabledEvery != DisabledEvery - 1;
            keepers.push_back(std::move(keeper));
        }
    }
    return keepers;
}

std::vector<TableRows> DrugStoreRows(const std::vector<Organisation> &organisations,
                                     const std::vector<User> &users)
{
    return Maker(users).Make(OwnersOf(organisations));
}

} // namespace Qel::Demo
