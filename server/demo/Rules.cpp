#include "demo/Rules.h"

#include "demo/History.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr int RuledEvery = 3;        ///< one group of so many
constexpr int OffEvery = 4;          ///< of those, one of so many
constexpr int OtherAuditorEvery = 2; ///< of those, one is not audited by who leads it

/// A member other than the group's supervising organisation.
QString OtherMember(const Group &group, const std::vector<Membership> &memberships)
{
    for (const Membership &membership : memberships) {
        if (membership.groupId == group.id && membership.state == State::Live &&
            membership.organisation != group.master)
            return membership.organisation->id;
    }
    return group.master->id;
}

} // namespace

TableRows RuleRows(const std::vector<Group> &groups, const std::vector<Membership> &memberships,
                   History &history)
{
    TableRows rows(u"UNI_UNION_RULE"_s,
                   {u"UNION_ID"_s, u"RULE_CODE"_s, u"RULE_NAME"_s, u"RULE_VALUE"_s, u"VALUE_TYPE"_s,
                    u"REMARK"_s, u"ENABLE_FLAG"_s});
    int live = 0;
    int ruled = 0;
    for (const Group &group : groups) {
        if (group.state == State::Deleted || live++ % RuledEvery != 0)
            continue;
        const int number = ruled++;
        const bool off = number % OffEvery == OffEvery - 1;
        const QString auditor =
            number % OtherAuditorEvery == 0 ? group.master->id : OtherMember(group, memberships);
        const auto add = [&](const QString &code, const QString &name, const QString &value,
                             const QString &type, const QList<Change> &changes) {
            const Stamp last = history.Note({rows.Table(), group.id, code}, group.id,
                                            history.Begin(Phase::Rules, group.id), changes);
            rows.Add({group.id, code, name, value, type, {}, u"1"_s}, last);
        };
        // Switched off, the rule keeps its auditor.
        add(u"UNI_JTCGDSH"_s, u"集团审核启用标志"_s, off ? u"0"_s : u"1"_s, u"B"_s,
            off ? QList{Change::Insert, Change::Modify} : QList{Change::Insert});
        add(u"UNI_JTCGDSH_ORGID"_s, u"集团审核机构ID"_s, auditor, u"S"_s, {Change::Insert});
    }
    return rows;
}

} // namespace Qel::Demo
