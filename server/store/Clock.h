#pragma once

#include <QDateTime>
#include <QString>

namespace Qel::Store {

/// How dates stand in the database: local time of the server, 'YYYY-MM-DD HH24:MI:SS'.
inline QString DateText(const QDateTime &time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

inline QString Now()
{
    return DateText(QDateTime::currentDateTime());
}

} // namespace Qel::Store
