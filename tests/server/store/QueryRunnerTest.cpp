#include "store/QueryRunner.h"
#include "dataset/RowBlock.h"
#include "sql/SqlError.h"
#include "store/SearchIndex.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

constexpr int ManyRows = 50'000;

/// Fills BAS_PRODUCT with this many rows.
void AddProducts(TestDatabase &data, int count)
{
    data.Connection().Run(
        "WITH RECURSIVE N (X) AS (SELECT 1 UNION ALL SELECT X + 1 FROM N WHERE X < ?1)"
        " INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_NAME, RETAIL_PRICE)"
        " SELECT CAST(500000 + X AS TEXT), '药品' || (X % 97), X / 4.0 FROM N",
        {qint64(count)});
}

/// That the program has asked for and not given back; 0 where a sanitizer does the counting.
std::size_t BytesInUse()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace

class QueryRunnerTest : public QObject
{
    Q_OBJECT

private slots:
    void GivesEveryRowUnpaged()
    {
        TestDatabase data;
        AddProducts(data, ManyRows);
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const auto result = runner.Run(u"SELECT * FROM BAS_PRODUCT"_s, 0, 0);
        QCOMPARE(result.total, ManyRows);
        QCOMPARE(RowSet::Load(result.block).RowCount(), ManyRows);
    }

    /// SQLite 3.40 turns it round when it leaves out the join that nobody needs.
    void AnOuterJoinThatNobodyNeedsDoesNotTurnTheOrderRound_data()
    {
        QTest::addColumn<QString>("distinct");
        QTest::newRow("all") << QString();
        QTest::newRow("distinct") << u"DISTINCT "_s;
    }
    void AnOuterJoinThatNobodyNeedsDoesNotTurnTheOrderRound()
    {
        QFETCH(QString, distinct);
        TestDatabase data; // has the member 200007
        data.Connection().Execute("INSERT INTO UNI_ORG (UNION_ID, ORG_ID)"
                                  " VALUES ('300002', '200003'), ('300002', '200004')");
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const auto result =
            runner.Run(u"SELECT %1M.ORG_ID FROM UNI_UNION U, BAS_ORG O, UNI_ORG M"
                       " WHERE O.ORG_ID(+) = U.MASTER_ORGID AND M.UNION_ID(+) = U.UNION_ID"
                       " AND U.UNION_ID = '300002' ORDER BY M.ORG_ID DESC"_s.arg(distinct),
                       0, 0);
        const RowSet rows = RowSet::Load(result.block);
        QStringList members;
        for (int row = 0; row < rows.RowCount(); ++row)
            members += rows.Text(row, 0);
        QCOMPARE(members, (QStringList{u"200007"_s, u"200004"_s, u"200003"_s}));
    }

    void PagesHaveTheTotalAndMeetWithoutGap()
    {
        TestDatabase data;
        AddProducts(data, 230);
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        QSet<QString> seen;
        for (int page = 1; page <= 5; ++page) {
            // 97 names for 230 rows: the order that was asked for leaves ties.
            const auto result =
                runner.Run(u"SELECT PRODUCT_ID FROM BAS_PRODUCT ORDER BY PRODUCT_NAME"_s, page, 50);
            QCOMPARE(result.total, 230);
            const RowSet rows = RowSet::Load(result.block);
            QCOMPARE(rows.RowCount(), page < 5 ? 50 : 30);
            for (int row = 0; row < rows.RowCount(); ++row)
                seen.insert(rows.Text(row, 0));
        }
        QCOMPARE(seen.size(), 230);
    }

    void APageBehindTheEndIsEmptyAndHasTheTotal()
    {
        TestDatabase data;
        AddProducts(data, 100);
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        for (const int page : {3, 9}) {
            const auto result = runner.Run(u"SELECT PRODUCT_ID FROM BAS_PRODUCT"_s, page, 50);
            QCOMPARE(result.count, 0);
            QCOMPARE(result.total, 100);
        }
    }

