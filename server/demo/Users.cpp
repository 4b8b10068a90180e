#include "demo/Users.h"

#include "demo/DemoFiles.h"
#include "demo/History.h"
#include "demo/Random.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr std::size_t Users = 800;
constexpr std::size_t DeletedUsers = 6;
constexpr int UsersPerOperator = 2;
constexpr std::size_t DisabledEvery = 41; ///< one user of so many is disabled
constexpr int AssignedPercent = 80;       ///< of a hospital user's groups
constexpr int WithdrawnEvery = 25;        ///< one assignment of so many is deleted

QString PostsOf(OrgType type)
{
    switch (type) {
    case OrgType::Operator:
        return u"岗位营运"_s;
    case OrgType::Hospital:
        return u"岗位医院"_s;
    default:
        return u"岗位企业"_s;
    }
}

/// Every user's organisation: each operator's two, each hospital's one, then others.
std::vector<const Organisation *> PlacesOfWork(const std::vector<Organisation> &organisations,
                                               Random &random)
{
    std::vector<const Organisation *> places;
    std::vector<const Organisation *> others;
    for (const Organisation &organisation : organisations) {
        if (!organisation.InUse())
            continue;
        if (organisation.type == OrgType::Operator)
            places.insert(places.end(), UsersPerOperator, &organisation);
        else if (organisation.type == OrgType::Hospital)
            places.push_back(&organisation);
        else
            others.push_back(&organisation);
    }
    random.Shuffle(others);
    while (places.size() < Users + DeletedUsers)
        places.push_back(others[places.size() % others.size()]);
    return places;
}

} // namespace

std::vector<User> MakeUsers(const std::vector<Organisation> &organisations,
                            const Initials &initials)
{
    const WordLists words;
    Random random(u"USR_USER");
    std::vector<User> users;
    for (const Organisation *organisation : PlacesOfWork(organisations, random)) {
        User user;
        user.id = MakeId(IdSeries::User, static_cast<qsizetype>(users.size()));
        const QString &given = random.Pick(words[u"名"_s]);
        user.name = random.Pick(words[u"姓"_s]) + given;
        user.code =
            initials.Pinyin(user.name).toLower() + Padded(static_cast<qsizetype>(users.size()), 4);
        user.remark = random.Pick(words[PostsOf(organisation->type)]);
        user.organisation = organisation;
        user.enabled = users.size() % DisabledEvery != DisabledEvery - 1;
        user.state = users.size() < Users ? State::Live : State::Deleted;
        users.push_back(std::move(user));
    }
    users.front().code = AdminUserCode.toString();
    users.front().name = AdminUserName.toString();
    return users;
}

bool IsOfProvince(const User &user, const Group &group)
{
    return user.organisation->type == OrgType::Operator &&
           group.region.startsWith(user.organisation->region->code);
}

TableRows UserRows(const std::vector<User> &users)
{
    TableRows rows(u"USR_USER"_s, {u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_ID"_s,
                                   u"ENABLE_FLAG"_s, u"REMARK"_s});
    for (const User &user : users)
        rows.Add({user.id, user.code, user.name, user.organisation->id,
                  user.enabled ? u"1"_s : u"0"_s, user.remark},
                 user.state);
    return rows;
}

TableRows AssignmentRows(const std::vector<User> &users, const std::vector<Group> &groups,
                         const std::vector<Membership> &memberships, History &history)
{
    QSet<QString> members; // group and organisation, live
    for (const Membership &membership : memberships) {
        if (membership.state == State::Live)
            members.insert(membership.groupId + membership.organisation->id);
    }

    Random random(u"UNI_USER_UNION");
    TableRows rows(u"UNI_USER_UNION"_s, {u"USER_ID"_s, u"UNION_ID"_s});
    for (const User &user : users) {
        const bool admin = &user == &users.front();
        const bool hospital = user.organisation->type == OrgType::Hospital;
        for (const Group &group : groups) {
            const bool assigned = admin || IsOfProvince(user, group) ||
                                  (hospital && members.contains(group.id + user.organisation->id) &&
                                   random.Chance(AssignedPercent));
            if (!assigned)
                continue;
            const bool withdrawn = group.state == State::Deleted || user.state == State::Deleted ||
                                   (!admin && random.Below(WithdrawnEvery) == 0);
            const State state = withdrawn ? State::Deleted : State::Live;
            const Stamp last = history.Note({rows.Table(), user.id, group.id}, group.id,
                                            history.Begin(Phase::Users, group.id), LifeOf(state));
            rows.Add({user.id, group.id}, last, state);
        }
    }
    return rows;
}

} // namespace Qel::Demo
