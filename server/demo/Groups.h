#pragma once

#include "demo/Organisations.h"
#include "demo/Regions.h"
#include "demo/TableRows.h"

namespace Qel::Demo {

class History;

/// A purchasing group as groups.csv names it.
struct GroupPlan
{
    QString code; ///< 4 digits at the top, 2 more a level
    QString name;
    QString type;   ///< 1 health bureau, 2 purchasing team, 3 purchasing alliance
    QString region; ///< code of the region
    State state = State::Live;

    int Level() const; ///< 1 at the top
};

std::vector<GroupPlan> ReadGroupPlans();

struct Group : GroupPlan
{
    QString id;
    QString parentId; ///< empty at the top
    /// The supervising organisation; it leads no other live group. Belongs to the organisations.
    const Organisation *master = nullptr;
};

std::vector<Group> MakeGroups(const std::vector<GroupPlan> &plans,
                              const std::vector<Organisation> &organisations);

TableRows GroupRows(const std::vector<Group> &groups, const Regions &regions, History &history);

} // namespace Qel::Demo
