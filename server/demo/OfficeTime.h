#pragma once

#include <QString>

namespace Qel::Demo {

/// Moments of the sample database: seconds of office hours since the platform's first morning.
/// Nobody works at night or on Saturday and Sunday.
using OfficeTime = qint64;

inline constexpr OfficeTime OfficeDay = 8 * 60 * 60;

/// As dates stand in the database: "2024-03-01 08:30:00" for 0.
QString OfficeTimeText(OfficeTime time);

} // namespace Qel::Demo
