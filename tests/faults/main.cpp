#include "faults/Bed.h"
#include "faults/Scenarios.h"

#include "dataset/QelError.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>

#include <algorithm>
#include <cstdio>
#include <random>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

/// In the order of the table.
const QList<Scenario> &Scenarios()
{
    static const QList<Scenario> scenarios{
        {u"kill"_s, u"server killed (`kill -9`) at random instants under load"_s, KillServer, 6, 50,
         1'000},
        {u"repeat"_s, u"one post sent many times under one key"_s, RepeatPost, 500, 5'000, 10'000},
        {u"edit"_s, u"fifty operators storing one row, and one list, at the same time"_s,
         EditOneRow, 6, 60, 1'000},
        {u"cut"_s, u"the answer cut, at every byte in the end"_s, CutAnswers, 12, 100, 1'000'000},
        {u"tls"_s, u"the same over TLS, from the first byte of the handshake on"_s, CutTls, 12, 100,
         1'000'000},
        {u"slow"_s, u"clients that are silent, send byte by byte or do not read"_s, SlowClients,
         100, 1'000, 1'000},
        {u"restart"_s, u"the database stopped, crashed or restarted under load"_s, RestartDatabase,
         3, 15, 100, u"postgresql"_s},
        {u"hang"_s, u"the database hangs under load, for two seconds"_s, HangDatabase, 1, 5, 50,
         u"postgresql"_s},
        {u"disk"_s, u"the disk of the database full under load"_s, FillDisk, 1, 5, 50},
        {u"log"_s, u"the disk of PostgreSQL's write-ahead log full under load"_s, FillLog, 1, 2, 20,
         u"postgresql"_s},
        {u"lock"_s, u"the database file locked by another process"_s, LockDatabase, 1, 2, 4,
         u"sqlite"_s},
    };
    return scenarios;
}

void Print(const QString &text)
{
    std::printf("%s\n", qUtf8Printable(text));
    std::fflush(stdout);
}

Outcome Run(const Scenario &scenario, const Task &task)
{
    const Stopwatch watch;
    Outcome outcome = scenario.run(task);
    outcome.what = scenario.what;
    outcome.seconds = std::chrono::duration<double>(watch.Elapsed()).count();
    Print(u"%1 (seed %2): %3; %4; %5 s; %6"_s.arg(scenario.name)
              .arg(task.seed)
              .arg(outcome.count, outcome.worst)
              .arg(outcome.seconds, 0, 'f', 1)
              .arg(outcome.findingCount == 0 ? u"nothing found"_s
                                             : u"%1 findings"_s.arg(outcome.findingCount)));
    for (const QString &finding : outcome.findings)
        Print(u"  "_s + finding);
    return outcome;
}

int Main(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Faults against the real server, and what must hold all the same."_s);
    parser.addHelpOption();
    parser.addOptions({
        {u"database"_s, u"sqlite or postgresql."_s, u"name"_s, u"sqlite"_s},
        {u"only"_s, u"Only these scenarios, parted by commas."_s, u"names"_s},
        {u"size"_s, u"How much: quick, share or full."_s, u"size"_s, u"quick"_s},
        {u"count"_s, u"How much, as a number, of each scenario."_s, u"number"_s},
        {u"seed"_s, u"Of what is left to chance; otherwise from the clock."_s, u"number"_s},
        {u"bare"_s, u"Without the sample data."_s},
        {u"patience"_s, u"How many times the allowed times may be exceeded."_s, u"factor"_s,
         u"1"_s},
        {u"table"_s, u"Write the results into this file."_s, u"file"_s},
        {u"build"_s, u"What is tested, for the table."_s, u"name"_s},
    });
    parser.process(arguments);

    const auto bed = Bed::Make(parser.value(u"database"_s));
    const QString size = parser.value(u"size"_s);
    const QStringList only = parser.value(u"only"_s).split(u',', Qt::SkipEmptyParts);
    const quint64 seed =
        parser.isSet(u"seed"_s) ? parser.value(u"seed"_s).toULongLong() : std::random_device()();
    const QString heading =
        u"%1, %2, seed %3:"_s
            .arg(QDate::currentDate().toString(Qt::ISODate), parser.value(u"build"_s))
            .arg(seed);
    QList<Outcome> outcomes;
    for (const Scenario &scenario : Scenarios()) {
        if (!only.isEmpty() && !only.contains(scenario.name))
            continue;
        if (!scenario.only.isEmpty() && scenario.only != bed->Name())
            continue;
        int count = size == u"full"    ? scenario.full
                    : size == u"share" ? scenario.share
                                       : scenario.quick;
        if (parser.isSet(u"count"_s))
            count = parser.value(u"count"_s).toInt();
        outcomes += Run(scenario, {*bed, count, seed, !parser.isSet(u"bare"_s),
                                   parser.value(u"patience"_s).toDouble()});
        if (parser.isSet(u"table"_s)) // after each, for a run that is broken off
            WriteTable(parser.value(u"table"_s), bed->Name(), heading, outcomes);
    }
    const bool good = !outcomes.isEmpty() && std::ranges::all_of(outcomes, [](const Outcome &one) {
        return one.findingCount == 0;
    });
    return good ? 0 : 1;
}

} // namespace

} // namespace Qel::Faults

int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    try {
        return Qel::Faults::Main(QCoreApplication::arguments());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "qel-faults: %s\n", error.what());
        return 1;
    }
}
