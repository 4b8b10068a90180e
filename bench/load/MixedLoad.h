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
/// that are stored, one that is sent again under its key and seven indexed pages of changing texts;
/// of a thousand, ten of those are pages that scan, one is a list of all 100,000 organisations,
/// which the server sorts, and one a list by 3,000 keys.
MixedResult RunMixedLoad(const QString &database, int clients, std::chrono::seconds time);

} // namespace Qel::Bench
