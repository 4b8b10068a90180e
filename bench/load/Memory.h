#pragma once

#include <QtGlobal>

#include <vector>

namespace Qel::Bench {

/// Resident memory of a process now, in KiB; 0: there is no such process.
qint64 ResidentKiB(qint64 processId);

/// A look at a process.
struct MemorySample
{
    double minutes; ///< since the first
    double kib;
};

/// What the samples of a steady load say. Caches fill in the first half, which does not count.
struct MemoryTrend
{
    double meanKiB = 0;
    double slope = 0;    ///< KiB a minute, least squares
    double growth = 0;   ///< over the second half, KiB
    bool isFlat = false; ///< the growth is at most 1 MiB or 2 % of the mean
};

/// At least four samples.
MemoryTrend TrendOf(const std::vector<MemorySample> &samples);

} // namespace Qel::Bench
