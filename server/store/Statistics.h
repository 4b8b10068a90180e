#pragma once

#include "store/Database.h"
#include "store/NowAndThen.h"

#include <chrono>

namespace Qel::Store {

/// Counts what the database chooses between ways to a statement's rows by: how many rows a table
/// has and an index's value leads to. Without it a join may begin at the wrong end. Open
/// connections go by it from their next statement on. Takes a tenth of a second for the sample
/// database; on SQLite posts wait for as long.
void UpdateStatistics(Connection &connection);

/// Whether there are none, or a table has grown to more than twice what was counted. Does not count
/// itself: takes a millisecond, whatever the size.
bool NeedStatistics(Connection &connection);

/// Brings the statistics up to date when the server starts, and as the tables grow, on a thread and
/// a connection of its own: nobody waits for it.
class StatisticsKeeper
{
public:
    /// `database` must outlive the keeper.
    explicit StatisticsKeeper(Database &database,
                              std::chrono::milliseconds interval = std::chrono::hours(1));

private:
    NowAndThen keep_;
};

} // namespace Qel::Store
