#include "SampleDatabase.h"
#include "ScreenStatement.h"

#include "sql/Compile.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// Every index of prices and trade is there for a statement that uses it. The steps of a plan name
/// the tables t1, t2, ... in the order of the statement.
class QueryPlanTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        data_ = std::make_unique<SampleDatabase>();
        Store::UpdateStatistics(*data_->connection);
    }

    void PageAndTotalGoThisWay_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QStringList>("steps");
        const auto row = [](const char *name, const QString &file, const QString &statement,
                            const QStringList &steps) {
            QTest::newRow(name) << file << statement << steps;
        };
        const QString rollback = u"rollback.txt"_s;
        const QString linesOfOrder = u"SEARCH t2 (ORD_ID=?)"_s;
        row("orders by date", rollback, u"rollback.orders.full"_s,
            {u"SEARCH t1 (ORD_DATE>? AND ORD_DATE<?)"_s, linesOfOrder});
        row("orders from a date on", rollback, u"rollback.orders.from"_s,
            {u"SEARCH t1 (ORD_DATE>?)"_s, linesOfOrder});
        row("orders by a part of the number", rollback, u"rollback.orders.code"_s,
            {u"SEARCH t1 (rowid=?)"_s, u"SCAN QEL_GRAMS_TRA_ORDER VIRTUAL TABLE INDEX 0:M1"_s,
             linesOfOrder});
        row("orders", rollback, u"rollback.orders.none"_s, {u"SCAN t1"_s, linesOfOrder});
        row("returns by date", rollback, u"rollback.returns.full"_s,
            {u"SEARCH t1 (LAST_UPDATE>? AND LAST_UPDATE<?)"_s, u"SEARCH t2 (SEND_ID=?)"_s});
        row("receipts by date", rollback, u"rollback.receipts.full"_s,
            {u"SEARCH t1 (CREATE_DATE>? AND CREATE_DATE<?)"_s});
        const QString prices = u"prices.txt"_s;
        row("a seller's price types", prices, u"prices.types"_s,
            {u"SEARCH t1 (UNION_ID=? AND SALE_ORGID=?)"_s});
        row("prices of a catalogue", prices, u"prices.products.all"_s,
            {u"SEARCH t2 (UNION_ID=?)"_s, u"SEARCH t1 (PRODUCT_ID=?)"_s,
             u"SEARCH t4 (UNION_ID=? AND SALE_ORGID=? AND PRODUCT_ID=?)"_s});
    }
    void PageAndTotalGoThisWay()
    {
        QFETCH(QString, file);
        QFETCH(QString, statement);
        QFETCH(QStringList, steps);
        const QString text = ScreenStatement(file, statement);
        QVERIFY(!text.isEmpty());
        const Sql::CompiledQuery query =
            Sql::Compile(text.toUtf8(), Store::SchemaCatalog(), Sql::Dialect::Sqlite);
        for (const std::string &sql : {query.Page(50, 0), query.count}) {
            const QStringList plan = Plan(QByteArray::fromStdString(sql));
            qsizetype at = -1;
            for (const QString &step : steps) {
                const qsizetype found = plan.indexOf(step, at + 1);
                QVERIFY2(found > at,
                         qPrintable(step + u" is not in order in:\n"_s + plan.join(u'\n')));
                at = found;
            }
            // What is not named is found by its key.
            for (const QString &step : plan) {
                if (step.startsWith(u"SCAN"_s) && !step.startsWith(u"SCAN QEL_GRAMS"_s))
                    QVERIFY2(steps.contains(step), qPrintable(step));
            }
        }
    }

    /// Beside the orders by a part of the number above. Others have a better way in (a user's
    /// groups, a catalogue) and look at the grams of what they find.
    void PartsOfTextsAreFoundByGrams_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("table");
        const auto row = [](const QString &file, const QString &statement, const QString &table) {
            QTest::newRow(qPrintable(statement)) << file << statement << table;
        };
        row(u"groups-and-pickers.txt"_s, u"orgs.text"_s, u"BAS_ORG"_s);
        row(u"groups-and-pickers.txt"_s, u"orgs.both"_s, u"BAS_ORG"_s);
        row(u"drug-stores.txt"_s, u"buyorgs.filtered"_s, u"BAS_ORG"_s);
        row(u"stock-and-rules.txt"_s, u"ruleorgs.filtered"_s, u"BAS_ORG"_s);
        row(u"members.txt"_s, u"candidates.text"_s, u"BAS_ORG"_s);
        row(u"group-products.txt"_s, u"uniproduct.out.text"_s, u"BAS_PRODUCT"_s);
        row(u"group-products.txt"_s, u"uniproduct.out.both"_s, u"BAS_PRODUCT"_s);
        row(u"rollback.txt"_s, u"rollback.receipts.code"_s, u"TRA_SEND"_s);
        row(u"users.txt"_s, u"candidateusers.user"_s, u"USR_USER"_s);
        row(u"users.txt"_s, u"candidateusers.org"_s, u"BAS_ORG"_s);
    }
    void PartsOfTextsAreFoundByGrams()
    {
        QFETCH(QString, file);
        QFETCH(QString, statement);
        QFETCH(QString, table);
        const QString text = ScreenStatement(file, statement);
        QVERIFY(!text.isEmpty());
        const Sql::CompiledQuery query =
            Sql::Compile(text.toUtf8(), Store::SchemaCatalog(), Sql::Dialect::Sqlite);
        for (const std::string &sql : {query.Page(50, 0), query.count, query.all}) {
            const QStringList plan = Plan(QByteArray::fromStdString(sql));
            const QString grams = u"SCAN QEL_GRAMS_"_s + table + u" VIRTUAL TABLE INDEX 0:M1"_s;
            const qsizetype at = plan.indexOf(grams);
            QVERIFY2(
                at > 0 &&
                    plan.filter(QRegularExpression(u"^SEARCH t\\d+ \\(rowid=\\?\\)$"_s)).size() ==
                        1,
                qPrintable(plan.join(u'\n')));
        }
    }

    void RulesLookUpByIndex_data()
    {
        QTest::addColumn<QByteArray>("sql");
        QTest::newRow("deliveries of a line")
            << QByteArray("SELECT 1 FROM TRA_SEND WHERE ORD_ITEM_ID = ?1");
        QTest::newRow("returns of a delivery")
            << QByteArray("SELECT 1 FROM TRA_RETURN WHERE SEND_ID = ?1");
        QTest::newRow("buyers of a price type")
            << QByteArray("SELECT 1 FROM PRC_UNI_PRICE_ORG WHERE PRICE_TYPE_ID = ?1");
        QTest::newRow("lines of an order")
            << QByteArray("SELECT 1 FROM TRA_ORDER_ITEM WHERE ORD_ID = ?1");
    }
    void RulesLookUpByIndex()
    {
        QFETCH(QByteArray, sql);
        const QStringList plan = Plan(sql);
        QCOMPARE(plan.size(), 1);
        QVERIFY2(plan[0].startsWith(u"SEARCH"_s), qPrintable(plan[0]));
    }

private:
    /// The steps, without the names of the indexes.
    QStringList Plan(const QByteArray &sql)
    {
        static const QRegularExpression index(
            u" USING (COVERING )?INDEX \\S+| LEFT-JOIN| USING INTEGER PRIMARY KEY"_s);
        const auto rows = data_->connection->Prepare("EXPLAIN QUERY PLAN " + sql);
        QStringList steps;
        while (rows->Step())
            steps += rows->ColumnText(3).remove(index);
        return steps;
    }

    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(QueryPlanTest)
#include "QueryPlanTest.moc"
