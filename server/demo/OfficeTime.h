#pragma once

#include <QDate>
#include <QString>

namespace Qel::Demo {

/// Moments of the sample database: seconds of office hours since the platform's first morning.
/// Nobody works at night or on Saturday and Sunday.
using OfficeTime = qint64;

inline constexpr OfficeTime OfficeDay = 8 * 60 * 60;

/// The pace of who stores rows page by page.
struct PagePace
{
    qsizetype rows;     ///< of a page
    OfficeTime seconds; ///< from one page to the next

    /// When the row that is counted `number` is stored, from the first one's time on.
    OfficeTime After(qsizetype number) const { return number / rows * seconds; }
};

/// As dates stand in the database: "2024-03-01 08:30:00" for 0.
QString OfficeTimeText(OfficeTime time);

/// The calendar day.
QDate OfficeDate(OfficeTime time);

/// The morning of the last working day before `today`; not before the platform's first morning.
OfficeTime LastMorningBefore(QDate today);

} // namespace Qel::Demo
