#include "Memory.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

qint64 ResidentKiB(qint64 processId)
{
    QFile file(u"/proc/%1/statm"_s.arg(processId));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArrayList numbers = file.readAll().split(' '); // the second: resident pages
    return numbers.size() < 2 ? 0 : numbers[1].toLongLong() * sysconf(_SC_PAGESIZE) / 1024;
}

MemoryTrend TrendOf(const std::vector<MemorySample> &samples)
{
    const auto begin = samples.begin() + std::ssize(samples) / 2;
    const auto count = static_cast<double>(samples.end() - begin);
    double sumX = 0;
    double sumY = 0;
    for (auto at = begin; at != samples.end(); ++at) {
        sumX += at->minutes;
        sumY += at->kib;
    }
    double sumXX = 0;
    double sumXY = 0;
    for (auto at = begin; at != samples.end(); ++at) {
        const double x = at->minutes - sumX / count;
        sumXX += x * x;
        sumXY += x * (at->kib - sumY / count);
    }
    MemoryTrend trend;
    trend.meanKiB = sumY / count;
    trend.slope = sumXY / sumXX;
    trend.growth = trend.slope * (samples.back().minutes - begin->minutes);
    trend.isFlat = trend.growth <= std::max(1024.0, trend.meanKiB / 50);
    return trend;
}

} // namespace Qel::Bench
