#include "SampleDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// Trade of the sample database: orders, deliveries, returns.
class TradeDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { data_ = std::make_unique<SampleDatabase>(); }

    void HoldsSoMany_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("count");
        QTest::newRow("orders") << QByteArray("TRA_ORDER WHERE LAST_OPERATE <> 'D'") << 20'000;
        QTest::newRow("lines") << QByteArray("TRA_ORDER_ITEM WHERE LAST_OPERATE <> 'D'") << 60'000;
    }
    void HoldsSoMany()
    {
        QFETCH(QByteArray, rows);
        QTEST(data_->Number("SELECT COUNT(*) FROM " + rows), "count");
    }

    void OrdersAreOfTwoYearsUpToTheLastWorkingDay()
    {
        QCOMPARE(data_->Text("SELECT MIN(DATE(ORD_DATE)) FROM TRA_ORDER"), u"2024-11-21"_s);
        QCOMPARE(data_->Text("SELECT MAX(DATE(ORD_DATE)) FROM TRA_ORDER"), u"2026-11-20"_s);
    }

    /// The dates that the tabs come up with: of the week before today.
    void EveryTabShowsRowsOfTheLastWeek_data()
    {
        QTest::addColumn<QByteArray>("rows");
        const auto row = [](const QByteArray &rows, const QByteArray &date) {
            QTest::newRow(rows.constData())
                << "TRA_" + rows + (rows.contains(" WHERE") ? "" : " WHERE 1 = 1") +
                       " AND LAST_OPERATE <> 'D' AND " + date + " >= '2026-11-14'";
        };
        row("ORDER", "ORD_DATE");
        for (const char *state : {"0", "1", "2"})
            row(QByteArray("RETURN WHERE CONFIRM_FLAG = '") + state + '\'', "LAST_UPDATE");
        row("RETURN WHERE CONFIRM_FLAG = '0' AND INVOICE_FLAG = '1'", "LAST_UPDATE");
        const QByteArray received = "SEND WHERE SEND_FLAG = '1' AND RECEIVE_FLAG = '1'";
        row(received + " AND INVOICE_FLAG = '0'", "CREATE_DATE");
        row(received + " AND INVOICE_FLAG = '1'", "CREATE_DATE");
        row(received + " AND SEND_ID IN (SELECT SEND_ID FROM TRA_RETURN)", "CREATE_DATE");
    }
    void EveryTabShowsRowsOfTheLastWeek()
    {
        QFETCH(QByteArray, rows);
        QVERIFY(data_->Number("SELECT COUNT(*) FROM " + rows) >= 3);
    }

    void HasSomeOfEach_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("least");
        const auto row = [](const QByteArray &rows, int least) {
            QTest::newRow(rows.constData()) << rows << least;
        };
        row("TRA_ORDER WHERE LAST_OPERATE = 'D'", 40);
        row("TRA_ORDER_ITEM I, TRA_ORDER O WHERE O.ORD_ID = I.ORD_ID AND I.LAST_OPERATE = 'D' AND "
            "O.LAST_OPERATE <> 'D'",
            50);
        row("TRA_ORDER WHERE ORD_STATE = '0'", 500);
        row("TRA_ORDER_ITEM WHERE STATE = '0' AND LAST_OPERATE <> 'D'", 3'000);
        row("TRA_SEND WHERE SEND_FLAG = '0'", 100);
        row("TRA_SEND WHERE SEND_FLAG = '1' AND RECEIVE_FLAG = '0'", 500);
        row("TRA_SEND WHERE RECEIVE_FLAG = '0' AND RECEIVE_QTY IS NOT NULL", 10); // rolled back
        row("TRA_SEND WHERE RECEIVE_QTY < SEND_QTY", 100);
        row("(SELECT 1 FROM TRA_SEND GROUP BY ORD_ITEM_ID HAVING COUNT(*) = 2)", 1'000);
        row("TRA_SEND WHERE RECEIVE_FLAG = '1' AND INVOICE_CODE IS NULL", 1'000);
        row("TRA_SEND WHERE INVOICE_CODE IS NOT NULL AND INVOICE_FLAG = '0'", 1'000);
        row("TRA_SEND WHERE INVOICE_FLAG = '1'", 10'000);
        for (const char *state : {"CONFIRM_FLAG = '0' AND INVOICE_FLAG = '0'",
                                  "CONFIRM_FLAG = '0' AND INVOICE_FLAG = '1'",
                                  "CONFIRM_FLAG = '1' AND INVOICE_FLAG = '0'",
                                  "CONFIRM_FLAG = '1' AND INVOICE_FLAG = '1'",
                                  "CONFIRM_FLAG = '2' AND INVOICE_FLAG = '0'"})
            row(QByteArray("TRA_RETURN WHERE LAST_OPERATE <> 'D' AND ") + state, 50);
        row("TRA_RETURN WHERE LAST_OPERATE = 'D'", 10);
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
        row("order number twice",
            "(SELECT 1 FROM TRA_ORDER GROUP BY ORD_CODE HAVING COUNT(*) > 1)");
        row("order of an organisation that is deleted or not in use",
            "TRA_ORDER R WHERE 3 <> (SELECT COUNT(*) FROM (SELECT R.BUY_ORGID AS ID UNION ALL "
            "SELECT R.SALE_ORGID UNION ALL SELECT R.SEND_ORGID) X, BAS_ORG O WHERE O.ORG_ID = X.ID "
            "AND O.LAST_OPERATE <> 'D' AND O.ENABLE_FLAG = '1')");
        row("order of a buyer to whom the seller quotes nothing",
            "TRA_ORDER R WHERE NOT EXISTS (SELECT 1 FROM PRC_UNI_PRICE_ORG P WHERE "
            "P.SALE_ORGID = R.SALE_ORGID AND P.BUY_ORGID = R.BUY_ORGID AND "
            "P.PRICE_TYPE_ID IS NOT NULL)");
        row("line at another price than the buyer's",
            "TRA_ORDER_ITEM I, TRA_ORDER R WHERE R.ORD_ID = I.ORD_ID AND NOT EXISTS (SELECT 1 FROM "
            "PRC_UNI_PRICE_ORG B, PRC_UNI_PRICE_TYPE T, PRC_UNI_PRICE_PRODUCT P WHERE "
            "B.SALE_ORGID = R.SALE_ORGID AND B.BUY_ORGID = R.BUY_ORGID AND "
            "T.PRICE_TYPE_ID = B.PRICE_TYPE_ID AND P.UNION_ID = B.UNION_ID AND "
            "P.SALE_ORGID = B.SALE_ORGID AND P.PRODUCT_ID = I.PRODUCT_ID AND "
            "P.LAST_OPERATE <> 'D' AND I.HIT_PRICE = CASE T.PRICE_FIELD WHEN '01' THEN PRICE_01 "
            "WHEN '02' THEN PRICE_02 WHEN '03' THEN PRICE_03 WHEN '04' THEN PRICE_04 "
            "WHEN '05' THEN PRICE_05 WHEN '06' THEN PRICE_06 WHEN '07' THEN PRICE_07 "
            "WHEN '08' THEN PRICE_08 WHEN '09' THEN PRICE_09 END)");
        row("line without an order",
            "TRA_ORDER_ITEM I WHERE NOT EXISTS (SELECT 1 FROM TRA_ORDER R WHERE "
            "R.ORD_ID = I.ORD_ID AND (R.LAST_OPERATE <> 'D' OR I.LAST_OPERATE = 'D'))");
        row("order whose sums are not its lines'",
            "(SELECT R.ORD_ID FROM TRA_ORDER R LEFT JOIN TRA_ORDER_ITEM I ON "
            "I.ORD_ID = R.ORD_ID AND I.LAST_OPERATE <> 'D' WHERE R.LAST_OPERATE <> 'D' "
            "GROUP BY R.ORD_ID HAVING R.ITEM_COUNT <> COUNT(I.ORD_ITEM_ID) OR COUNT(I.ORD_ID) = 0 "
            "OR ABS(R.ITEM_MONEY - SUM(I.HIT_PRICE * I.ORD_QTY)) > 0.005)");
        row("product twice in an order", "(SELECT 1 FROM TRA_ORDER_ITEM GROUP BY ORD_ID, "
                                         "PRODUCT_ID HAVING COUNT(*) > 1)");
        row("quantity or price that is none",
            "TRA_ORDER_ITEM WHERE NOT (ORD_QTY >= 1 AND HIT_PRICE > 0)");

        row("delivery that is not of its line",
            "TRA_SEND S WHERE NOT EXISTS (SELECT 1 FROM TRA_ORDER_ITEM I, TRA_ORDER R, "
            "BAS_PRODUCT P WHERE I.ORD_ITEM_ID = S.ORD_ITEM_ID AND R.ORD_ID = I.ORD_ID AND "
            "P.PRODUCT_ID = I.PRODUCT_ID AND I.LAST_OPERATE <> 'D' AND R.ORD_STATE = '1' AND "
            "S.ORD_CODE = R.ORD_CODE AND S.ORD_DATE = R.ORD_DATE AND "
            "S.PRODUCT_ID = I.PRODUCT_ID AND S.WRAP_NAME = P.WRAP_NAME AND "
            "S.BUY_ORGID = R.BUY_ORGID AND S.SALE_ORGID = R.SALE_ORGID AND "
            "S.HIT_PRICE = I.HIT_PRICE AND S.ORD_QTY = I.ORD_QTY)");
        row("more delivered than ordered",
            "(SELECT 1 FROM TRA_SEND WHERE LAST_OPERATE <> 'D' GROUP BY ORD_ITEM_ID "
            "HAVING SUM(SEND_QTY) > MAX(ORD_QTY))");
        row("line whose state is not its deliveries'",
            "TRA_ORDER_ITEM I WHERE (STATE = '1') <> EXISTS (SELECT 1 FROM TRA_SEND S WHERE "
            "S.ORD_ITEM_ID = I.ORD_ITEM_ID AND S.SEND_FLAG = '1' AND S.LAST_OPERATE <> 'D')");
        row("more accepted than delivered",
            "TRA_SEND WHERE SEND_QTY <= 0 OR RECEIVE_QTY <= 0 OR RECEIVE_QTY > SEND_QTY");
        row("accepted without a quantity, or before it was sent",
            "TRA_SEND WHERE RECEIVE_FLAG = '1' AND (RECEIVE_QTY IS NULL OR SEND_FLAG <> '1')");
        row("invoice without a date", "TRA_SEND WHERE (INVOICE_CODE IS NULL) <> "
                                      "(INVOICE_DATE IS NULL)");
        row("accepted invoice without an invoice, or before the goods",
            "TRA_SEND WHERE INVOICE_FLAG = '1' AND (INVOICE_CODE IS NULL OR RECEIVE_FLAG <> '1')");
        row("expired lot", "TRA_SEND WHERE INSURE_DATE < DATE(CREATE_DATE, '+11 months')");

        row("return of what was not accepted",
            "TRA_RETURN T WHERE NOT EXISTS (SELECT 1 FROM TRA_SEND S WHERE S.SEND_ID = T.SEND_ID "
            "AND S.RECEIVE_FLAG = '1' AND S.LAST_OPERATE <> 'D')");
        row("more returned than accepted",
            "(SELECT 1 FROM TRA_RETURN T, TRA_SEND S WHERE S.SEND_ID = T.SEND_ID "
            "AND T.LAST_OPERATE <> 'D' GROUP BY S.SEND_ID "
            "HAVING SUM(T.RETURN_QTY) > MAX(S.RECEIVE_QTY) OR MIN(T.RETURN_QTY) <= 0)");
        row("answer without a remark, or a remark without one",
            "TRA_RETURN WHERE (CONFIRM_FLAG = '0') <> (CONFIRM_REMARK IS NULL)");
        row("refused return with an invoice",
            "TRA_RETURN WHERE CONFIRM_FLAG = '2' AND INVOICE_FLAG = '1'");

        row("rolled back without an entry of the log",
            "(SELECT 'TRA_ORDER' AS NAME, ORD_ID AS ID, LAST_UPDATE AS TIME FROM TRA_ORDER WHERE "
            "LAST_OPERATE = 'D' UNION ALL SELECT 'TRA_ORDER_ITEM', ORD_ITEM_ID, LAST_UPDATE FROM "
            "TRA_ORDER_ITEM WHERE LAST_OPERATE = 'D' UNION ALL SELECT 'TRA_RETURN', RETURN_ID, "
            "LAST_UPDATE FROM TRA_RETURN WHERE LAST_OPERATE = 'D' UNION ALL SELECT 'TRA_SEND', "
            "SEND_ID, LAST_UPDATE FROM TRA_SEND WHERE RECEIVE_FLAG = '0' AND "
            "RECEIVE_QTY IS NOT NULL) X WHERE NOT EXISTS (SELECT 1 FROM SYS_UPDATE_LOG L WHERE "
            "L.TABLE_NAME = X.NAME AND L.KEY_ID1 = X.ID AND L.OPTION_DATE = X.TIME)");
        for (const char *table : {"TRA_ORDER", "TRA_ORDER_ITEM", "TRA_SEND", "TRA_RETURN"}) {
            row((QByteArray(table) + " stored by nobody").constData(),
                table + QByteArray(" R WHERE NOT EXISTS (SELECT 1 FROM USR_USER U WHERE "
                                   "U.USER_ID = R.LAST_USER_ID AND U.USER_NAME = R.LAST_USER)"));
            row((QByteArray(table) + " stored in the future").constData(),
                table + QByteArray(" WHERE LAST_UPDATE >= '2026-11-21'"));
            row((QByteArray(table) + " stored outside office hours").constData(),
                table + QByteArray(" WHERE strftime('%w', LAST_UPDATE) IN ('0', '6') OR "
                                   "TIME(LAST_UPDATE) NOT BETWEEN '08:30:00' AND '17:59:59' OR "
                                   "TIME(LAST_UPDATE) BETWEEN '12:00:00' AND '13:29:59'"));
        }
        row("delivery before its order or stored before it was entered",
            "TRA_SEND WHERE NOT (ORD_DATE < CREATE_DATE AND CREATE_DATE <= LAST_UPDATE)");
        row("return before its delivery or stored before it was made",
            "TRA_RETURN T, TRA_SEND S WHERE S.SEND_ID = T.SEND_ID AND "
            "NOT (S.CREATE_DATE < T.RETURN_DATE AND T.RETURN_DATE <= T.LAST_UPDATE)");
        row("order before the prices",
            "TRA_ORDER R WHERE ORD_DATE <= (SELECT MAX(OPTION_DATE) FROM SYS_UPDATE_LOG WHERE "
            "TABLE_NAME = 'PRC_UNI_PRICE_TYPE' AND OPTION_TYPE = '1')");
    }
    void HoldsNone()
    {
        QFETCH(QByteArray, rows);
        QCOMPARE(data_->Number("SELECT COUNT(*) FROM " + rows), 0);
    }

    void AnotherDayMovesTheDatesAndNothingElse()
    {
        constexpr int later = 3 * 7;
        const std::vector<Demo::TableRows> then = Demo::MakeRows(Today);
        const std::vector<Demo::TableRows> now = Demo::MakeRows(Today.addDays(later));
        QCOMPARE(now.size(), then.size());
        for (std::size_t at = 0; at < then.size(); ++at) {
            QCOMPARE(now[at].Table(), then[at].Table());
            QCOMPARE(now[at].Count(), then[at].Count());
            const qsizetype last = now[at].Count() - 1;
            if (now[at].Table() != u"TRA_SEND"_s)
                continue;
            const qsizetype date = now[at].Place(u"CREATE_DATE"_s);
            for (qsizetype place = 0; place < date; ++place) {
                const QString text = then[at].Text(last, place);
                if (!text.contains(u':'))
                    QCOMPARE(now[at].Text(last, place), text);
            }
            QCOMPARE(
                QDate::fromString(now[at].Text(last, date).left(10), Qt::ISODate),
                QDate::fromString(then[at].Text(last, date).left(10), Qt::ISODate).addDays(later));
        }
    }

private:
    std::unique_ptr<SampleDatabase> data_;
};

QTEST_GUILESS_MAIN(TradeDataTest)
#include "TradeDataTest.moc"
