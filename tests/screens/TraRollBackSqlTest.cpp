#include "screens/TraRollBackSql.h"

#include "screens/ScreenFixture.h"

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QDateTime From = QDate(2024, 3, 5).startOfDay();
const QDateTime To = QDate(2024, 3, 12).startOfDay();

void AddFilterColumns()
{
    QTest::addColumn<TRollBackFilter>("filter");
}

void CompareWithExpected(const QString &sql)
{
    QCOMPARE(sql, Expected(QString::fromLatin1(QTest::currentDataTag())));
}

} // namespace

Q_DECLARE_METATYPE(Qel::TRollBackFilter)

class TraRollBackSqlTest : public QObject
{
    Q_OBJECT

private slots:
    void OrderStatementsAreExact_data()
    {
        AddFilterColumns();
        QTest::newRow("rollback.orders.none")
            << TRollBackFilter{.orderCode = u"  "_s, .product = u" "_s, .org = u" "_s};
        QTest::newRow("rollback.orders.code") << TRollBackFilter{.orderCode = u" dd-01 "_s};
        QTest::newRow("rollback.orders.product") << TRollBackFilter{.product = u" aM'c%; "_s};
        QTest::newRow("rollback.orders.org") << TRollBackFilter{.org = u"市yy"_s};
        QTest::newRow("rollback.orders.from") << TRollBackFilter{.from = From};
        QTest::newRow("rollback.orders.to") << TRollBackFilter{.to = To};
        QTest::newRow("rollback.orders.both") << TRollBackFilter{.from = From, .to = To};
        QTest::newRow("rollback.orders.full") << TRollBackFilter{
            .orderCode = u"dd"_s, .product = u"阿莫"_s, .org = u"医院"_s, .from = From, .to = To};
    }
    void OrderStatementsAreExact()
    {
        QFETCH(TRollBackFilter, filter);
        CompareWithExpected(TraRollBackSql::Orders(filter));
    }

    void ReturnStatementsAreExact_data()
    {
        AddFilterColumns();
        QTest::newRow("rollback.returns.none")
            << TRollBackFilter{.orderCode = u"  "_s, .product = u" "_s, .org = u" "_s};
        QTest::newRow("rollback.returns.product") << TRollBackFilter{.product = u" aM'c%; "_s};
        QTest::newRow("rollback.returns.org") << TRollBackFilter{.org = u" 市yy "_s};
        QTest::newRow("rollback.returns.code") << TRollBackFilter{.orderCode = u" dd-01 "_s};
        QTest::newRow("rollback.returns.both") << TRollBackFilter{.from = From, .to = To};
        QTest::newRow("rollback.returns.state") << TRollBackFilter{.state = u"0"_s};
        QTest::newRow("rollback.returns.full") << TRollBackFilter{.orderCode = u"dd"_s,
                                                                  .product = u"阿莫x"_s,
                                                                  .org = u"医院y"_s,
                                                                  .from = From,
                                                                  .to = To,
                                                                  .state = u"2"_s};
    }
    void ReturnStatementsAreExact()
    {
        QFETCH(TRollBackFilter, filter);
        CompareWithExpected(TraRollBackSql::Returns(filter));
    }

    void ReceiptStatementsAreExact_data()
    {
        AddFilterColumns();
        QTest::newRow("rollback.receipts.none")
            << TRollBackFilter{.orderCode = u"  "_s, .product = u" "_s, .org = u" "_s};
        QTest::newRow("rollback.receipts.product") << TRollBackFilter{.product = u" aM'c%; "_s};
        QTest::newRow("rollback.receipts.code") << TRollBackFilter{.orderCode = u" dd-01 "_s};
        QTest::newRow("rollback.receipts.from") << TRollBackFilter{.from = From};
        QTest::newRow("rollback.receipts.to") << TRollBackFilter{.to = To};
        QTest::newRow("rollback.receipts.both") << TRollBackFilter{.from = From, .to = To};
        QTest::newRow("rollback.receipts.org") << TRollBackFilter{.org = u"市yy"_s};
        QTest::newRow("rollback.receipts.full") << TRollBackFilter{
            .orderCode = u"dd"_s, .product = u"阿莫"_s, .org = u"医院"_s, .from = From, .to = To};
    }
    void ReceiptStatementsAreExact()
    {
        QFETCH(TRollBackFilter, filter);
        CompareWithExpected(TraRollBackSql::Receipts(filter));
    }

    void OneDateAloneIsAConditionForOrdersAndReceiptsAndNoneForReturns()
    {
        for (const TRollBackFilter &filter :
             {TRollBackFilter{.from = From}, TRollBackFilter{.to = To}}) {
            QVERIFY(TraRollBackSql::Orders(filter) != TraRollBackSql::Orders({}));
            QVERIFY(TraRollBackSql::Receipts(filter) != TraRollBackSql::Receipts({}));
            QCOMPARE(TraRollBackSql::Returns(filter), Expected(u"rollback.returns.none"_s));
        }
    }

    void DatesInTheWrongOrderAreSwapped()
    {
        const TRollBackFilter wrong{.from = To, .to = From};
        QCOMPARE(TraRollBackSql::Orders(wrong), Expected(u"rollback.orders.both"_s));
        QCOMPARE(TraRollBackSql::Returns(wrong), Expected(u"rollback.returns.both"_s));
        QCOMPARE(TraRollBackSql::Receipts(wrong), Expected(u"rollback.receipts.both"_s));
    }

    void AnyReturnStateButAllIsACondition()
    {
        QVERIFY(!TraRollBackSql::Returns({.state = u"-1"_s}).contains(u"CONFIRM_FLAG"));
        for (const auto &state : {u"0"_s, u"1"_s, u"2"_s})
            QVERIFY(TraRollBackSql::Returns({.state = state})
                        .contains(u" AND A.CONFIRM_FLAG='"_s + state + u"' "_s));
    }

    void TradeNameStandsTwiceAmongTheConditionsOfOrders()
    {
        QCOMPARE(TraRollBackSql::Orders({.product = u"x"_s}).count(u"UPPER(F.TRADE_NAME)"_s), 2);
    }

    void OnlyTheSellersNameOfAReturnIsMatchedAsTyped()
    {
        const QString sql = TraRollBackSql::Returns({.org = u"ab"_s});
        QCOMPARE(sql.count(u"'%ab%'"_s), 1);
        QVERIFY(sql.contains(u"AND ( C.ORG_NAME LIKE '%ab%'OR C.ORG_NAME_PY LIKE '%AB%'OR "_s));
        QCOMPARE(sql.count(u"'%AB%'"_s), 7);
    }

    void ReceiptsHaveNoOrder()
    {
        QVERIFY(!Expected(u"rollback.receipts.full"_s).contains(u"ORDER BY"));
        QVERIFY(!TraRollBackSql::Receipts({.org = u"x"_s}).contains(u"ORDER BY"));
    }
};

QTEST_MAIN(TraRollBackSqlTest)
#include "TraRollBackSqlTest.moc"
