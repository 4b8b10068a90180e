#include "demo/Catalogues.h"

#include "demo/History.h"
#include "demo/Random.h"

#include <QSet>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

struct Size
{
    int low;
    int high;
};

/// Live products of a group by its level, at most PartOfParent of what its parent has.
constexpr std::array<Size, 4> SizeOfLevel{{{1500, 3000}, {700, 1300}, {400, 700}, {300, 400}}};
constexpr int PartOfParent = 80; ///< percent
constexpr int RemovedEvery = 80; ///< one row of so many more has been moved out again

constexpr PagePace Pace{200, 10 * 60}; ///< the largest page of candidates

/// What happened to a product of a catalogue, and the status in which it is now.
struct Course
{
    int percent;
    QString enableFlag; ///< 0 not enabled, 1 enabled, 2 disabled
    QList<Change> changes;
};

const std::array<Course, 7> Courses{{
    {66, u"1"_s, {Change::Insert}},
    {10, u"1"_s, {Change::Insert, Change::Approve}},
    {2, u"1"_s, {Change::Insert, Change::Disable, Change::Approve}},
    // Taken out by mistake of the administrators, who then had to begin anew.
    {1, u"1"_s, {Change::Insert, Change::PhysicalDelete, Change::Insert}},
    {11, u"0"_s, {Change::Insert}},
    {1, u"0"_s, {Change::Insert, Change::Approve, Change::Modify}},
    {9, u"2"_s, {Change::Insert, Change::Disable}},
}};

const Course Removed{0, u"1"_s, {Change::Insert, Change::LogicalDelete}};

const Course &Draw(Random &random)
{
    int left = random.Below(100);
    for (const Course &course : Courses) {
        if (left < course.percent)
            return course;
        left -= course.percent;
    }
    return Courses.front();
}

} // namespace

TableRows CatalogueRows(const std::vector<Group> &groups, const QStringList &products,
                        History &history)
{
    Random random(u"UNI_PRODUCT");
    TableRows rows(u"UNI_PRODUCT"_s, {u"UNION_ID"_s, u"PRODUCT_ID"_s, u"ENABLE_FLAG"_s});
    QHash<QString, QStringList> catalogues; // by group
    for (const Group &group : groups) {
        if (group.state == State::Deleted)
            continue;
        const bool top = group.parentId.isEmpty();
        QStringList choice = top ? products : catalogues[group.parentId];
        random.Shuffle(choice);
        const Size size = SizeOfLevel[static_cast<std::size_t>(group.Level() - 1)];
        const auto wanted = static_cast<qsizetype>(random.Between(size.low, size.high));
        const qsizetype live = std::min(wanted, choice.size() * PartOfParent / 100);

        const QStringList kept = choice.first(live);
        const QSet<QString> keptKeys(kept.begin(), kept.end());
        QStringList entered = choice.first(live + live / RemovedEvery);
        entered.sort(); // the order in which the candidates are listed, page by page
        qsizetype number = 0;
        for (const QString &product : entered) {
            const bool removed = !keptKeys.contains(product);
            const Course &course = removed ? Removed : Draw(random);
            const Stamp last = history.Note(
                {rows.Table(), group.id, product}, group.id,
                history.Begin(Phase::Catalogue, group.id) + Pace.After(number++), course.changes);
            rows.Add({group.id, product, course.enableFlag}, last,
                     removed ? State::Deleted : State::Live);
        }
        catalogues.insert(group.id, kept);
    }
    return rows;
}

} // namespace Qel::Demo
