#include "Ratios.h"

#include <cstdio>

namespace Qel::Bench {

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        if (run.aggregate_name == "median")
            medians_[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
}

bool RatioReporter::PrintGoals(const Goal *goals, size_t count) const
{
    bool allMet = true;
    std::printf("\n%-46s %12s %12s %9s %10s\n", "ratio of medians", "project", "peer", "ratio",
                "goal");
    for (size_t i = 0; i < count; ++i) {
        const Goal &goal = goals[i];
        const auto project = medians_.find(goal.project);
        const auto peer = medians_.find(goal.peer);
        if (project == medians_.end() || peer == medians_.end())
            continue;
        const double ratio =
            goal.peerAtLeast ? peer->second / project->second : project->second / peer->second;
        const bool met = goal.peerAtLeast ? ratio >= goal.bound : ratio <= goal.bound;
        allMet = allMet && met;
        std::printf("%-46s %9.3f ms %9.3f ms %9.3f %s %7g  %s\n", goal.what, project->second,
                    peer->second, ratio, goal.peerAtLeast ? ">=" : "<=", goal.bound,
                    met ? "met" : "MISSED");
    }
    return allMet;
}

} // namespace Qel::Bench
