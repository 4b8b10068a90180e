#pragma once

#include "faults/Report.h"

#include <QString>

#include <chrono>
#include <functional>

namespace Qel::Faults {

class Bed;

/// What one run of a scenario is told.
struct Task
{
    Bed &bed;
    int count = 0;              ///< kills, restarts, rounds, ...: what the scenario counts
    quint64 seed = 0;           ///< of everything that is left to chance
    bool withSampleData = true; ///< or only the rows of the clients
    /// How much longer than on an idle machine things may take.
    double patience = 1;
};

/// A fault, and what must hold all the same.
struct Scenario
{
    QString name; ///< on the command line
    QString what; ///< in the table
    Outcome (*run)(const Task &task);
    int quick; ///< counts: in a few seconds
    int share; ///< within the time box of the checks of a change
    int full;
    QString only = {}; ///< the database that it is for; empty: each
};

Outcome KillServer(const Task &task);
Outcome CutAnswers(const Task &task);
Outcome CutTls(const Task &task);
Outcome SlowClients(const Task &task);
Outcome LockDatabase(const Task &task);
Outcome RestartDatabase(const Task &task);
Outcome HangDatabase(const Task &task);
Outcome FillDisk(const Task &task);
Outcome FillLog(const Task &task);
Outcome RepeatPost(const Task &task);
Outcome EditOneRow(const Task &task);

} // namespace Qel::Faults
