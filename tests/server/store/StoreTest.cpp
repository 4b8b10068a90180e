#include "store/LargestKey.h"
#include "store/LruCache.h"
#include "store/PlainNumber.h"
#include "store/Schema.h"
#include "support/TestDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;
using Store::EStoreError;

namespace {

/// What kind of error `action` ends with; nothing if it ends without.
template <typename Action>
std::optional<EStoreError::Kind> KindOf(Action action)
{
    try {
        action();
    } catch (const EStoreError &error) {
        return error.WhichKind();
    }
    return std::nullopt;
}

} // namespace

class StoreTest : public QObject
{
    Q_OBJECT

private slots:
    void WritesNumbersPlainly_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << u"0"_s;
        QTest::newRow("negative zero") << -0.0 << u"0"_s;
        QTest::newRow("whole") << 1310.0 << u"1310"_s;
        QTest::newRow("hundreds keep their zeros") << 2500.0 << u"2500"_s;
        QTest::newRow("half") << 0.5 << u"0.5"_s;
        QTest::newRow("tenth") << 0.1 << u"0.1"_s;
        QTest::newRow("price") << 12.35 << u"12.35"_s;
        QTest::newRow("negative") << -12.25 << u"-12.25"_s;
        QTest::newRow("sum that is not exact") << 0.1 + 0.2 << u"0.3"_s;
        QTest::newRow("large without exponent") << 1e20 << u"100000000000000000000"_s;
        QTest::newRow("small without exponent") << 1e-7 << u"0.0000001"_s;
    }
    void WritesNumbersPlainly()
    {
        QFETCH(double, value);
        QTEST(QString::fromLatin1(Store::PlainNumber(value)), "text");
    }

    void BindsEmptyTextAsNull()
    {
        TestDatabase data;
        const QByteArray isNull = "SELECT 1 WHERE CAST(?1 AS TEXT) IS NULL";
        QVERIFY(data.Connection().Exists(isNull, {QString()}));
        QVERIFY(data.Connection().Exists(isNull, {u""_s}));
        QVERIFY(data.Connection().Exists(isNull, {nullptr}));
        QVERIFY(data.Connection().Exists("SELECT 1 WHERE ?1 = ' '", {u" "_s}));
    }

    void KeepsEmptyTextOutOfTheTables()
    {
        TestDatabase data;
        QCOMPARE(KindOf([&] {
                     data.Connection().Execute("UPDATE BAS_ORG SET ORG_NAME = ''"
                                               " WHERE ORG_ID = '200001'");
                 }),
                 EStoreError::Kind::Constraint);
    }

    void CreatesEveryTableOfTheCatalogue()
    {
        TestDatabase data;
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            const auto name = QByteArray::fromStdString(table.name);
            const auto statement = data.Connection().Prepare("SELECT * FROM " + name);
            QCOMPARE(statement->ColumnCount(), int(table.columns.size()));
        }
        QVERIFY(Store::HasSchema(data.Connection()));
    }

    void ReaderCannotWrite()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        QVERIFY(KindOf([&] { reader->Execute("DELETE FROM BAS_ORG"); }));
        QVERIFY(KindOf([&] { reader->Execute("CREATE TABLE X (Y)"); }));
        QCOMPARE(data.Number("SELECT COUNT(*) FROM BAS_ORG"), 8);
    }

    void ReaderSeesWhatWasCommitted()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        Store::Transaction transaction(data.Connection());
        data.Connection().Execute("DELETE FROM BAS_ORG WHERE ORG_ID = '200008'");
        QCOMPARE(reader->QueryText("SELECT COUNT(*) FROM BAS_ORG"), u"8"_s);
        transaction.Commit();
        QCOMPARE(reader->QueryText("SELECT COUNT(*) FROM BAS_ORG"), u"7"_s);
    }

    void ClientStatementIsKeptAway_data()
    {
        QTest::addColumn<QByteArray>("sql");
        QTest::newRow("tokens") << QByteArray("SELECT TOKEN_HASH FROM SRV_TOKEN");
        QTest::newRow("tokens, inside")
            << QByteArray("SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID IN (SELECT NAME"
                          " FROM SRV_SEQUENCE)");
        QTest::newRow("delete") << QByteArray("DELETE FROM BAS_ORG");
        QTest::newRow("two at once") << QByteArray("SELECT 1; DELETE FROM BAS_ORG");
        if (TestsRunOnPostgres()) {
            QTest::newRow("passwords") << QByteArray("SELECT rolpassword FROM pg_authid");
            QTest::newRow("files") << QByteArray("SELECT pg_read_file('/etc/passwd')");
            QTest::newRow("other sessions")
                << QByteArray("SELECT 1 / pg_terminate_backend(pid)::integer FROM pg_stat_activity"
                              " WHERE datname = current_database() AND pid <> pg_backend_pid()");
        } else {
            QTest::newRow("the database's own tables")
                << QByteArray("SELECT sql FROM sqlite_master");
            QTest::newRow("attach") << QByteArray("ATTACH '/tmp/x' AS x");
            QTest::newRow("pragma") << QByteArray("PRAGMA query_only = OFF");
        }
    }
    void ClientStatementIsKeptAway()
    {
        QFETCH(QByteArray, sql);
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        const auto read = [&](const QByteArray &text) {
            const auto statement = reader->PrepareQuery(text);
            while (statement->Step()) {
            }
        };
        if (sql.contains(';')) {
            try {
                read(sql);
            } catch (const EStoreError &) {
            }
        } else {
            QVERIFY(KindOf([&] { read(sql); }));
        }
        QCOMPARE(data.Number("SELECT COUNT(*) FROM BAS_ORG"), 8);
        // The same connection serves the server itself.
        QVERIFY(Store::FindOperator(*reader, u"admin"_s, TestDatabase::AdminToken));
        read("SELECT ORG_NAME FROM BAS_ORG");
    }

    void EndsStatementWhenTold()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        int asked = 0;
        reader->StopWhen([&] { return ++asked > 3; });
        const QByteArray endless = "WITH RECURSIVE N (X) AS (SELECT 1 UNION ALL SELECT X + 1"
                                   " FROM N) SELECT COUNT(*) FROM N";
        QCOMPARE(KindOf([&] { reader->QueryText(endless); }), EStoreError::Kind::Stopped);
        reader->StopWhen({});
        QCOMPARE(reader->QueryText("SELECT COUNT(*) FROM BAS_ORG"), u"8"_s);
    }

    void UndoesTransactionThatWasNotCommitted()
    {
        TestDatabase data;
        {
            Store::Transaction transaction(data.Connection());
            data.Connection().Execute("DELETE FROM BAS_ORG");
        }
        QCOMPARE(data.Number("SELECT COUNT(*) FROM BAS_ORG"), 8);
    }

    void UndoesSavepointAlone()
    {
        TestDatabase data;
        Store::Transaction transaction(data.Connection());
        data.Connection().Execute("DELETE FROM BAS_ORG WHERE ORG_ID = '200008'");
        {
            Store::Savepoint savepoint(data.Connection());
            data.Connection().Execute("DELETE FROM BAS_ORG");
        }
        transaction.Commit();
        QCOMPARE(data.Number("SELECT COUNT(*) FROM BAS_ORG"), 7);
    }

    void TransactionWithinASharedOneIsAPartOfItAndUndoneAlone()
    {
        TestDatabase data;
        if (!data.Database().SharesTransactions())
            QSKIP("each of its transactions stands by itself");
        {
            Store::Transaction shared(data.Connection());
            {
                Store::Transaction undone(data.Connection());
                data.Connection().Execute("DELETE FROM BAS_ORG");
            }
            Store::Transaction part(data.Connection());
            data.Connection().Execute("DELETE FROM BAS_ORG WHERE ORG_ID = '200008'");
            part.Commit();
            QVERIFY(!data.Connection().IsAtRest());
            QCOMPARE(data.Database().OpenReader()->QueryText("SELECT COUNT(*) FROM BAS_ORG"),
                     u"8"_s);
            shared.Commit();
        }
        QCOMPARE(data.Number("SELECT COUNT(*) FROM BAS_ORG"), 7);
        {
            Store::Transaction shared(data.Connection());
            Store::Transaction part(data.Connection());
            data.Connection().Execute("DELETE FROM BAS_ORG");
            part.Commit();
        }
        QCOMPARE(data.Number("SELECT COUNT(*) FROM BAS_ORG"), 7);
    }

    void SnapshotHoldsWhileOthersCommit()
    {
        TestDatabase data;
        const auto reader = data.Database().OpenReader();
        {
            Store::Snapshot snapshot(*reader);
            QCOMPARE(reader->QueryText("SELECT COUNT(*) FROM BAS_ORG"), u"8"_s);
            data.Connection().Execute("DELETE FROM BAS_ORG");
            QCOMPARE(reader->QueryText("SELECT COUNT(*) FROM BAS_ORG"), u"8"_s);
        }
        QCOMPARE(reader->QueryText("SELECT COUNT(*) FROM BAS_ORG"), u"0"_s);
    }

    void LargestKeyPassesOverWhatNoServerCounted()
    {
        TestDatabase data;
        const QString type = u"UNI_ORG_TYPE"_s;
        const auto largest = [&] {
            return Store::LargestKey(data.Connection(), type, u"ORG_TYPE_ID"_s);
        };
        data.Connection().Execute("DELETE FROM UNI_ORG_TYPE");
        QCOMPARE(largest(), 0);
        const auto add = [&](const QString &key) {
            data.Connection().Run("INSERT INTO UNI_ORG_TYPE (ORG_TYPE_ID, UNION_ID)"
                                  " VALUES (?1, '300001')",
                                  {key});
        };
        for (const char *key : {"7", "12", "x99", "9223372036854775808", "99999999999999999999"})
            add(QString::fromLatin1(key));
        QCOMPARE(largest(), 12);
        add(u"999999999999999999"_s);
        QCOMPARE(largest(), 999'999'999'999'999'999);
    }

    void RefusesUnknownDatabaseAddress()
    {
        QVERIFY(KindOf([] { Store::Database::Open(u"oracle:x"_s); }));
        QVERIFY(KindOf([] { Store::Database::Open(u"sqlite:"_s); }));
        QVERIFY(KindOf([] { Store::Database::Open(u"sqlite:/nowhere/at/all"_s)->OpenWriter(); }));
    }

    void CacheDropsWhatWasUsedLeastRecently()
    {
        Store::LruCache<int, int> cache(2);
        int made = 0;
        const auto get = [&](int key) { return cache.Get(key, [&] { return ++made, key * 10; }); };
        QCOMPARE(get(1), 10);
        QCOMPARE(get(2), 20);
        QCOMPARE(get(1), 10); // 2 is now the older one
        QCOMPARE(get(3), 30);
        QCOMPARE(made, 3);
        QCOMPARE(get(1), 10);
        QCOMPARE(made, 3);
        QCOMPARE(get(2), 20);
        QCOMPARE(made, 4);
    }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "StoreTest.moc"
