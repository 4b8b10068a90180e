#include "HttpLine.h"
#include "ServerRun.h"

#include "sql/SqliteFunctions.h"
#include "store/Database.h"
#include "store/Schema.h"
#include "support/Timing.h"
#include "wire/Wire.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <cstdio>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Organisations = 100'000;
constexpr int RegionCount = 1'000; // 100 organisations each
constexpr int Products = 5'000;    // all in one group's catalogue

struct Case
{
    const char *name;
    int pageSize;
    QString sql;
    double goal;
    int rounds; ///< fewer where a round takes tenths of a second
};

const Case Cases[]{
    {"50 of 100,000, LIKE filter that scans", 50,
     u"SELECT A.* FROM (SELECT * FROM BAS_ORG ) A WHERE 1=1  AND ((UPPER(A.ORG_CODE) like '%中医%') "
     "or (UPPER(A.ORG_NAME) like '%中医%') or (UPPER(A.ORG_ABBR) like '%中医%') or "
     "(UPPER(A.ORG_NAME_PY) like '%中医%')) ORDER BY A.ORG_NAME "_s,
     1.1, 31},
    {"50 of 100,000, indexed condition", 50,
     u"SELECT * FROM BAS_ORG WHERE REGION_ID='000123' ORDER BY ORG_NAME "_s, 3.0, 301},
    {"200 of 5,000, a group's catalogue", 200,
     u" SELECT A.*,    '0' AS SELECTED,    B.PRODUCT_SERIAL,    B.PRODUCT_NAME,    B.DOSE_NAME,    "
     "B.FULL_SPEC,    B.WRAP_NAME,    B.TRADE_NAME,    B.FACTORY_NAME,    B.FACTORY_ABBR  FROM "
     "UNI_PRODUCT A,    BAS_PRODUCT B  WHERE A.Union_ID='300001'   AND A.PRODUCT_ID=B.PRODUCT_ID  "
     "  AND nvl(A.LAST_OPERATE,'null') <> 'D' "_s,
     3.0, 101},
};

void FillCatalogue(Store::Connection &connection)
{
    const auto product = connection.Prepare(
        "INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_SERIAL, PRODUCT_NAME, DOSE_NAME, FULL_SPEC,"
        " WRAP_NAME, TRADE_NAME, FACTORY_NAME, FACTORY_ABBR)"
        " VALUES (?1, ?2, ?3, '片剂', '0.25g×24片/盒', '铝塑板', '安舒宁', ?4, ?5)");
    const auto membership =
        connection.Prepare("INSERT INTO UNI_PRODUCT (UNION_ID, PRODUCT_ID) VALUES ('300001', ?1)");
    for (int at = 0; at < Products; ++at) {
        const QString id = QString::number(500'001 + at);
        const QStringList row{id, u"YP"_s + id, u"阿莫西林%1片"_s.arg(at),
                              u"第%1制药有限公司"_s.arg(at % 230), u"第%1制药"_s.arg(at % 230)};
        for (int column = 0; column < row.size(); ++column)
            product->Bind(column + 1, row[column]);
        product->Step();
        product->Reset();
        membership->Bind(1, id);
        membership->Step();
        membership->Reset();
    }
}

void Fill(const QString &url)
{
    const auto database = Store::Database::Open(url);
    const auto connection = database->OpenWriter();
    Store::CreateSchema(*connection);
    Store::Transaction transaction(*connection);
    const auto insert = connection->Prepare(
        "INSERT INTO BAS_ORG (ORG_ID, ORG_CODE, ORG_NAME, ORG_ABBR, ORG_NAME_PY, ORG_TYPE,"
        " REGION_ID) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    const QStringList kinds{u"人民医院"_s, u"中医院"_s, u"妇幼保健院"_s, u"中心卫生院"_s,
                            u"大药房"_s};
    for (int at = 0; at < Organisations; ++at) {
        const QString id = QString::number(200'000 + at);
        const QString &kind = kinds[at % kinds.size()];
        const QStringList row{id,
                              u'H' + id,
                              u"第%1区%2"_s.arg(at / 5).arg(kind),
                              kind,
                              u"DQRMYY"_s,
                              u"4"_s,
                              u"%1"_s.arg(at % RegionCount, 6, 10, QChar(u'0'))};
        for (int column = 0; column < row.size(); ++column)
            insert->Bind(column + 1, row[column]);
        insert->Step();
        insert->Reset();
    }
    FillCatalogue(*connection);
    AddOperator(*connection);
    transaction.Commit();
}

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

bool Measure(const Case &test, sqlite3 *database, HttpLine &line)
{
    const Sql::CompiledQuery compiled =
        Sql::Compile(test.sql.toUtf8(), Store::SchemaCatalog(), Sql::Dialect::Sqlite);
    Direct page(database, compiled.Page(test.pageSize, 0));
    Direct count(database, compiled.count);
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
    std::printf("%-40s %9.3f ms %11.3f ms %7.3f ms %8.2f <= %4.1f  %s\n", test.name, Median(served),
                Median(direct), Median(trips), ratio, test.goal,
                ratio <= test.goal ? "met" : "MISSED");
    return ratio <= test.goal;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    sqlite3_initialize(); // before the server's parts configure it: the peer is SQLite as it comes
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"bench.sqlite"_s);
    Fill(u"sqlite:"_s + file);

    sqlite3 *database = nullptr;
    sqlite3_open_v2(file.toUtf8().constData(), &database, SQLITE_OPEN_READONLY, nullptr);
    Sql::PrepareSqliteConnection(database);
    std::printf("a page with its total; medians of rounds in turn\n%-40s %12s %14s %10s %8s\n", "",
                "server", "two statements", "empty trip", "ratio");
    bool met = true;
    {
        const ServerRun server(file);
        HttpLine line(server.Port());
        for (const Case &test : Cases)
            met = Measure(test, database, line) && met;
    }
    sqlite3_close(database);
    return met ? 0 : 2;
}
