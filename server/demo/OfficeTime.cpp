#include "demo/OfficeTime.h"

#include "demo/TableRows.h"

#include <QDate>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr qint64 Minute = 60;
constexpr qint64 Morning = 8 * 60 * Minute + 30 * Minute; ///< office hours begin
constexpr qint64 MorningLength = 3 * 60 * Minute + 30 * Minute;
constexpr qint64 LunchLength = 90 * Minute;
constexpr qint64 WorkDays = 5; ///< of a week
constexpr qint64 FirstWeekday = 4;

QString DateText(qint64 day)
{
    static const QDate monday(2024, 2, 26); // of the week of the first morning, a Friday
    const qint64 fromMonday = day + FirstWeekday;
    return monday.addDays(fromMonday / WorkDays * 7 + fromMonday % WorkDays)
        .toString(u"yyyy-MM-dd"_s);
}

} // namespace

QString OfficeTimeText(OfficeTime time)
{
    const qint64 worked = time % OfficeDay;
    const qint64 clock = Morning + worked + (worked < MorningLength ? 0 : LunchLength);
    return DateText(time / OfficeDay) + u' ' + Padded(clock / (60 * Minute), 2) + u':' +
           Padded(clock / Minute % 60, 2) + u':' + Padded(clock % Minute, 2);
}

} // namespace Qel::Demo
