// Every SELECT that the screens send, on SQLite and on PostgreSQL, as a page of 50 with its total
// and as the whole list. An empty database is filled with the sample data; --grow N adds N copies
// of its organisations, products, prices and trade to the same groups.

#include "support/Timing.h"

#include "demo/Demo.h"
#include "store/Database.h"
#include "store/QueryRunner.h"
#include "store/Schema.h"
#include "store/Statistics.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>

#include <cstdio>
#include <memory>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

const QDate Today(2026, 11, 21);
constexpr int PageSize = 50;
constexpr int MostRounds = 15;
constexpr qint64 Patience = 3'000; ///< milliseconds for one statement in one way

/// A column whose values become those of a copy.
bool IsCopied(const Sql::Column &column)
{
    static const QStringList keys{
        u"ORG_ID"_s,   u"ORG_CODE"_s,    u"PRODUCT_ID"_s,    u"PRODUCT_SERIAL"_s, u"FACTORY_ID"_s,
        u"USER_ID"_s,  u"USER_CODE"_s,   u"PRICE_TYPE_ID"_s, u"PRICE_ID"_s,       u"ORD_ID"_s,
        u"ORD_CODE"_s, u"ORD_ITEM_ID"_s, u"SEND_ID"_s,       u"RETURN_ID"_s,      u"CATALOG_ID"_s,
        u"LOG_ID"_s,   u"ID"_s};
    const QString name = QString::fromStdString(column.name);
    return keys.contains(name) || name.endsWith(u"ORGID"_s);
}

void Grow(Store::Connection &connection, int copies)
{
    static const QStringList kept{u"BAS_REGION"_s, u"UNI_UNION"_s, u"UNI_ORG_TYPE"_s,
                                  u"UNI_UNION_RULE"_s};
    Store::Transaction transaction(connection);
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        const QString name = QString::fromStdString(table.name);
        if (kept.contains(name) || name.startsWith(u"SRV_"_s))
            continue;
        for (int copy = 1; copy <= copies; ++copy) {
            QStringList columns;
            QStringList values;
            for (const Sql::Column &column : table.columns) {
                const QString one = QString::fromStdString(column.name);
                columns << one;
                values << (IsCopied(column) ? one + u"||'-%1'"_s.arg(copy) : one);
            }
            const QString key = columns.at(table.primaryKey.back());
            connection.Execute(u"INSERT INTO %1 (%2) SELECT %3 FROM %1 WHERE %4 NOT LIKE '%-%'"_s
                                   .arg(name, columns.join(u','), values.join(u','), key)
                                   .toUtf8());
        }
    }
    transaction.Commit();
}

void FillIfEmpty(const QString &url, int copies)
{
    const auto connection = Store::Database::Open(url)->OpenWriter();
    if (Store::HasSchema(*connection))
        return;
    Store::CreateSchema(*connection);
    Demo::Fill(*connection, Today);
    if (copies > 0)
        Grow(*connection, copies);
    Store::UpdateStatistics(*connection);
}

struct Named
{
    QString name;
    QString sql;
};

/// The keys of the expected texts name nothing: those of records that have much to show.
QString WithSampleKeys(Store::Connection &connection, const QString &file, QString sql)
{
    static const QRegularExpression parted(u"'(\\d+)''(\\d+)'"_s);
    sql.replace(parted, u"'\\1\\2'"_s);
    const auto mostNamed = [&](const char *column, const char *table) {
        return connection
            .QueryText(QByteArray("SELECT ") + column + " FROM " + table + " GROUP BY " + column +
                       " ORDER BY COUNT(*) DESC, " + column)
            .value_or(QString());
    };
    const QString org = file == u"prices.txt" ? mostNamed("SALE_ORGID", "PRC_UNI_PRICE_PRODUCT")
                        : file == u"drug-stores.txt" ? mostNamed("BUY_ORGID", "TRA_BUY_CATALOG")
                        : file == u"stock-and-rules.txt"
                            ? mostNamed("OWNER_ORGID", "STK_ORG_SET")
                            : mostNamed("ORG_ID", "BAS_ORG_AFFILIATION");
    const QList<QStringList> keys{
        {u"10"_s, mostNamed("UNION_ID", "UNI_PRODUCT")},
        {u"20"_s, mostNamed("UNION_ID", "UNI_PRODUCT")},
        {u"501"_s, org},
        {u"71"_s, mostNamed("CATALOG_ID", "TRA_USER_BUY_CATALOG")},
        {u"700001"_s, mostNamed("USER_ID", "UNI_USER_UNION")},
        {u"1301"_s, mostNamed("REGION_ID", "BAS_ORG")},
        {u"2024-03-05 00:00:00"_s, Today.addDays(-7).toString(u"yyyy-MM-dd 00:00:00"_s)},
        {u"2024-03-12 23:59:59"_s, Today.toString(u"yyyy-MM-dd 23:59:59"_s)},
    };
    for (const QStringList &key : keys)
        sql.replace(u'\'' + key[0] + u'\'', u'\'' + key[1] + u'\'');
    return sql;
}

