#pragma once

#include <QtGlobal>

#include <vector>

namespace Qel::Bench {

/// A look at a process. What it has of its own (heap, stacks) is what could grow for ever. Pages of
/// mapped files, its program and the database's file above all, are the kernel's to take back, and
/// a database that grows has more of them.
struct MemorySample
{
    double minutes; ///< since the first
    double ownKiB;
    double fileKiB;
};

/// Zeros: there is no such process.
MemorySample LookAt(qint64 processId, double minutes);

/// What the samples of a steady load say about the process's own memory. Caches fill in the first
/// half, which does not count. What requests hold while they run comes and goes: the second half is
/// cut into twenty parts, of each of which the least counts.
struct MemoryTrend
{
    double meanKiB = 0;  ///< of those
    double mostKiB = 0;  ///< of all samples
    double slope = 0;    ///< KiB a minute, least squares
    double growth = 0;   ///< over the second half, KiB
    bool isFlat = false; ///< the growth is at most 1 MiB or 2 % of the mean
};

/// At least eighty samples.
MemoryTrend TrendOf(const std::vector<MemorySample> &samples);

} // namespace Qel::Bench
