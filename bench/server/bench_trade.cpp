// Pages of the rollback screen and of the price screen, of the sample database. With --plans it
// prints how SQLite goes about each instead.

#include "HttpLine.h"
#include "Pages.h"
#include "ServerRun.h"

#include "demo/Demo.h"
#include "store/Database.h"
#include "store/Schema.h"
#include "store/Statistics.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

const QDate Today(2026, 11, 21);

/// The statements that the tests of the two screens expect, by name.
QHash<QString, QString> Statements()
{
    QHash<QString, QString> statements;
    for (const QString &name : {u"/rollback.txt"_s, u"/prices.txt"_s}) {
        QFile file(QStringLiteral(QEL_STATEMENTS) + name);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no %s", qUtf8Printable(file.fileName()));
        for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
            const qsizetype quote = line.indexOf(u'"');
            if (quote > 0)
                statements.insert(line.left(quote).trimmed(),
                                  line.mid(quote + 1, line.lastIndexOf(u'"') - quote - 1));
        }
    }
    return statements;
}

/// A statement with all filters of its tab, filled in otherwise.
struct Filters
{
    QString from;
    QString to;
    QString product;
    QString state = u"0"_s;

    QString In(QString sql) const
    {
        return sql.replace(u"2024-03-05 00:00:00"_s, from)
            .replace(u"2024-03-12 23:59:59"_s, to)
            .replace(u"阿莫x"_s, product)
            .replace(u"阿莫X"_s, product)
            .replace(u"阿莫"_s, product)
            .replace(u"医院y"_s, u"医院"_s)
            .replace(u"医院Y"_s, u"医院"_s)
            .replace(u"%dd%"_s, u"%DD%"_s)
            .replace(u"CONFIRM_FLAG='2'"_s, u"CONFIRM_FLAG='%1'"_s.arg(state));
    }
};

/// Fills the file; gives the seller that quotes most to the group 300001.
QString Fill(const QString &url)
{
    const auto database = Store::Database::Open(url);
    const auto connection = database->OpenWriter();
    Store::CreateSchema(*connection);
    Demo::Fill(*connection, Today);
    AddOperator(*connection, u"699999"_s, u"200001"_s);
    Store::UpdateStatistics(*connection);
    return connection
        ->QueryText("SELECT SALE_ORGID FROM PRC_UNI_PRICE_PRODUCT WHERE UNION_ID = '300001'"
                    " GROUP BY SALE_ORGID ORDER BY COUNT(*) DESC")
        .value_or(QString());
}

std::vector<PageCase> Cases(const QString &seller)
{
    const QHash<QString, QString> sql = Statements();
    const Filters week{u"2026-11-14 00:00:00"_s, u"2026-11-21 23:59:59"_s, u"片"_s};
    const Filters all{u"2024-11-01 00:00:00"_s, u"2026-11-21 23:59:59"_s, u"片"_s};
    const QString orders = sql[u"rollback.orders.full"_s];
    const QString returns = sql[u"rollback.returns.full"_s];
    const QString receipts = sql[u"rollback.receipts.full"_s];
    const QString prices = QString(sql[u"prices.products.all"_s])
                               .replace(u"'501'"_s, u'\'' + seller + u'\'')
                               .replace(u"'10'"_s, u"'300001'"_s);
    return {
        {"50 order lines of the last week, all filters", 50, week.In(orders), 3.0, 101},
        {"50 order lines of two years, all filters", 50, all.In(orders), 1.1, 21},
        {"50 order lines, no filter", 50, sql[u"rollback.orders.none"_s], 3.0, 21},
        {"order lines of one number, no dates", 50,
         QString(sql[u"rollback.orders.code"_s]).replace(u"DD-01"_s, u"DD00019964"_s), 3.0, 51},
        {"50 returns of the last week, all filters", 50, week.In(returns), 3.0, 101},
        {"50 returns of two years, all filters", 50, all.In(returns), 1.1, 51},
        {"50 receipts of the last week, all filters", 50, week.In(receipts), 3.0, 101},
        {"50 receipts of two years, all filters", 50, all.In(receipts), 1.1, 21},
        {"50 receipts, no filter", 50, sql[u"rollback.receipts.none"_s], 3.0, 21},
        {"receipts of one number, no dates", 50,
         QString(sql[u"rollback.receipts.code"_s]).replace(u"DD-01"_s, u"DD00019865"_s), 3.0, 51},
        {"200 products with nine prices", 200, prices, 3.0, 51},
    };
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    sqlite3_initialize(); // before the server's parts configure it: the peer is SQLite as it comes
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"bench.sqlite"_s);
    const std::vector<PageCase> cases = Cases(Fill(u"sqlite:"_s + file));

    sqlite3 *database = OpenPeer(file);
    bool met = true;
    if (QCoreApplication::arguments().contains(u"--plans"_s)) {
        for (const PageCase &test : cases)
            PrintPlans(test, database);
    } else {
        PrintPageHeads();
        const ServerRun server(u"sqlite:"_s + file);
        HttpLine line(server.Port());
        for (const PageCase &test : cases)
            met = MeasurePage(test, database, line) && met;
    }
    sqlite3_close(database);
    return met ? 0 : 2;
}
