#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace Qel::Bench {

/// A bound on the ratio of two measured medians of processor time.
struct Goal
{
    const char *what;
    const char *project; ///< benchmark of this tree
    const char *peer;    ///< what it is held against
    double bound;
    bool peerAtLeast; ///< true: peer / project >= bound; false: project / peer <= bound
};

/// Prints what the console reporter prints, keeps the medians of the processor time (what else the
/// machine does is not counted) and ends with one line a goal.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override;
    /// The table; false if a goal was measured and missed.
    bool PrintGoals(const Goal *goals, size_t count) const;

private:
    std::map<std::string, double> medians_;
};

} // namespace Qel::Bench
