#include "support/Ratios.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace Qel::Bench {

namespace {

/// Prints what the console reporter prints, and keeps the medians of the processor time: what else
/// the machine does is not counted.
class MedianReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.aggregate_name == "median")
                medians_[run.run_name.function_name] = run.GetAdjustedCPUTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }

    const std::map<std::string, double> &Medians() const { return medians_; }

private:
    std::map<std::string, double> medians_;
};

/// One line of the table; gives `met` back.
bool PrintLine(const char *what, double project, double peer, double ratio, const char *sign,
               double bound, bool met)
{
    std::printf("%-46s %9.3f ms %9.3f ms %9.3f %s %7g  %s\n", what, project, peer, ratio, sign,
                bound, met ? "met" : "MISSED");
    return met;
}

bool PrintGoals(const std::map<std::string, double> &medians, std::span<const Goal> goals)
{
    bool allMet = true;
    std::printf("\n%-46s %12s %12s %9s %10s\n", "ratio of medians", "project", "peer", "ratio",
                "goal");
    for (const Goal &goal : goals) {
        const auto project = medians.find(goal.project);
        const auto peer = medians.find(goal.peer);
        if (project == medians.end() || peer == medians.end())
            continue;
        const double ratio =
            goal.peerAtLeast ? peer->second / project->second : project->second / peer->second;
        const bool met = goal.peerAtLeast ? ratio >= goal.bound : ratio <= goal.bound;
        allMet = PrintLine(goal.what, project->second, peer->second, ratio,
                           goal.peerAtLeast ? ">=" : "<=", goal.bound, met) &&
                 allMet;
    }
    return allMet;
}

} // namespace

bool MeasureGoals(int argc, char **argv, std::span<const Goal> goals)
{
    std::string defaults[] = {"--benchmark_repetitions=7", "--benchmark_min_time=0.05",
                              "--benchmark_enable_random_interleaving=true",
                              "--benchmark_report_aggregates_only=true"};
    std::vector<char *> arguments{argv[0]};
    for (std::string &flag : defaults)
        arguments.push_back(flag.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        std::exit(EXIT_FAILURE);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return PrintGoals(reporter.Medians(), goals);
}

bool PrintAtMost(const char *what, double own, double peer, double bound)
{
    const double ratio = own / peer;
    return PrintLine(what, own, peer, ratio, "<=", bound, ratio <= bound);
}

} // namespace Qel::Bench
