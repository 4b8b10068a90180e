#include "SampleDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// Prices of the sample database: what sellers quote, to whom.
class PriceDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void EveryGroupHasSeveralSellersWithTypesPricesAndBuyers_data()
    {
        QTest::addColumn<QByteArray>("table");
        for (const char *table :
             {"PRC_UNI_PRICE_TYPE", "PRC_UNI_PRICE_PRODUCT", "PRC_UNI_PRICE_ORG"})
            QTest::newRow(table) << QByteArray(table);
    }
    void EveryGroupHasSeveralSellersWithTypesPricesAndBuyers()
    {
        QFETCH(QByteArray, table);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM UNI_UNION U WHERE U.LAST_OPERATE <> 'D' AND "
                               "(SELECT COUNT(DISTINCT SALE_ORGID) FROM " +
                               table +
                               " P WHERE P.UNION_ID = U.UNION_ID AND P.LAST_OPERATE <> 'D') >= 3"),
                 60);
    }

    void HasSomeOfEach_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("least");
        const auto row = [](const QByteArray &rows, int least) {
            QTest::newRow(rows.constData()) << rows << least;
        };
        const QByteArray full =
            " WHERE LAST_OPERATE <> 'D' AND ENABLE_FLAG = '1' GROUP BY UNION_ID, SALE_ORGID HAVING "
            "COUNT(*) = 9)";
        row("(SELECT 1 FROM PRC_UNI_PRICE_TYPE" + full, 8);
        row("(SELECT 1 FROM PRC_UNI_PRICE_PRODUCT WHERE LAST_OPERATE <> 'D' GROUP BY UNION_ID, "
            "SALE_ORGID HAVING COUNT(*) >= 400)",
            8); // two pages of the largest size
        row("PRC_UNI_PRICE_TYPE WHERE LAST_OPERATE = 'D'", 1);
        row("PRC_UNI_PRICE_TYPE WHERE LAST_OPERATE <> 'D' AND ENABLE_FLAG = '0'", 50);
        row("PRC_UNI_PRICE_PRODUCT WHERE LAST_OPERATE = 'D'", 1);
        row("PRC_UNI_PRICE_ORG WHERE PRICE_TYPE_ID IS NULL", 50);
        for (const char *type : {"1", "2"})
            row(QByteArray("PRC_UNI_PRICE_TYPE P, BAS_ORG O WHERE O.ORG_ID = P.SALE_ORGID AND "
                           "O.ORG_TYPE = '") +
                    type + '\'',
                50);
    }
    void HasSomeOfEach()
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
        const auto member = [](const QByteArray &organisation, const QByteArray &flag) {
            return "NOT EXISTS (SELECT 1 FROM UNI_ORG M, UNI_ORG_TYPE T, UNI_UNION U WHERE "
                   "M.UNION_ID = P.UNION_ID AND M.ORG_ID = P." +
                   organisation +
                   " AND T.ORG_TYPE_ID = M.ORG_TYPE_ID AND U.UNION_ID = M.UNION_ID AND "
                   "M.LAST_OPERATE <> 'D' AND T.LAST_OPERATE <> 'D' AND U.LAST_OPERATE <> 'D' AND "
                   "T." +
                   flag + " = '1')";
        };
        for (const char *table :
             {"PRC_UNI_PRICE_TYPE", "PRC_UNI_PRICE_PRODUCT", "PRC_UNI_PRICE_ORG"})
            row((QByteArray(table) + " of who does not sell there").constData(),
                table + (" P WHERE " + member("SALE_ORGID", "SALER_FLAG")));
        row("buyer who does not buy there",
            "PRC_UNI_PRICE_ORG P WHERE " + member("BUY_ORGID", "BUYER_FLAG"));
        row("slot other than 01 to 09",
            "PRC_UNI_PRICE_TYPE WHERE PRICE_FIELD NOT GLOB '0[1-9]' OR LENGTH(PRICE_NAME) > 10");
        row("slot twice", "(SELECT 1 FROM PRC_UNI_PRICE_TYPE WHERE LAST_OPERATE <> 'D' GROUP BY "
                          "UNION_ID, SALE_ORGID, PRICE_FIELD HAVING COUNT(*) > 1)");
        row("buyer with another seller's type, or one that is not in use",
            "PRC_UNI_PRICE_ORG P WHERE PRICE_TYPE_ID IS NOT NULL AND NOT EXISTS (SELECT 1 FROM "
            "PRC_UNI_PRICE_TYPE T WHERE T.PRICE_TYPE_ID = P.PRICE_TYPE_ID AND "
            "T.UNION_ID = P.UNION_ID AND T.SALE_ORGID = P.SALE_ORGID AND T.ENABLE_FLAG = '1' AND "
            "T.LAST_OPERATE <> 'D')");
        row("product priced twice by a seller",
            "(SELECT 1 FROM PRC_UNI_PRICE_PRODUCT GROUP BY UNION_ID, SALE_ORGID, PRODUCT_ID HAVING "
            "COUNT(*) > 1)");
        row("price of a product that is not in the catalogue",
            "PRC_UNI_PRICE_PRODUCT P WHERE NOT EXISTS (SELECT 1 FROM UNI_PRODUCT C, BAS_PRODUCT B "
            "WHERE C.UNION_ID = P.UNION_ID AND C.PRODUCT_ID = P.PRODUCT_ID AND "
            "B.PRODUCT_ID = P.PRODUCT_ID AND C.LAST_OPERATE <> 'D' AND B.LAST_OPERATE <> 'D')");
        row("manufacturer's price of what another makes",
            "PRC_UNI_PRICE_PRODUCT P, BAS_ORG O, BAS_PRODUCT B WHERE O.ORG_ID = P.SALE_ORGID AND "
            "B.PRODUCT_ID = P.PRODUCT_ID AND O.ORG_TYPE = '1' AND B.FACTORY_ID <> O.ORG_ID");
        row("retail price that differs from the product's",
            "PRC_UNI_PRICE_PRODUCT P, BAS_PRODUCT B WHERE B.PRODUCT_ID = P.PRODUCT_ID AND "
            "ABS(B.RETAIL_PRICE - P.COST_PRICE) > 0.001");
        for (char slot = '1'; slot <= '9'; ++slot) {
            const QByteArray price = QByteArray("PRICE_0") + slot;
            row((price + " of a slot without a name, or none of one with").constData(),
                "PRC_UNI_PRICE_PRODUCT P WHERE (" + price +
                    " IS NULL) = EXISTS (SELECT 1 FROM PRC_UNI_PRICE_TYPE T WHERE "
                    "T.UNION_ID = P.UNION_ID AND T.SALE_ORGID = P.SALE_ORGID AND "
                    "T.PRICE_FIELD = '0" +
                    slot + "')");
            row((price + " of other than whole fen, or above the retail price").constData(),
                "PRC_UNI_PRICE_PRODUCT WHERE " + price + " <= 0 OR " + price +
                    " > COST_PRICE + 0.001 OR ABS(" + price + " * 100 - ROUND(" + price +
                    " * 100)) > 0.001");
        }
        row("buyer's price that is not stamped with an entry of the log",
            "PRC_UNI_PRICE_ORG P WHERE NOT EXISTS (SELECT 1 FROM SYS_UPDATE_LOG L WHERE "
            "L.TABLE_NAME = 'PRC_UNI_PRICE_ORG' AND L.KEY_ID1 = P.SALE_ORGID AND "
            "L.KEY_ID2 = P.BUY_ORGID AND L.OPTION_DATE = P.LAST_UPDATE AND "
            "L.USER_ID = P.LAST_USER_ID AND L.USER_NAME = P.LAST_USER)");
        row("price before the product was in the catalogue",
            "PRC_UNI_PRICE_PRODUCT P, SYS_UPDATE_LOG L, SYS_UPDATE_LOG C WHERE "
            "L.TABLE_NAME = 'PRC_UNI_PRICE_PRODUCT' AND L.KEY_ID1 = P.PRICE_ID AND "
            "C.TABLE_NAME = 'UNI_PRODUCT' AND C.KEY_ID1 = P.UNION_ID AND "
            "C.KEY_ID2 = P.PRODUCT_ID AND C.OPTION_TYPE = '1' "
            "GROUP BY P.PRICE_ID HAVING MIN(L.OPTION_DATE) < MIN(C.OPTION_DATE)");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

private:
    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(PriceDataTest)
#include "PriceDataTest.moc"
