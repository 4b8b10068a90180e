#include "demo/Announcements.h"

#include "demo/DemoFiles.h"
#include "demo/History.h"
#include "demo/Random.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr int Written = 420;     ///< in all
constexpr int DeletedEvery = 21; ///< one of so many; not the newest
constexpr int Recent = 60;
constexpr OfficeTime RecentTime = 10 * OfficeDay;
constexpr OfficeTime AllTime = OfficeTime{2 * 261} * OfficeDay;
constexpr OfficeTime LongestStep = OfficeDay / 5; ///< from one change to the next
constexpr int LongestContent = 500;
constexpr int LongOne = Written - 2; ///< whose title and content are as long as can be
constexpr QStringView LongTitle =
    u"关于汇编印发年度药品集中采购各项通知并请各成员单位认真组织学习、对照检查、逐项整改和按时报送情况的函";
constexpr int EndlessPercent = 25;
constexpr int MaxDaysShown = 60;

struct Template
{
    QString flags; ///< PUBLIC_FLAG, BUYER_FLAG, SALER_FLAG
    QString title;
    QString content;
};

std::vector<Template> ReadTemplates()
{
    std::vector<Template> templates;
    for (const QStringList &record :
         ReadDemoFile(u"announcements.csv"_s, {u"AUDIENCE"_s, u"TITLE"_s, u"CONTENT"_s}))
        templates.push_back({record[0], record[1], record[2]});
    return templates;
}

/// Newer ones are closer together: the list comes up with the last 15 days.
OfficeTime TimeOf(int number, OfficeTime end)
{
    const int newer = Written - 1 - number;
    const OfficeTime age = newer < Recent ? newer * RecentTime / Recent
                                          : RecentTime + (newer - Recent) * (AllTime - RecentTime) /
                                                             (Written - Recent);
    return std::max<OfficeTime>(0, end - OfficeDay - age);
}

/// What became of an announcement.
QList<Change> CourseOf(int number)
{
    using enum Change;
    static const QList<QList<Change>> courses{
        {Insert, Approve}, {Insert},
        {Insert, Approve}, {Insert, Modify, Approve},
        {Insert, Approve}, {Insert, Approve, Modify},
        {Insert, Approve}, {Insert, Modify},
        {Insert, Approve}, {Insert, Approve, Modify, Approve},
    };
    // Otherwise each template would have one course.
    const int shift = number / static_cast<int>(courses.size());
    QList<Change> course = courses[(number + shift / 2) % courses.size()];
    if (number % DeletedEvery == DeletedEvery / 2)
        course += PhysicalDelete;
    return course;
}

QString DayText(QDate day)
{
    return day.toString(u"yyyy-MM-dd"_s) + u" 00:00:00"_s;
}

/// All of them, to the length that the column holds.
QString Collected(const std::vector<Template> &templates)
{
    QString contents;
    for (const Template &text : templates)
        contents += text.content;
    return contents.left(LongestContent);
}

} // namespace

TableRows AnnouncementRows(const std::vector<Group> &groups, OfficeTime end, History &history)
{
    TableRows rows(u"SYS_AFFICHE"_s,
                   {u"ID"_s, u"UNION_ID"_s, u"AFFICHE_TYPE"_s, u"AFFICHE_TITLE"_s,
                    u"AFFICHE_CONTENT"_s, u"START_DATE"_s, u"END_DATE"_s, u"PUBLIC_FLAG"_s,
                    u"BUYER_FLAG"_s, u"SALER_FLAG"_s, u"ENABLE_FLAG"_s, u"CREATE_USER"_s,
                    u"CREATE_DATE"_s, u"CHECK_USER"_s, u"CHECK_DATE"_s});
    std::vector<const Group *> live;
    for (const Group &group : groups)
        if (group.state == State::Live)
            live.push_back(&group);

    const std::vector<Template> templates = ReadTemplates();
    Random random(u"SYS_AFFICHE");
    for (int number = 0; number < Written; ++number) {
        const Template &text = templates[static_cast<std::size_t>(number) % templates.size()];
        const Group &group = *random.Pick(live);
        const QString id = MakeId(IdSeries::Announcement, number);
        const bool isLong = number == LongOne;

        OfficeTime time = TimeOf(number, end);
        const QDate start = OfficeDate(time).addDays(1);
        const QDate last = start.addDays(random.Below(MaxDaysShown)); // the first day or later
        const bool endless = random.Chance(EndlessPercent);

        Stamp written;
        Stamp published; // empty unless that holds still
        Stamp stamp;
        const QList<Change> course = CourseOf(number);
        for (const Change change : course) {
            stamp = history.Enter({rows.Table(), id, {}}, group.id, time, change);
            if (change == Change::Insert)
                written = stamp;
            published = change == Change::Approve ? stamp : Stamp{};
            time += random.Between(LongestStep / 10, LongestStep);
        }
        if (course.last() == Change::PhysicalDelete)
            continue;
        const bool isPublished = course.last() == Change::Approve;
        const auto round = number / static_cast<int>(templates.size());
        rows.Add({id, group.id, u"1"_s,
                  isLong ? LongTitle.toString() : text.title + u"（第 %1 号）"_s.arg(round + 1),
                  isLong ? Collected(templates) : text.content, DayText(start),
                  endless ? QString() : DayText(last), text.flags.mid(0, 1), text.flags.mid(1, 1),
                  text.flags.mid(2, 1), FlagText(isPublished), written.userName,
                  OfficeTimeText(written.time), published.userName,
                  isPublished ? OfficeTimeText(published.time) : QString()},
                 stamp);
    }
    return rows;
}

} // namespace Qel::Demo
