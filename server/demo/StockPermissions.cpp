#include "demo/StockPermissions.h"

#include "demo/History.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr std::size_t Permissions = 3000;
constexpr int MostAtFirst = 20;   ///< of an owner, before the rest is dealt out
constexpr int TakenBackEvery = 5; ///< one owner of so many has taken one back
constexpr int ChangedEvery = 9;   ///< of one permission of so many the quantity was hidden later
constexpr int QuantityPercent = 40;
constexpr PagePace Pace{20, 120}; ///< a page of the addition dialog, and what it takes

/// Somebody who could see the stock, and the group that it shares with the owner.
struct Viewer
{
    const Organisation *organisation = nullptr;
    QString groupId;
};

struct Owner
{
    const Organisation *organisation = nullptr;
    std::vector<Viewer> viewers; ///< all there could be, shuffled
    std::size_t open = 0;        ///< to so many of them, from the front
};

bool KeepsStock(const Organisation &organisation)
{
    return organisation.InUse() &&
           (organisation.type == OrgType::Distributor || organisation.type == OrgType::Logistics);
}

class Maker
{
public:
    explicit Maker(const std::vector<Membership> &memberships)
    {
        for (const Membership &membership : memberships) {
            if (membership.state == State::Live)
                members_[membership.groupId].push_back(membership.organisation);
        }
        QHash<const Organisation *, std::size_t> known;
        for (const Membership &membership : memberships) {
            const Organisation *organisation = membership.organisation;
            if (membership.state != State::Live || !KeepsStock(*organisation))
                continue;
            if (!known.contains(organisation)) {
                known.insert(organisation, owners_.size());
                owners_.push_back({organisation, {}, 0});
            }
            AddViewers(owners_[known[organisation]], membership.groupId);
        }
    }

    TableRows Make(History &history)
    {
        for (Owner &owner : owners_)
            random_.Shuffle(owner.viewers);
        Deal();
        TableRows rows(u"STK_ORG_SET"_s, {u"OWNER_ORGID"_s, u"ORG_ID"_s, u"SHOW_QTY"_s});
        for (std::size_t number = 0; number < owners_.size(); ++number)
            AddRows(rows, owners_[number], number % TakenBackEvery == 0, history);
        return rows;
    }

private:
    void AddViewers(Owner &owner, const QString &groupId)
    {
        for (const Organisation *member : members_[groupId]) {
            const bool isNew = std::ranges::find(owner.viewers, member, &Viewer::organisation) ==
                               owner.viewers.end();
            if (member != owner.organisation && isNew)
                owner.viewers.push_back({member, groupId});
        }
    }

    /// The owner with the fewest viewers opens its stock to all of them.
    void Deal()
    {
        const auto fewest = std::ranges::min_element(
            owners_, {}, [](const Owner &owner) { return owner.viewers.size(); });
        fewest->open = fewest->viewers.size();
        std::size_t open = fewest->open;
        for (Owner &owner : owners_) {
            if (&owner != &*fewest)
                open += owner.open = static_cast<std::size_t>(random_.Between(1, MostAtFirst));
        }
        for (std::size_t number = 0; open < Permissions; ++number) {
            Owner &owner = owners_[number % owners_.size()];
            if (owner.open + 1 < owner.viewers.size()) { // one is left to be taken back
                ++owner.open;
                ++open;
            }
        }
    }

    void AddRows(TableRows &rows, const Owner &owner, bool tookOneBack, History &history)
    {
        for (std::size_t number = 0; number < owner.open; ++number) {
            const bool hidden = rows.Count() % ChangedEvery == 0;
            const bool quantity = !hidden && random_.Chance(QuantityPercent);
            Add(rows, owner, number, quantity,
                hidden ? QList{Change::Insert, Change::Modify} : LifeOf(State::Live), history);
        }
        if (tookOneBack && owner.open < owner.viewers.size())
            Add(rows, owner, owner.open, false, LifeOf(State::Deleted), history);
    }

    static void Add(TableRows &rows, const Owner &owner, std::size_t number, bool quantity,
                    const QList<Change> &changes, History &history)
    {
        const Viewer &viewer = owner.viewers[number];
        const OfficeTime time = history.Begin(Phase::Stock, viewer.groupId) +
                                Pace.After(static_cast<qsizetype>(number));
        const Stamp last =
            history.Note({rows.Table(), owner.organisation->id, viewer.organisation->id},
                         viewer.groupId, time, changes);
        rows.Add({owner.organisation->id, viewer.organisation->id, FlagText(quantity)}, last,
                 changes.last() == Change::LogicalDelete ? State::Deleted : State::Live);
    }

    QHash<QString, std::vector<const Organisation *>> members_; ///< by group
    std::vector<Owner> owners_;
    Random random_{u"STK_ORG_SET"};
};

} // namespace

TableRows StockPermissionRows(const std::vector<Membership> &memberships, History &history)
{
    return Maker(memberships).Make(history);
}

} // namespace Qel::Demo
