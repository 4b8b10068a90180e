#include "Memory.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

MemorySample LookAt(qint64 processId, double minutes)
{
    MemorySample sample{minutes, 0, 0};
    QFile file(u"/proc/%1/status"_s.arg(processId));
    if (!file.open(QIODevice::ReadOnly))
        return sample;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const auto number = [&] { return line.simplified().split(' ').value(1).toDouble(); };
        if (line.startsWith("RssAnon:"))
            sample.ownKiB = number();
        if (line.startsWith("RssFile:") || line.startsWith("RssShmem:"))
            sample.fileKiB += number();
    }
    return sample;
}

namespace {

/// The least sample of each of the second half's parts.
std::vector<MemorySample> LeastOfParts(const std::vector<MemorySample> &samples)
{
    constexpr std::ptrdiff_t parts = 20;
    const auto begin = samples.begin() + std::ssize(samples) / 2;
    const std::ptrdiff_t count = samples.end() - begin;
    std::vector<MemorySample> least;
    for (std::ptrdiff_t part = 0; part < parts; ++part)
        least.push_back(*std::min_element(
            begin + part * count / parts, begin + (part + 1) * count / parts,
            [](const auto &one, const auto &other) { return one.ownKiB < other.ownKiB; }));
    return least;
}

} // namespace

MemoryTrend TrendOf(const std::vector<MemorySample> &samples)
{
    const std::vector<MemorySample> least = LeastOfParts(samples);
    const auto count = static_cast<double>(least.size());
    double sumX = 0;
    double sumY = 0;
    for (const MemorySample &at : least) {
        sumX += at.minutes;
        sumY += at.ownKiB;
    }
    double sumXX = 0;
    double sumXY = 0;
    for (const MemorySample &at : least) {
        const double x = at.minutes - sumX / count;
        sumXX += x * x;
        sumXY += x * (at.ownKiB - sumY / count);
    }
    MemoryTrend trend;
    trend.meanKiB = sumY / count;
    for (const MemorySample &at : samples)
        trend.mostKiB = std::max(trend.mostKiB, at.ownKiB);
    trend.slope = sumXY / sumXX;
    trend.growth = trend.slope * (least.back().minutes - least.front().minutes);
    trend.isFlat = trend.growth <= std::max(1024.0, trend.meanKiB / 50);
    return trend;
}

} // namespace Qel::Bench