std::vector<Named> Statements(Store::Connection &connection)
{
    std::vector<Named> statements;
    const QDir folder(QStringLiteral(QEL_STATEMENTS));
    for (const QString &name : folder.entryList({u"*.txt"_s}, QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no %s", qUtf8Printable(file.fileName()));
        for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
            const qsizetype quote = line.indexOf(u'"');
            if (quote < 1)
                continue;
            const QString sql = line.mid(quote + 1, line.lastIndexOf(u'"') - quote - 1);
            if (sql.trimmed().startsWith(u"select"_s, Qt::CaseInsensitive))
                statements.push_back(
                    {line.left(quote).trimmed(), WithSampleKeys(connection, name, sql)});
        }
    }
    return statements;
}

/// How both go about the page, its total and the list.
void PrintPlans(const QString &sql, const QStringList &urls)
{
    for (const QString &url : urls) {
        const auto connection =
            Store::Database::Open(url)->OpenReader(); // a writer plans otherwise
        const bool sqlite = connection->CurrentDialect() == Sql::Dialect::Sqlite;
        const Sql::CompiledQuery query =
            Sql::Compile(sql.toUtf8(), Store::SchemaCatalog(), connection->CurrentDialect());
        for (const std::string &text : {query.Page(PageSize, 0), query.count, query.all}) {
            std::printf("\n%s\n", text.c_str());
            const auto rows =
                connection->Prepare((sqlite ? "EXPLAIN QUERY PLAN " : "EXPLAIN (ANALYZE, COSTS) ") +
                                    QByteArray::fromStdString(text));
            while (rows->Step())
                std::printf("  %s\n", qUtf8Printable(rows->ColumnText(sqlite ? 3 : 0)));
        }
    }
}

class Side
{
public:
    explicit Side(const QString &url)
        : database_(Store::Database::Open(url))
        , reader_(database_->OpenReader())
    {
    }

    /// Median milliseconds; `rows` gets how many there are.
    double Measure(const QString &sql, int pageSize, qint64 &rows)
    {
        QElapsedTimer clock;
        clock.start();
        std::vector<double> times;
        const int page = pageSize > 0 ? 1 : 0;
        rows = runner_.Run(sql, page, pageSize).total; // compiled, and in the memory
        while (times.empty() || (times.size() < MostRounds && clock.elapsed() < Patience))
            times.push_back(Milliseconds([&] { runner_.Run(sql, page, pageSize); }));
        return Median(times);
    }

private:
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<Store::Connection> reader_;
    Store::QueryRunner runner_{*reader_, {.rows = 10'000'000, .bytes = 4ll << 30}};
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument(u"databases"_s, u"sqlite:FILE postgresql://..."_s);
    const QCommandLineOption grow(u"grow"_s, u"copies to add to empty databases"_s, u"N"_s, u"0"_s);
    parser.addOption(grow);
    const QCommandLineOption plans(u"plans"_s, u"print how this statement is gone about instead"_s,
                                   u"NAME"_s);
    parser.addOption(plans);
    parser.addHelpOption();
    parser.process(application);
    const QStringList urls = parser.positionalArguments();
    if (urls.size() != 2)
        parser.showHelp(2);
    for (const QString &url : urls)
        FillIfEmpty(url, parser.value(grow).toInt());

    const auto connection = Store::Database::Open(urls[0])->OpenWriter();
    const std::vector<Named> statements = Statements(*connection);
    if (parser.isSet(plans)) {
        for (const auto &[name, sql] : statements) {
            if (name == parser.value(plans))
                PrintPlans(sql, urls);
        }
        return 0;
    }
    Side sqlite(urls[0]);
    Side postgres(urls[1]);
    std::printf("| Statement | Rows | Page: SQLite | PostgreSQL | List: SQLite | PostgreSQL |\n"
                "|---|---|---|---|---|---|\n");
    for (const auto &[name, sql] : statements) {
        qint64 rows = 0;
        qint64 same = 0;
        const double page[] = {sqlite.Measure(sql, PageSize, rows),
                               postgres.Measure(sql, PageSize, same)};
        const double list[] = {sqlite.Measure(sql, 0, rows), postgres.Measure(sql, 0, same)};
        std::printf("| %s | %lld%s | %.1f | %.1f | %.1f | %.1f |\n", qUtf8Printable(name), rows,
                    rows == same ? "" : " (differs)", page[0], page[1], list[0], list[1]);
        std::fflush(stdout);
    }
    return 0;
}
