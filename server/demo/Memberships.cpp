#include "demo/Memberships.h"

#include "dataset/QelError.h"
#include "demo/DemoFiles.h"
#include "demo/History.h"
#include "demo/Random.h"

#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

/// Live members of a group by its level; 4,000 in all.
constexpr std::array<int, 4> MembersOfLevel{120, 80, 48, 32};
constexpr int BuyerPercent = 55; ///< at most, where the region has so many

constexpr int ChangedEvery = 15;      ///< one member of so many got another type later
constexpr PagePace Pace{50, 15 * 60}; ///< a page of candidates

bool IsBuyer(const Organisation &organisation)
{
    return organisation.type == OrgType::Hospital || organisation.type == OrgType::Pharmacy;
}

class Maker
{
public:
    explicit Maker(const std::vector<Organisation> &organisations)
    {
        for (const Organisation &organisation : organisations) {
            if (organisation.InUse() && organisation.type != OrgType::Operator)
                (IsBuyer(organisation) ? buyers_ : sellers_).push_back(&organisation);
        }
        kinds_ = ReadDemoFile(u"member-types.csv"_s,
                              {u"NAME"_s, u"BUYER"_s, u"SALER"_s, u"SENDER"_s, u"ADMIN"_s,
                               u"ORG_TYPES"_s, u"LEVELS"_s, u"DELETED"_s, u"REMARK"_s});
    }

    void AddGroup(const Group &group)
    {
        types_.clear();
        const QString level = QString::number(group.Level());
        for (const QStringList &kind : kinds_) {
            if (!kind[6].contains(level))
                continue;
            types_.push_back(
                {MakeId(IdSeries::MemberType, static_cast<qsizetype>(members_.types.size())),
                 group.id, kind[0], kind.mid(1, 4), kind[8], kind[5],
                 kind[7] == u"1"_s ? State::Deleted : State::Live});
            members_.types.push_back(types_.back());
        }
        if (group.state == State::Live)
            AddMembers(group);
    }

    Members members_;

private:
    void AddMembers(const Group &group)
    {
        int left = MembersOfLevel[static_cast<std::size_t>(group.Level() - 1)];
        int buyersLeft = left * BuyerPercent / 100;
        // The supervising organisation's type is the first of the group's list: it administers.
        members_.memberships.push_back({group.id, group.master, types_.front().id, State::Live});
        --left;

        random_.Shuffle(buyers_);
        for (const Organisation *buyer : buyers_) {
            if (buyersLeft > 0 && buyer != group.master &&
                buyer->region->code.startsWith(group.region)) {
                AddMember(group, *buyer);
                --buyersLeft;
                --left;
            }
        }
        random_.Shuffle(sellers_);
        for (int seller = 0; seller < left; ++seller)
            AddMember(group, *sellers_[static_cast<std::size_t>(seller)]);
        // One that has left the group again.
        AddMember(group, *sellers_[static_cast<std::size_t>(left)], State::Deleted);
    }

    void AddMember(const Group &group, const Organisation &organisation, State state = State::Live)
    {
        const QString orgType = QString::number(static_cast<int>(organisation.type));
        // A type that administers is for the supervising organisation alone.
        for (const MemberType &type : types_) {
            if (type.state == State::Live && type.flags.back() == u"0"_s &&
                type.orgTypes.contains(orgType)) {
                members_.memberships.push_back({group.id, &organisation, type.id, state});
                return;
            }
        }
        throw EQelError(
            u"示例集团“%1”没有适用于“%2”的成员类型"_s.arg(group.name, organisation.name));
    }

    std::vector<QStringList> kinds_;
    std::vector<MemberType> types_; ///< of the group at hand
    std::vector<const Organisation *> buyers_;
    std::vector<const Organisation *> sellers_;
    Random random_{u"UNI_ORG"};
};

} // namespace

Members MakeMembers(const std::vector<Group> &groups,
                    const std::vector<Organisation> &organisations)
{
    Maker maker(organisations);
    for (const Group &group : groups)
        maker.AddGroup(group);
    return std::move(maker.members_);
}

TableRows MemberTypeRows(const std::vector<MemberType> &types, History &history)
{
    TableRows rows(u"UNI_ORG_TYPE"_s,
                   {u"ORG_TYPE_ID"_s, u"UNION_ID"_s, u"ORG_TYPE_NAME"_s, u"BUYER_FLAG"_s,
                    u"SALER_FLAG"_s, u"SENDER_FLAG"_s, u"ADMIN_FLAG"_s, u"REMARK"_s});
    for (const MemberType &type : types) {
        // A group's types are saved together.
        const Stamp last =
            history.Note({rows.Table(), type.id, {}}, type.groupId,
                         history.Begin(Phase::MemberTypes, type.groupId), LifeOf(type.state));
        rows.Add(QStringList{type.id, type.groupId, type.name} + type.flags +
                     QStringList{type.remark},
                 last, type.state);
    }
    return rows;
}

TableRows MembershipRows(const std::vector<Membership> &memberships, History &history)
{
    TableRows rows(u"UNI_ORG"_s, {u"UNION_ID"_s, u"ORG_ID"_s, u"ORG_TYPE_ID"_s});
    QHash<QString, int> added; // by group
    for (const Membership &membership : memberships) {
        const QString &organisation = membership.organisation->id;
        const int number = added[membership.groupId]++;
        const bool changed =
            membership.state == State::Live && number % ChangedEvery == ChangedEvery - 1;
        const Stamp last = history.Note(
            {rows.Table(), membership.groupId, organisation}, membership.groupId,
            history.Begin(Phase::Members, membership.groupId) + Pace.After(number),
            changed ? QList{Change::Insert, Change::Modify} : LifeOf(membership.state));
        rows.Add({membership.groupId, organisation, membership.memberTypeId}, last,
                 membership.state);
    }
    return rows;
}

} // namespace Qel::Demo
