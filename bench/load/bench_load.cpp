// Eight clients at once: how many pages and posts a second the server answers, beside what the
// database alone does with the same statements and rows over its C library. With --mixed what the
// server's memory does under a load of everything.

#include "Cases.h"
#include "MixedLoad.h"
#include "Rounds.h"
#include "Site.h"

#include "server/HttpLine.h"
#include "server/ServerRun.h"
#include "sql/Compile.h"
#include "store/Schema.h"
#include "support/Timing.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <cstdlib>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Clients = 8;

struct Plan
{
    int rounds = 9;
    std::chrono::milliseconds time{2'000};
    QString only; ///< "scan", "index", "write"; empty: all
};

double LoadAverage()
{
    double load = 0;
    return getloadavg(&load, 1) == 1 ? load : 0;
}

void PrintHeads()
{
    std::printf("%d connections; medians of rounds in turn, ratios with their spread\n"
                "%-44s %11s %11s  %22s %8s  %s\n",
                Clients, "", "server", "alone", "ratio", "goal", "load");
}

bool PrintRates(const QString &name, const Rates &rates, double goal)
{
    const std::vector<double> ratios = rates.Ratios();
    const auto [least, most] = std::ranges::minmax(ratios);
    const double ratio = Median(ratios);
    std::printf("%-44s %9.0f/s %9.0f/s  %5.2f (%.2f to %.2f) >= %.2f  %.1f  %s\n",
                qUtf8Printable(name), Median(rates.own), Median(rates.peer), ratio, least, most,
                goal, LoadAverage(), ratio >= goal ? "met" : "MISSED");
    std::fflush(stdout);
    return ratio >= goal;
}

template <typename Made>
using Each = std::array<std::unique_ptr<Made>, Clients>;

class LoadRun
{
public:
    LoadRun(const QString &name, const Site &site, const Plan &plan)
        : name_(name)
        , site_(site)
        , plan_(plan)
        , server_(site.Served())
    {
        for (auto &line : lines_)
            line = std::make_unique<HttpLine>(server_.Port());
    }

    bool Measure()
    {
        bool met = true;
        if (Wanted(u"scan"_s))
            met = MeasurePages(ScanningPage()) && met;
        if (Wanted(u"index"_s))
            met = MeasurePages(IndexedPage()) && met;
        if (Wanted(u"write"_s))
            met = MeasureWrites() && met;
        return met;
    }

private:
    bool Wanted(const QString &what) const { return plan_.only.isEmpty() || plan_.only == what; }

    QByteArray Ask(int client, const QByteArray &request)
    {
        return lines_[static_cast<std::size_t>(client)]->Ask(request);
    }

    static Each<Peer> OpenPeers(const QString &url)
    {
        Each<Peer> peers;
        for (auto &peer : peers)
            peer = OpenPeer(url);
        return peers;
    }

    bool MeasurePages(const LoadCase &test)
    {
        const auto peers = OpenPeers(site_.Served());
        const auto dialect = name_ == u"SQLite"_s ? Sql::Dialect::Sqlite : Sql::Dialect::PostgreSql;
        const auto query = Sql::Compile(test.sql.toUtf8(), Store::SchemaCatalog(), dialect);
        for (const auto &peer : peers)
            peer->Prepare(QByteArray::fromStdString(query.Page(PageSize, 0)),
                          QByteArray::fromStdString(query.count));
        const QByteArray request = PageRequest(test.sql);
        const Rates rates = MeasureInTurn(
            plan_.rounds, Clients, plan_.time, [&](int client) { Ask(client, request); },
            [&](int client) { peers[static_cast<std::size_t>(client)]->Read(); });
        return PrintRates(name_ + u", "_s + QString::fromUtf8(test.name), rates, test.goal);
    }

    bool MeasureWrites()
    {
        const auto peers = OpenPeers(site_.Copy());
        std::array<int, Clients> posted{};
        std::array<int, Clients> stored{};
        const Rates rates = MeasureInTurn(
            plan_.rounds, Clients, plan_.time,
            [&](int client) {
                int &number = posted[static_cast<std::size_t>(client)];
                ExpectStored(Ask(client, PostRequest(Change(client, number++))));
            },
            [&](int client) {
                int &number = stored[static_cast<std::size_t>(client)];
                peers[static_cast<std::size_t>(client)]->Store(Change(client, number++));
            });
        return PrintRates(name_ + u", post of a rule, log, key"_s, rates, WriteGoal);
    }

    QString name_;
    const Site &site_;
    const Plan &plan_;
    ServerRun server_;
    Each<HttpLine> lines_;
};

bool MeasureMemory(const QString &name, const Site &site, std::chrono::seconds time)
{
    const MixedResult result = RunMixedLoad(site.Served(), Clients, time);
    const MemoryTrend trend = TrendOf(result.memory);
    const MemorySample &first = result.memory.front();
    const MemorySample &last = result.memory.back();
    std::printf(
        "%s: %lld s of mixed load, %.0f answers/s; its own memory %.1f MiB at first, at most"
        " %.1f,\nbetween requests %.1f in the second half, there %+.1f KiB a minute,"
        " %+.0f KiB in all: %s\n(load %.1f; pages of files %.1f MiB at first, %.1f at last)\n",
        qUtf8Printable(name), static_cast<long long>(time.count()), result.rate,
        first.ownKiB / 1024, trend.mostKiB / 1024, trend.meanKiB / 1024, trend.slope, trend.growth,
        trend.isFlat ? "flat" : "GROWS", LoadAverage(), first.fileKiB / 1024, last.fileKiB / 1024);
    std::fflush(stdout);
    return trend.isFlat;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    // As in the server: its statistics cost SQLite a lock with each allocation.
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    sqlite3_initialize();

    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{u"database"_s, u"sqlite or postgresql; both."_s, u"name"_s},
                       {u"only"_s, u"scan, index or write; all."_s, u"what"_s},
                       {u"rounds"_s, u"Rounds of each; 9."_s, u"n"_s, u"9"_s},
                       {u"round-ms"_s, u"Milliseconds of a round; 2000."_s, u"ms"_s, u"2000"_s},
                       {u"mixed"_s, u"Watches the server's memory under mixed load instead."_s},
                       {u"minutes"_s, u"Of mixed load; 60."_s, u"n"_s, u"60"_s}});
    parser.process(application);
    const Plan plan{parser.value(u"rounds"_s).toInt(),
                    std::chrono::milliseconds(parser.value(u"round-ms"_s).toInt()),
                    parser.value(u"only"_s)};
    const std::chrono::seconds mixedTime(
        static_cast<qint64>(parser.value(u"minutes"_s).toDouble() * 60));

    bool met = true;
    if (!parser.isSet(u"mixed"_s))
        PrintHeads();
    for (const auto &[option, name, kind] :
         {std::tuple{u"sqlite"_s, u"SQLite"_s, Site::Kind::Sqlite},
          std::tuple{u"postgresql"_s, u"PostgreSQL"_s, Site::Kind::Postgres}}) {
        if (parser.isSet(u"database"_s) && parser.value(u"database"_s) != option)
            continue;
        const Site site(kind);
        met = (parser.isSet(u"mixed"_s) ? MeasureMemory(name, site, mixedTime)
                                        : LoadRun(name, site, plan).Measure()) &&
              met;
    }
    return met ? 0 : 2;
}
