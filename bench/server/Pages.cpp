#include "Pages.h"

#include "HttpLine.h"
#include "ServerRun.h"

#include "sql/SqliteFunctions.h"
#include "store/Schema.h"
#include "support/Timing.h"
#include "wire/Wire.h"

#include <sqlite3.h>

#include <cstdio>
#include <map>
#include <vector>

namespace Qel::Bench {

namespace {

/// A statement prepared once and run with every column read, as a program on the database library
/// alone would do it.
class Direct
{
public:
    Direct(sqlite3 *database, const std::string &sql)
    {
        if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement_, nullptr) != SQLITE_OK)
            qFatal("%s", sqlite3_errmsg(database));
    }
    ~Direct() { sqlite3_finalize(statement_); }
    Q_DISABLE_COPY_MOVE(Direct)

    size_t Run()
    {
        size_t bytes = 0;
        while (sqlite3_step(statement_) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement_); ++column) {
                if (sqlite3_column_text(statement_, column))
                    bytes += size_t(sqlite3_column_bytes(statement_, column));
            }
        }
        sqlite3_reset(statement_);
        return bytes;
    }

private:
    sqlite3_stmt *statement_ = nullptr;
};

Sql::CompiledQuery Compiled(const PageCase &test)
{
    return Sql::Compile(test.sql.toUtf8(), Store::SchemaCatalog(), Sql::Dialect::Sqlite);
}

void PrintPlan(sqlite3 *database, const std::string &sql)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(database, ("EXPLAIN QUERY PLAN " + sql).c_str(), -1, &statement,
                           nullptr) != SQLITE_OK)
        qFatal("%s", sqlite3_errmsg(database));
    std::map<int, int> depths; // of each step
    while (sqlite3_step(statement) == SQLITE_ROW) {
        const auto parent = depths.find(sqlite3_column_int(statement, 1));
        const int depth = parent == depths.end() ? 2 : parent->second + 1;
        depths[sqlite3_column_int(statement, 0)] = depth;
        std::printf("%*s%s\n", 2 * depth, "",
                    reinterpret_cast<const char *>(sqlite3_column_text(statement, 3)));
    }
    sqlite3_finalize(statement);
}

} // namespace

void PrintPageHeads()
{
    std::printf("a page with its total; medians of rounds in turn\n%-44s %12s %14s %10s %8s\n", "",
                "server", "two statements", "empty trip", "ratio");
}

bool MeasurePage(const PageCase &test, sqlite3 *database, HttpLine &line)
{
    const Sql::CompiledQuery compiled = Compiled(test);
    Direct page(database, compiled.Page(test.pageSize, 0));
    Direct count(database, compiled.count);
    if (page.Run() == 0)
        qFatal("%s: no rows", test.name);
    const QByteArray query = Request(
        "POST /NorvaneSelectServlet",
        Wire::Encode(Wire::QueryRequest{test.sql, 1, test.pageSize, 2}, Wire::Format::Cbor));
    const QByteArray empty = Request("GET /healthz", {});

    std::vector<double> served;
    std::vector<double> direct;
    std::vector<double> trips;
    for (int round = 0; round < test.rounds; ++round) {
        served.push_back(Milliseconds([&] { line.Ask(query); }));
        direct.push_back(Milliseconds([&] {
            page.Run();
            count.Run();
        }));
        trips.push_back(Milliseconds([&] { line.Ask(empty); }));
    }
    const double peer = Median(direct) + Median(trips);
    const double ratio = Median(served) / peer;
    std::printf("%-44s %9.3f ms %11.3f ms %7.3f ms %8.2f <= %4.1f  %s\n", test.name, Median(served),
                Median(direct), Median(trips), ratio, test.goal,
                ratio <= test.goal ? "met" : "MISSED");
    return ratio <= test.goal;
}

void PrintPlans(const PageCase &test, sqlite3 *database)
{
    const Sql::CompiledQuery compiled = Compiled(test);
    std::printf("%s\n  page\n", test.name);
    PrintPlan(database, compiled.Page(test.pageSize, 0));
    std::printf("  total\n");
    PrintPlan(database, compiled.count);
}

sqlite3 *OpenPeer(const QString &file)
{
    sqlite3 *database = nullptr;
    if (sqlite3_open_v2(file.toUtf8().constData(), &database, SQLITE_OPEN_READONLY, nullptr) !=
        SQLITE_OK)
        qFatal("%s", sqlite3_errmsg(database));
    Sql::PrepareSqliteConnection(database);
    return database;
}

} // namespace Qel::Bench
