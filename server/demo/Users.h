#pragma once

#include "demo/Groups.h"
#include "demo/Memberships.h"

namespace Qel::Demo {

class History;

struct User
{
    QString id;
    QString code; ///< login code
    QString name;
    QString remark;
    const Organisation *organisation = nullptr;
    bool enabled = true;
    State state = State::Live;
};

/// The platform's users; the first is the operator who signs in to the sample database.
std::vector<User> MakeUsers(const std::vector<Organisation> &organisations,
                            const Initials &initials);

/// Whether the user belongs to the purchasing centre of the group's province.
bool IsOfProvince(const User &user, const Group &group);

TableRows UserRows(const std::vector<User> &users);

/// Which groups a user may operate: the operator of the sample database all of them, a purchasing
/// centre's users those of their province, a hospital's most of those that it is a member of.
TableRows AssignmentRows(const std::vector<User> &users, const std::vector<Group> &groups,
                         const std::vector<Membership> &memberships, History &history);

} // namespace Qel::Demo
