#include "store/Clock.h"

using namespace std::chrono_literals;

namespace Qel::Store {

QString DateText(const QDateTime &time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

const QString &RecentDate::Text()
{
    const qint64 second = QDateTime::currentSecsSinceEpoch();
    if (second != madeAt_) {
        text_ = DateText(QDateTime::fromSecsSinceEpoch(second - ago_.count()));
        madeAt_ = second;
    }
    return text_;
}

QString Now()
{
    thread_local RecentDate now(0s);
    return now.Text();
}

} // namespace Qel::Store
