// What finds parts of texts: pages with their totals by the search index, held against the same
// statements without it, in turn; and what the index costs when rows are written, and on the disk.
//
//     bench_search [postgresql://...]        an empty database; without it SQLite alone

#include "sql/Compile.h"
#include "store/Database.h"
#include "store/Schema.h"
#include "store/SearchIndex.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <random>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Rows = 100'000;
constexpr int WrittenRows = 5'000;
constexpr int Rounds = 3; ///< a scan takes seconds on a busy machine
constexpr int PageSize = 50;

/// What a term is taken from; the rarer kinds come last.
const std::array<QString, 16> Kinds = {
    u"人民医院"_s,         u"中医院"_s,     u"第一人民医院"_s, u"大药房有限公司"_s,
    u"卫生院"_s,           u"妇幼保健院"_s, u"医药有限公司"_s, u"社区卫生服务中心"_s,
    u"制药股份有限公司"_s, u"中心医院"_s,   u"药店"_s,         u"门诊部"_s,
    u"口腔医院"_s,         u"康复医院"_s,   u"协和医院"_s,     u"肿瘤医院"_s};

/// Two characters of 600 before a kind, and a number behind it.
class Names
{
public:
    QString Next()
    {
        const auto place = [&] { return QChar(0x4E00 + Pick(600) * 31); };
        const int kind = Pick(400) == 0 ? 14 : Pick(14);
        return QString(place()) + place() + Kinds[static_cast<size_t>(kind)] +
               QString::number(Pick(1'000));
    }
    QString Initials()
    {
        QString text;
        for (int count = 0; count < 8; ++count)
            text += QChar(u'A' + Pick(26));
        return text;
    }
    int Pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

private:
    std::mt19937 random_{20261121};
};

constexpr char InsertOrg[] = "INSERT INTO BAS_ORG (ORG_ID, ORG_CODE, ORG_NAME, ORG_ABBR,"
                             " ORG_NAME_PY, ORG_TYPE) VALUES (?1, ?2, ?3, ?4, ?5, '4')";

void InsertOrgs(Store::Connection &connection, Names &names, int from, int count)
{
    for (int row = from; row < from + count; ++row) {
        const QString name = names.Next();
        connection.Run(InsertOrg, {QString::number(row), u"H%1"_s.arg(row), name, name.left(6),
                                   names.Initials()});
    }
}

void Fill(Store::Connection &connection)
{
    Store::CreateSchema(connection);
    Store::Transaction transaction(connection);
    Store::DropIndexes(connection);
    Names names;
    InsertOrgs(connection, names, 0, Rows);
    for (int row = 0; row < Rows; ++row) {
        connection.Run(
            "INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID)"
            " VALUES (?1, ?2, ?3, ?4)",
            {QString::number(row), u"u%1"_s.arg(row), names.Next().left(3), QString::number(row)});
        connection.Run("INSERT INTO STK_ORG_SET (OWNER_ORGID, ORG_ID) VALUES (?1, ?2)",
                       {QString::number(row), QString::number((row + 77) % Rows)});
    }
    Store::CreateIndexes(connection);
    transaction.Commit();
    if (connection.CurrentDialect() == Store::Dialect::PostgreSql)
        connection.Execute("VACUUM ANALYZE");
    else
        connection.Execute("ANALYZE");
}

struct List
{
    const char *name;
    QString sql; ///< %1: the term
    QStringList terms;
};

/// The second of each length is common.
const QStringList Terms = {u"协"_s,  u"医"_s,     u"协和"_s,   u"中医"_s,
                           u"QX7"_s, u"协和医"_s, u"中医院"_s, u"协和医院"_s};
const QStringList FewTerms = {u"协"_s, u"中医"_s, u"协和医"_s, u"协和医院"_s};

/// As the screens send them.
const List Lists[] = {
    {"one table, four columns",
     u"SELECT A.* FROM (SELECT * FROM BAS_ORG ) A WHERE 1=1  AND ((UPPER(A.ORG_CODE) like '%%1%') "
     "or (UPPER(A.ORG_NAME) like '%%1%') or (UPPER(A.ORG_ABBR) like '%%1%') or "
     "(UPPER(A.ORG_NAME_PY) like '%%1%')) ORDER BY A.ORG_NAME "_s,
     Terms},
    {"users by their organisation",
     u"SELECT '0' AS SELECTED, C.*   FROM (SELECT A.ENABLE_FLAG, A.USER_ID, A.USER_CODE, "
     "A.USER_NAME, A.REMARK, B.ORG_NAME, B.ORG_ABBR, B.ORG_TYPE, B.ORG_NAME_PY           FROM "
     "USR_USER A, BAS_ORG B          WHERE A.ORG_ID = B.ORG_ID            AND B.LAST_OPERATE <> "
     "'D'            AND A.ENABLE_FLAG = '1'            AND B.ENABLE_FLAG = '1') C,        (SELECT "
     "USER_ID           FROM UNI_USER_UNION          WHERE UNION_ID = '10'           AND "
     "LAST_OPERATE <> 'D') D  WHERE C.USER_ID = D.USER_ID(+)    AND D.USER_ID IS NULL  AND "
     "((UPPER(C.ORG_NAME) like '%%1%') or (UPPER(C.ORG_ABBR) like '%%1%') or "
     "(UPPER(C.ORG_NAME_PY) like '%%1%'))"_s,
     Terms},
    {"either of two organisations",
     u" select a.org_name as Owner_OrgName, b.org_name, c.*  from bas_org a,      bas_org b,"
     "    stk_org_set c where a.org_id = c.owner_orgid  and b.org_id = c.org_id "
     " and c.last_operate <> 'D'  and ((UPPER(a.org_code) like '%%1%') or (UPPER(a.org_name) "
     "like '%%1%') or (UPPER(a.org_name_py) like '%%1%') or (UPPER(b.org_code) like '%%1%') "
     "or (UPPER(b.org_name) like '%%1%') or (UPPER(b.org_name_py) like '%%1%'))"
     " order by a.org_name, b.org_name "_s,
     FewTerms},
};

Sql::Catalog WithoutSearch()
{
    Store::SchemaCatalog();
    const auto read = [](const QString &path) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no %s", qUtf8Printable(path));
        return file.readAll();
    };
    return Sql::Catalog::FromCsv(read(u":/schema/columns.csv"_s), read(u":/schema/indexes.csv"_s));
}

qint64 NumberOf(Store::Connection &reader, const std::string &sql)
{
    const auto statement = reader.PrepareQuery(QByteArrayView(sql.data(), std::ssize(sql)));
    return statement->Step() ? statement->ColumnInt(0) : 0;
}

/// A page with its total, as the server goes about them. Returns the total.
qint64 RunPage(Store::Connection &reader, const Sql::CompiledQuery &query)
{
    const Store::Snapshot snapshot(reader);
    const bool many =
        !query.candidates.empty() && NumberOf(reader, query.candidates) == Sql::ManyCandidates;
    const std::string page = query.Page(PageSize, 0, many);
    const auto rows = reader.PrepareQuery(QByteArrayView(page.data(), std::ssize(page)));
    qint64 count = 0;
    for (; rows->Step(); ++count)
        for (int column = 0; column < rows->ColumnCount(); ++column)
            rows->ColumnBytes(column);
    return count < PageSize ? count : NumberOf(reader, query.Total(many));
}

void MeasureLists(Store::Database &database)
{
    const auto reader = database.OpenReader();
    const bool postgres = reader->CurrentDialect() == Store::Dialect::PostgreSql;
    if (postgres) // or a statement keeps the plan of its first time
        reader->Execute("SET plan_cache_mode = force_custom_plan");
    const Sql::Catalog plain = WithoutSearch();
    std::printf("%-28s %-14s %8s %10s %10s %8s\n", "page of 50 with total", "term", "found",
                "index ms", "scan ms", "ratio");
    for (const List &list : Lists) {
        for (const QString &term : list.terms) {
            const QByteArray sql = QString(list.sql).replace(u"%1"_s, term).toUtf8();
            const auto compile = [&](const Sql::Catalog &catalog) {
                return Sql::Compile(sql, catalog, reader->CurrentDialect());
            };
            const Sql::CompiledQuery indexed = compile(Store::SchemaCatalog());
            const Sql::CompiledQuery scanned = compile(plain);
            std::vector<double> index;
            std::vector<double> scan;
            qint64 found = 0;
            for (int round = 0; round < Rounds; ++round) {
                if (postgres)
                    reader->Execute("SET enable_bitmapscan = on");
                index.push_back(Milliseconds([&] { found = RunPage(*reader, indexed); }));
                if (postgres)
                    reader->Execute("SET enable_bitmapscan = off");
                scan.push_back(Milliseconds([&] {
                    if (RunPage(*reader, scanned) != found)
                        qFatal("another total: %s", sql.constData());
                }));
            }
            std::printf("%-28s %-14s %8lld %10.2f %10.2f %8.3f\n", list.name, qUtf8Printable(term),
                        static_cast<long long>(found), Median(index), Median(scan),
                        Median(index) / Median(scan));
        }
    }
}

double RowsPerSecond(int rows, double milliseconds)
{
    return rows * 1e3 / milliseconds;
}

/// Inserts and renames, rolled back, in turn with the index and without.
void MeasureWrites(Store::Connection &connection)
{
    std::vector<double> inserts[2];
    std::vector<double> updates[2];
    for (int round = 0; round < 3; ++round) {
        for (const bool indexed : {true, false}) {
            const Store::Transaction undone(connection);
            if (!indexed)
                Store::DropSearchIndexes(connection);
            Names names;
            inserts[indexed].push_back(RowsPerSecond(
                WrittenRows,
                Milliseconds([&] { InsertOrgs(connection, names, Rows, WrittenRows); })));
            updates[indexed].push_back(RowsPerSecond(
                WrittenRows, Milliseconds([&] {
                    for (int row = 0; row < WrittenRows; ++row)
                        connection.Run("UPDATE BAS_ORG SET ORG_NAME = ?2 WHERE ORG_ID = ?1",
                                       {QString::number(row * 19), names.Next()});
                })));
        }
    }
    for (const bool indexed : {true, false})
        std::printf("%-28s inserted %8.0f rows/s, renamed %8.0f rows/s\n",
                    indexed ? "with the index" : "without", Median(inserts[indexed]),
                    Median(updates[indexed]));
}

void PrintSizes(Store::Connection &connection)
{
    const bool postgres = connection.CurrentDialect() == Store::Dialect::PostgreSql;
    const auto megabytes = [&](const char *sqlite, const char *postgreSql) {
        return connection.QueryText(postgres ? postgreSql : sqlite).value_or(u"0"_s).toDouble() /
               1e6;
    };
    std::printf("BAS_ORG %.1f MB, its search index %.1f MB\n",
                megabytes("SELECT SUM(pgsize) FROM dbstat WHERE name = 'BAS_ORG'",
                          "SELECT pg_relation_size('bas_org')"),
                megabytes("SELECT SUM(pgsize) FROM dbstat WHERE name LIKE 'QEL_GRAMS_BAS_ORG%'",
                          "SELECT pg_relation_size('ix_bas_org_parts')"));
}

void Measure(const char *name, const QString &url)
{
    std::printf("\n%s\n", name);
    const auto database = Store::Database::Open(url);
    const auto connection = database->OpenWriter();
    Fill(*connection);
    MeasureLists(*database);
    PrintSizes(*connection);
    MeasureWrites(*connection);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    Measure("SQLite", u"sqlite:"_s + folder.filePath(u"search.sqlite"_s));
    if (const QStringList arguments = QCoreApplication::arguments(); arguments.size() > 1)
        Measure("PostgreSQL", arguments[1]);
    return 0;
}