    void PagesOfAStatementWithoutOrderMeetWithoutGap()
    {
        TestDatabase data;
        AddProducts(data, 230);
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const QString sql = u"SELECT A.PRODUCT_NAME, B.ORG_ID, A.PRODUCT_ID"
                            " FROM BAS_PRODUCT A, BAS_ORG B WHERE B.ORG_ID < '200004'"_s;
        QSet<QString> seen;
        int rowsSeen = 0;
        for (int page = 1; page <= 10; ++page) {
            const RowSet rows = RowSet::Load(runner.Run(sql, page, 70).block);
            rowsSeen += rows.RowCount();
            for (int row = 0; row < rows.RowCount(); ++row)
                seen.insert(rows.Text(row, 1) + u'|' + rows.Text(row, 2));
        }
        QCOMPARE(rowsSeen, 690);
        QCOMPARE(seen.size(), 690);
    }

    void SelectingNothingHasTotalZero()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const auto result = runner.Run(u"SELECT * FROM BAS_ORG WHERE ORG_ID = '0'"_s, 1, 50);
        QCOMPARE(result.total, 0);
        const RowSet rows = RowSet::Load(result.block);
        QCOMPARE(rows.RowCount(), 0);
        QVERIFY(rows.FieldIndex(u"ORG_NAME") >= 0);
    }

    /// A session of SQLite knows of gram tables that are not there any more.
    void FindsPartsOfTextsAfterTheSearchIndexesWereMadeAnew()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const QString first = u"SELECT ORG_ID FROM BAS_ORG WHERE UPPER(ORG_NAME) LIKE '%人民医%'"_s;
        const QString second =
            u"SELECT ORG_ID FROM BAS_ORG WHERE UPPER(ORG_NAME) LIKE '%民医院%'"_s;
        const auto found = runner.Run(first, 0, 0).count;
        QVERIFY(found > 0);
        {
            Store::Transaction transaction(data.Connection());
            Store::DropSearchIndexes(data.Connection());
            Store::CreateSearchIndexes(data.Connection());
            transaction.Commit();
        }
        QCOMPARE(runner.Run(second, 0, 0).count, found);
        QCOMPARE(runner.Run(first, 0, 0).count, found);
    }

    void KeepsNullApartAndWritesWholeNumbersWithoutFraction()
    {
        TestDatabase data;
        AddProducts(data, 4);
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const RowSet rows = RowSet::Load(
            runner.Run(u"SELECT RETAIL_PRICE, SPEC FROM BAS_PRODUCT ORDER BY PRODUCT_ID"_s, 0, 0)
                .block);
        QCOMPARE(rows.Text(0, 0), u"0.25"_s);
        QCOMPARE(rows.Text(3, 0), u"1"_s);
        QVERIFY(rows.IsNull(0, 1));
        QVERIFY(!rows.IsNull(0, 0));
    }

    void TooManyRowsAreAnErrorAndNoCut()
    {
        TestDatabase data;
        AddProducts(data, 101);
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {.rows = 100});
        ExpectTooLarge(runner, u"SELECT PRODUCT_ID FROM BAS_PRODUCT"_s,
                       u"查询结果过大：超过 100 行，请缩小查询范围。"_s);
        QCOMPARE(
            runner.Run(u"SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE PRODUCT_ID > '500001'"_s, 0, 0)
                .count,
            100);
        QCOMPARE(runner.Run(u"SELECT PRODUCT_ID FROM BAS_PRODUCT"_s, 1, 50).total, 101);
    }

    void TooManyBytesAreAnErrorAndNoCut()
    {
        TestDatabase data;
        AddProducts(data, 1'000);
        const auto reader = data.Database().OpenReader();
        const QString sql = u"SELECT PRODUCT_NAME FROM BAS_PRODUCT"_s;
        const RowSet all = RowSet::Load(Store::QueryRunner(*reader, {}).Run(sql, 0, 0).block);
        qint64 needed = RowBlockOverhead(all.Fields()) + 4; // an offset more than there are rows
        for (int row = 0; row < all.RowCount(); ++row)
            needed += all.Text(row, 0).toUtf8().size() + 4;
        Store::QueryRunner enough(*reader, {.bytes = needed});
        QCOMPARE(enough.Run(sql, 0, 0).count, 1'000);
        Store::QueryRunner runner(*reader, {.bytes = needed - 1});
        ExpectTooLarge(runner, sql,
                       u"查询结果过大：超过 %1 字节，请缩小查询范围。"_s.arg(needed - 1));
        QCOMPARE(runner.Run(sql, 1, 50).count, 50);
    }

    void TakesListsOfTenThousandLiterals()
    {
        TestDatabase data;
        AddProducts(data, ManyRows);
        QStringList ids;
        for (int id = 500'001; id <= 510'000; ++id)
            ids.append(u"'%1'"_s.arg(id));
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const QString sql =
            u"SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE PRODUCT_ID IN (%1)"_s.arg(ids.join(u','));
        QCOMPARE(runner.Run(sql, 0, 0).count, 10'000);
    }

    void LongTextsAreNotKept()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const auto run = [&](int number) {
            QStringList keys;
            for (int key = 0; key < 10'000; ++key)
                keys += u"'%1'"_s.arg(number * 10'000 + key, 20);
            const auto result = runner.Run(
                u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN (%1)"_s.arg(keys.join(u',')), 0, 0);
            QCOMPARE(result.total, 0);
        };
        run(0);
        const std::size_t before = BytesInUse();
        for (int number = 1; number <= 10; ++number)
            run(number);
        const auto grown = static_cast<qint64>(BytesInUse() - before);
        QVERIFY2(grown < 1'000'000, qPrintable(QString::number(grown)));
    }

    void NeverReadsTheServersOwnTables()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        QVERIFY_THROWS_EXCEPTION(Sql::ESqlError, runner.Run(u"SELECT * FROM SRV_TOKEN"_s, 0, 0));
    }

    void SameTextAgainSeesNewRows()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {});
        const QString sql = u"SELECT ORG_ID FROM BAS_ORG"_s;
        QCOMPARE(runner.Run(sql, 0, 0).count, 8);
        data.Connection().Execute("DELETE FROM BAS_ORG WHERE ORG_ID = '200008'");
        QCOMPARE(runner.Run(sql, 0, 0).count, 7);
    }

    void NamesAStatementByTheHashOfItsText()
    {
        // echo -n "SELECT '药' FROM BAS_ORG" | sha256sum
        QCOMPARE(Store::StatementHash(u"SELECT '药' FROM BAS_ORG"_s),
                 QByteArray("a72841bf81060bea"));
        QVERIFY(Store::StatementHash(u"select '药' from bas_org"_s) !=
                Store::StatementHash(u"SELECT '药' FROM BAS_ORG"_s));
    }

    void SaysWhichTablesItRead()
    {
        using Tables = std::vector<std::string>;
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::QueryRunner runner(*reader, {.rows = 5});
        runner.Run(u"SELECT A.ORG_ID FROM bas_org A, (SELECT * FROM BAS_REGION) B WHERE"
                   " A.REGION_ID=B.REGION_ID(+) AND A.ORG_ID IN (SELECT ORG_ID FROM UNI_ORG)"
                   " AND EXISTS (SELECT 1 FROM BAS_ORG)"_s,
                   1, 10);
        QCOMPARE(runner.LastTables(), (Tables{"BAS_ORG", "BAS_REGION", "UNI_ORG"}));
        QVERIFY_THROWS_EXCEPTION(Sql::ESqlError, runner.Run(u"SELECT 1 FROM SRV_TOKEN"_s, 0, 0));
        QCOMPARE(runner.LastTables(), Tables{});
        QVERIFY_THROWS_EXCEPTION(Store::EQueryTooLarge,
                                 runner.Run(u"SELECT * FROM BAS_ORG"_s, 0, 0));
        QCOMPARE(runner.LastTables(), Tables{"BAS_ORG"});
    }

private:
    static void ExpectTooLarge(Store::QueryRunner &runner, const QString &sql,
                               const QString &message)
    {
        try {
            runner.Run(sql, 0, 0);
            QFAIL("was run");
        } catch (const Store::EQueryTooLarge &error) {
            QCOMPARE(error.Message(), message);
        }
    }
};

QTEST_GUILESS_MAIN(QueryRunnerTest)
#include "QueryRunnerTest.moc"
