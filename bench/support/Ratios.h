#pragma once

#include <span>

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

/// Runs the program's benchmarks, prints their medians and then one line a goal. Medians of several
/// repetitions, the benchmarks interleaved at random, so that a busy moment of the machine falls on
/// project and peer alike. Flags of the command line come last and win; an unknown one ends the
/// program with status 1. False if a goal was measured and missed.
bool MeasureGoals(int argc, char **argv, std::span<const Goal> goals);

/// One such line for medians (in milliseconds) that were taken in another way; true if
/// own / peer <= bound.
bool PrintAtMost(const char *what, double own, double peer, double bound);

} // namespace Qel::Bench
