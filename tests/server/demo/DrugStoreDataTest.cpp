#include "SampleDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// The sample drug stores and who works with them.
class DrugStoreDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void HoldsSoMany_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("count");
        const auto row = [](const char *name, const QByteArray &rows, int count) {
            QTest::newRow(name) << rows << count;
        };
        row("drug stores", "TRA_BUY_CATALOG WHERE LAST_OPERATE <> 'D'", 1500);
        row("assignments", "TRA_USER_BUY_CATALOG WHERE LAST_OPERATE <> 'D'", 6000);
    }
    void HoldsSoMany()
    {
        QFETCH(QByteArray, rows);
        QTEST(data_->Number("SELECT COUNT(*) FROM " + rows), "count");
    }

    void HoldsOfEachKind_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("least");
        const auto row = [](const char *name, const QByteArray &rows, int least) {
            QTest::newRow(name) << rows << least;
        };
        const QByteArray assigned = "TRA_USER_BUY_CATALOG WHERE LAST_OPERATE <> 'D' AND ";
        row("link on", assigned + "RELATION_FLAG = '1'", 3000);
        row("link off", assigned + "RELATION_FLAG = '0'", 1500);
        row("nothing stored of the link", assigned + "RELATION_FLAG IS NULL", 400);
        row("deleted drug stores", "TRA_BUY_CATALOG WHERE LAST_OPERATE = 'D'", 5);
        row("their assignments", "TRA_USER_BUY_CATALOG WHERE LAST_OPERATE = 'D'", 20);
        row("assigned and disabled",
            "TRA_USER_BUY_CATALOG A, USR_USER B WHERE A.USER_ID = B.USER_ID"
            " AND B.ENABLE_FLAG = '0' AND A.LAST_OPERATE <> 'D'",
            20);
        for (const QByteArray type : {"4", "5"}) {
            const QByteArray org =
                "BAS_ORG O WHERE O.LAST_OPERATE <> 'D' AND O.ORG_TYPE = '" + type + "' AND ";
            row(("with drug stores, type " + type).constData(),
                org + "EXISTS (SELECT 1 FROM TRA_BUY_CATALOG C WHERE C.BUY_ORGID = O.ORG_ID"
                      " AND C.LAST_OPERATE <> 'D')",
                100);
            row(("without any, type " + type).constData(),
                org + "NOT EXISTS (SELECT 1 FROM TRA_BUY_CATALOG C WHERE C.BUY_ORGID = O.ORG_ID)",
                20);
        }
        row("users left over of an organisation with drug stores",
            "USR_USER U WHERE U.LAST_OPERATE <> 'D' AND U.ENABLE_FLAG = '1' AND EXISTS (SELECT 1"
            " FROM TRA_BUY_CATALOG C WHERE C.BUY_ORGID = U.ORG_ID AND NOT EXISTS (SELECT 1 FROM"
            " TRA_USER_BUY_CATALOG A WHERE A.CATALOG_ID = C.CATALOG_ID"
            " AND A.USER_ID = U.USER_ID))",
            400);
    }
    void HoldsOfEachKind()
    {
        QFETCH(QByteArray, rows);
        QFETCH(int, least);
        const int count = data_->Number("SELECT COUNT(*) FROM " + rows);
        QVERIFY2(count >= least, QByteArray::number(count).constData());
    }

    /// Each row is a query for what must not be.
    void HoldsNone_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const char *name, const QByteArray &rows) {
            QTest::newRow(name) << rows;
        };
        row("drug store of who keeps none",
            "TRA_BUY_CATALOG C WHERE NOT EXISTS (SELECT 1 FROM BAS_ORG O WHERE O.ORG_ID = C.BUY_ORGID"
            " AND O.ORG_TYPE IN ('4', '5') AND O.LAST_OPERATE <> 'D')");
        row("name twice in an organisation",
            "(SELECT 1 FROM TRA_BUY_CATALOG WHERE LAST_OPERATE <> 'D'"
            " GROUP BY BUY_ORGID, CATALOG_NAME HAVING COUNT(*) > 1)");
        row("name of more than ten characters",
            "TRA_BUY_CATALOG WHERE LENGTH(CATALOG_NAME) NOT BETWEEN 1 AND 10");
        row("assignment of another organisation's user or drug store",
            "TRA_USER_BUY_CATALOG A WHERE NOT EXISTS (SELECT 1 FROM TRA_BUY_CATALOG C, USR_USER U"
            " WHERE C.CATALOG_ID = A.CATALOG_ID AND U.USER_ID = A.USER_ID"
            " AND C.BUY_ORGID = A.BUY_ORGID AND U.ORG_ID = A.BUY_ORGID)");
        row("live assignment to a deleted drug store or of a deleted user",
            "TRA_USER_BUY_CATALOG A, TRA_BUY_CATALOG C, USR_USER U WHERE C.CATALOG_ID ="
            " A.CATALOG_ID AND U.USER_ID = A.USER_ID AND A.LAST_OPERATE <> 'D'"
            " AND (C.LAST_OPERATE = 'D' OR U.LAST_OPERATE = 'D')");
        row("drug store without users",
            "TRA_BUY_CATALOG C WHERE NOT EXISTS (SELECT 1 FROM TRA_USER_BUY_CATALOG A"
            " WHERE A.CATALOG_ID = C.CATALOG_ID)");
        row("drug store that nobody stored",
            "TRA_BUY_CATALOG C WHERE NOT EXISTS (SELECT 1 FROM USR_USER U WHERE U.USER_ID ="
            " C.LAST_USER_ID AND U.USER_NAME = C.LAST_USER) OR C.LAST_UPDATE IS NULL");
        row("login code twice", "(SELECT 1 FROM USR_USER GROUP BY USER_CODE HAVING COUNT(*) > 1)");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    void TheFirstPageShowsDrugStores()
    {
        QVERIFY(data_->Number("SELECT COUNT(*) FROM TRA_BUY_CATALOG WHERE LAST_OPERATE <> 'D' AND"
                              " BUY_ORGID IN (SELECT ORG_ID FROM BAS_ORG WHERE ORG_TYPE IN ('4',"
                              " '5') AND LAST_OPERATE <> 'D' ORDER BY ORG_ID LIMIT 20)") >= 20);
    }

private:
    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(DrugStoreDataTest)
#include "DrugStoreDataTest.moc"
