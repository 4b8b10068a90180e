#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>

namespace Qel::Store {

/// How dates stand in the database: local time of the server, 'YYYY-MM-DD HH24:MI:SS'.
QString DateText(const QDateTime &time);

/// The date of some time ago, made anew once a second: to find out what local time is costs more
/// than a post's statements. One thread at a time.
class RecentDate
{
public:
    explicit RecentDate(std::chrono::seconds ago)
        : ago_(ago)
    {
    }
    const QString &Text();

private:
    std::chrono::seconds ago_;
    qint64 madeAt_ = -1;
    QString text_;
};

QString Now();

} // namespace Qel::Store
