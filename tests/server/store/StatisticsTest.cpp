#include "store/Statistics.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace Qel;

namespace {

/// `count` rows more, whose keys nobody has.
void AddRows(Store::Connection &connection, int count)
{
    Store::Transaction transaction(connection);
    const int there =
        connection.QueryText("SELECT COUNT(*) FROM STK_ORG_SET").value_or(u"0"_s).toInt();
    for (int at = there; at < there + count; ++at)
        connection.Run("INSERT INTO STK_ORG_SET (OWNER_ORGID, ORG_ID) VALUES ('200001', ?1)",
                       {QString::number(at)});
    transaction.Commit();
}

/// "SCAN A" or the like.
QString FirstStep(Store::Connection &connection, const QByteArray &sql)
{
    const auto plan = connection.Prepare("EXPLAIN QUERY PLAN " + sql);
    return plan->Step() ? plan->ColumnText(3) : QString();
}

} // namespace

class StatisticsTest : public QObject
{
    Q_OBJECT

private slots:
    void AreNeededWhereThereAreNone()
    {
        TestDatabase data;
        Store::Connection &connection = data.Connection();
        AddRows(connection, 150);
        QVERIFY(Store::NeedStatistics(connection));
        Store::UpdateStatistics(connection);
        QVERIFY(!Store::NeedStatistics(connection));
    }

    void AreNeededAgainWhereATableHasGrown()
    {
        if (TestsRunOnPostgres())
            QSKIP("PostgreSQL counts by itself");
        TestDatabase data;
        Store::Connection &connection = data.Connection();
        QVERIFY(!Store::NeedStatistics(connection)); // any plan does for so few rows
        AddRows(connection, 150);
        Store::UpdateStatistics(connection);
        AddRows(connection, 150);
        QVERIFY(!Store::NeedStatistics(connection));
        AddRows(connection, 1);
        QVERIFY(Store::NeedStatistics(connection));
    }

    void OpenConnectionsGoByThem()
    {
        if (TestsRunOnPostgres())
            QSKIP("how PostgreSQL plans is its own business");
        TestDatabase data;
        Store::Connection &connection = data.Connection();
        const auto fill = [&](const QByteArray &table, int count) {
            connection.Execute("DELETE FROM " + table + "; INSERT INTO " + table +
                               " WITH RECURSIVE N (X) AS (SELECT 1 UNION ALL SELECT X + 1 FROM N"
                               " WHERE X < " +
                               QByteArray::number(count) + ") SELECT X FROM N");
        };
        connection.Execute("CREATE TABLE A (K TEXT); CREATE INDEX IX_A ON A (K);"
                           "CREATE TABLE B (K TEXT); CREATE INDEX IX_B ON B (K)");
        fill("A", 10);
        fill("B", 5'000);
        Store::UpdateStatistics(connection);
        const auto reader = data.Database().OpenReader();
        const QByteArray join = "SELECT 1 FROM A, B WHERE A.K = B.K";
        QVERIFY(FirstStep(*reader, join).startsWith(u"SCAN A"_s));
        fill("A", 5'000);
        fill("B", 10);
        Store::UpdateStatistics(connection);
        reader->QueryText("SELECT COUNT(*) FROM A"); // with the first statement it takes notice
        QVERIFY(FirstStep(*reader, join).startsWith(u"SCAN B"_s));
    }

    void KeeperMakesThemBesideTheService()
    {
        TestDatabase data;
        AddRows(data.Connection(), 150);
        const Store::StatisticsKeeper keeper(data.Database(), 10ms);
        QTRY_VERIFY(!Store::NeedStatistics(data.Connection()));
        if (TestsRunOnPostgres())
            return;
        AddRows(data.Connection(), 200); // again, without a restart
        QTRY_VERIFY(!Store::NeedStatistics(data.Connection()));
    }

    void KeeperEndsInTheMiddleOfItsWork()
    {
        TestDatabase data;
        AddRows(data.Connection(), 150);
        const Store::Transaction others(data.Connection()); // it waits for this one, on SQLite
        QElapsedTimer timer;
        timer.start();
        {
            const Store::StatisticsKeeper keeper(data.Database());
        }
        QVERIFY(timer.elapsed() < 5'000);
    }
};

QTEST_GUILESS_MAIN(StatisticsTest)
#include "StatisticsTest.moc"
