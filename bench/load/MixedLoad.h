#pragma once

#include "Memory.h"

#include <QString>

#include <chrono>
#include <vector>

namespace Qel::Bench {

struct MixedResult
{
    double rate = 0;                  ///< answers a second
    std::vector<MemorySample> memory; ///< of the server, every few seconds
};

/// A server on the database under a load of everything: of ten requests a client sends two posts
/// that are stored, one that is sent again under its key, six indexed pages of changing texts, and
/// one page in ten times is one that scans.
MixedResult RunMixedLoad(const QString &database, int clients, std::chrono::seconds time);

} // namespace Qel::Bench
