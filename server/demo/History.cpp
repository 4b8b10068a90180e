#include "demo/History.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr int MaxDaysBetween = 45; ///< from one change of a record to the next

struct PhasePlan
{
    OfficeTime begin;    ///< for the first group
    OfficeTime perGroup; ///< the next group's turn comes so much later
};

/// In the order of Phase. Master data are imported on the first day.
constexpr std::array<PhasePlan, 8> Plans{{
    {10 * OfficeDay, OfficeDay / 16},
    {15 * OfficeDay, OfficeDay / 16},
    {20 * OfficeDay, OfficeDay / 16},
    {25 * OfficeDay, OfficeDay / 2},
    {60 * OfficeDay, OfficeDay / 8},
    {70 * OfficeDay, OfficeDay},
    {75 * OfficeDay, OfficeDay},
    {85 * OfficeDay, OfficeDay / 2},
}};

} // namespace

QList<Change> LifeOf(State state)
{
    return state == State::Live ? QList{Change::Insert}
                                : QList{Change::Insert, Change::LogicalDelete};
}

History::History(const std::vector<Group> &groups, const std::vector<User> &users)
{
    for (const Group &group : groups) {
        Office office{offices_.size(), {{users.front().id, users.front().name}}};
        for (const User &user : users) {
            if (IsOfProvince(user, group) && user.enabled && user.state == State::Live)
                office.operators.push_back({user.id, user.name});
        }
        offices_.insert(group.id, office);
    }
}

OfficeTime History::Begin(Phase phase, const QString &groupId) const
{
    const PhasePlan &plan = Plans[static_cast<std::size_t>(phase)];
    return plan.begin + offices_[groupId].number * plan.perGroup;
}

Stamp History::Note(const Record &record, const QString &groupId, OfficeTime time,
                    const QList<Change> &changes)
{
    Stamp last;
    OfficeTime wait = 0;
    for (const Change change : changes) {
        time += wait;
        last = Enter(record, groupId, time, change);
        const int days = random_.Between(1, MaxDaysBetween);
        wait = days * OfficeDay + random_.Below(OfficeDay);
    }
    return last;
}

Stamp History::Enter(const Record &record, const QString &groupId, OfficeTime time, Change change)
{
    const std::vector<Stamp> &operators = offices_[groupId].operators;
    // One of them is on duty for a day.
    Stamp stamp = operators[static_cast<std::size_t>(time / OfficeDay) % operators.size()];
    stamp.time = time;
    entries_.push_back({record, change, stamp});
    return stamp;
}

TableRows History::Rows() const
{
    std::vector<const Entry *> order;
    order.reserve(entries_.size());
    for (const Entry &entry : entries_)
        order.push_back(&entry);
    std::stable_sort(order.begin(), order.end(), [](const Entry *left, const Entry *right) {
        return left->stamp.time < right->stamp.time;
    });

    TableRows rows(u"SYS_UPDATE_LOG"_s,
                   {u"LOG_ID"_s, u"TABLE_NAME"_s, u"KEY_ID1"_s, u"KEY_ID2"_s, u"USER_ID"_s,
                    u"USER_NAME"_s, u"OPTION_TYPE"_s, u"OPTION_DATE"_s, u"LAST_OPERATE"_s},
                   TableRows::Audit::None);
    const QString live = u"1"_s;
    for (const Entry *entry : order)
        rows.AddPlain({MakeId(IdSeries::LogEntry, rows.Count()), entry->record.table,
                       entry->record.key1, entry->record.key2, entry->stamp.userId,
                       entry->stamp.userName, QString::number(static_cast<int>(entry->change)),
                       OfficeTimeText(entry->stamp.time), live});
    return rows;
}

} // namespace Qel::Demo
