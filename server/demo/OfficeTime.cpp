#include "demo/OfficeTime.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr qint64 Minute = 60;
constexpr qint64 Morning = 8 * 60 * Minute + 30 * Minute; ///< office hours begin
constexpr qint64 MorningLength = 3 * 60 * Minute + 30 * Minute;
constexpr qint64 LunchLength = 90 * Minute;
constexpr qint64 WorkDays = 5; ///< of a week
constexpr qint64 FirstWeekday = 4;
constexpr qint64 Week = 7;

/// Of the week of the first morning, a Friday.
const QDate Monday(2024, 2, 26);

/// Made once a day: hundreds of moments are on the same.
const QString &DateText(qint64 day)
{
    thread_local QHash<qint64, QString> texts;
    QString &text = texts[day];
    if (text.isEmpty())
        text = OfficeDate(day * OfficeDay).toString(u"yyyy-MM-dd"_s);
    return text;
}

void AppendTwoDigits(QString &text, qint64 number)
{
    text += QChar(static_cast<char16_t>(u'0' + number / 10));
    text += QChar(static_cast<char16_t>(u'0' + number % 10));
}

} // namespace

QDate OfficeDate(OfficeTime time)
{
    const qint64 fromMonday = time / OfficeDay + FirstWeekday;
    return Monday.addDays(fromMonday / WorkDays * Week + fromMonday % WorkDays);
}

OfficeTime LastMorningBefore(QDate today)
{
    const qint64 days = Monday.daysTo(today) - 1; // of yesterday
    const qint64 fromMonday = days / Week * WorkDays + std::min(days % Week, WorkDays - 1);
    return std::max<qint64>(0, fromMonday - FirstWeekday) * OfficeDay;
}

QString OfficeTimeText(OfficeTime time)
{
    const qint64 worked = time % OfficeDay;
    const qint64 clock = Morning + worked + (worked < MorningLength ? 0 : LunchLength);
    QString text = DateText(time / OfficeDay);
    text += u' ';
    AppendTwoDigits(text, clock / (60 * Minute));
    text += u':';
    AppendTwoDigits(text, clock / Minute % 60);
    text += u':';
    AppendTwoDigits(text, clock % Minute);
    return text;
}

} // namespace Qel::Demo
