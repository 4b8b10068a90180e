#include "demo/Groups.h"

#include "dataset/QelError.h"
#include "demo/DemoFiles.h"
#include "demo/History.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr qsizetype TopCodeDigits = 4;
constexpr qsizetype CodeDigitsPerLevel = 2;
constexpr qsizetype ChangedEvery = 4; ///< one group of so many was changed after its founding

/// Groups of the health bureaus are led by the province's purchasing centre, the others by a
/// hospital of their region.
const Organisation *FindMaster(const GroupPlan &plan,
                               const std::vector<Organisation> &organisations,
                               const QSet<QString> &taken)
{
    const OrgType wanted = plan.Level() == 1 ? OrgType::Operator : OrgType::Hospital;
    for (const Organisation &organisation : organisations) {
        if (organisation.type == wanted && organisation.InUse() &&
            organisation.region->code.startsWith(plan.region) && !taken.contains(organisation.id))
            return &organisation;
    }
    throw EQelError(u"示例集团“%1”没有可用的主管机构"_s.arg(plan.name));
}

} // namespace

int GroupPlan::Level() const
{
    return static_cast<int>((code.size() - TopCodeDigits) / CodeDigitsPerLevel) + 1;
}

std::vector<GroupPlan> ReadGroupPlans()
{
    std::vector<GroupPlan> plans;
    for (const QStringList &record : ReadDemoFile(
             u"groups.csv"_s, {u"CODE"_s, u"NAME"_s, u"TYPE"_s, u"REGION"_s, u"DELETED"_s}))
        plans.push_back({record[0], record[1], record[2], record[3],
                         record[4] == u"1"_s ? State::Deleted : State::Live});
    return plans;
}

std::vector<Group> MakeGroups(const std::vector<GroupPlan> &plans,
                              const std::vector<Organisation> &organisations)
{
    std::vector<Group> groups;
    QHash<QString, QString> idOfCode; // of live groups
    QSet<QString> masters;
    for (const GroupPlan &plan : plans) {
        Group group{plan, MakeId(IdSeries::Group, static_cast<qsizetype>(groups.size())), {}, {}};
        if (plan.Level() > 1)
            group.parentId = idOfCode.value(plan.code.chopped(CodeDigitsPerLevel));
        group.master = FindMaster(plan, organisations, masters);
        if (plan.state == State::Live) {
            idOfCode.insert(plan.code, group.id);
            masters.insert(group.master->id);
        }
        groups.push_back(std::move(group));
    }
    return groups;
}

TableRows GroupRows(const std::vector<Group> &groups, const Regions &regions, History &history)
{
    TableRows rows(u"UNI_UNION"_s, {u"UNION_ID"_s, u"PARENT_ID"_s, u"UNION_CODE"_s, u"UNION_NAME"_s,
                                    u"UNION_TYPE"_s, u"REGION_ID"_s, u"MASTER_ORGID"_s, u"REMARK"_s,
                                    u"ENABLE_FLAG"_s});
    for (const Group &group : groups) {
        const Region &region = regions.ByCode(group.region);
        const bool changed =
            group.state == State::Live && rows.Count() % ChangedEvery == ChangedEvery - 1;
        const Stamp last = history.Note(
            {rows.Table(), group.id, {}}, group.id, history.Begin(Phase::Founding, group.id),
            changed ? QList{Change::Insert, Change::Modify} : LifeOf(group.state));
        rows.Add({group.id, group.parentId, group.code, group.name, group.type, region.id,
                  group.master->id, u"覆盖%1的医药采购"_s.arg(region.fullName),
                  group.state == State::Deleted ? u"D"_s : u"1"_s},
                 last, group.state);
    }
    return rows;
}

} // namespace Qel::Demo
