#pragma once

#include "demo/Groups.h"

namespace Qel::Demo {

/// A role that members of one group may have.
struct MemberType
{
    QString id;
    QString groupId;
    QString name;
    QStringList flags; ///< BUYER_FLAG, SALER_FLAG, SENDER_FLAG, ADMIN_FLAG
    QString remark;
    QString orgTypes; ///< digits of the organisation types that have this role
    State state = State::Live;
};

struct Membership
{
    QString groupId;
    const Organisation *organisation = nullptr;
    QString memberTypeId;
    State state = State::Live;
};

struct Members
{
    std::vector<MemberType> types;
    std::vector<Membership> memberships;
};

/// Every group's member types and members: its supervising organisation, buyers of its region,
/// sellers and deliverers from anywhere. Deleted groups have types but no members.
Members MakeMembers(const std::vector<Group> &groups,
                    const std::vector<Organisation> &organisations);

TableRows MemberTypeRows(const std::vector<MemberType> &types, History &history);
TableRows MembershipRows(const std::vector<Membership> &memberships, History &history);

} // namespace Qel::Demo
