#include "SampleDatabase.h"
#include "ScreenStatement.h"

#include "sql/Compile.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// The sample database on PostgreSQL: its rows are those of SQLite, and its indexes are used.
class SampleOnPostgresTest : public QObject
{
    Q_OBJECT

private slots:
    void HasTheRowsOfSqlite_data()
    {
        QTest::addColumn<QString>("name");
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            if (table.name != "SRV_SCHEMA") // the time that the tables were made at
                QTest::newRow(table.name.c_str()) << QString::fromStdString(table.name);
        }
    }
    void HasTheRowsOfSqlite()
    {
        QFETCH(QString, name);
        const Sql::Table &table = *Store::SchemaCatalog().Find(name.toStdString());
        QCOMPARE(data_.ContentHash(table), sqlite_.ContentHash(table));
    }

    /// Else every table is taken for a small one, and joins go through one for each row of another.
    void KnowsWhatIsInItsTables()
    {
        QCOMPARE(data_.Text("SELECT string_agg(DISTINCT tablename, ',') FROM pg_stats"
                            " WHERE tablename IN ('bas_product', 'tra_order', 'usr_user')"),
                 u"bas_product,tra_order,usr_user"_s);
    }

    void LooksUpByIndex_data()
    {
        QTest::addColumn<QByteArray>("sql");
        const auto row = [](const char *name, const QByteArray &sql) {
            QTest::newRow(name) << sql;
        };
        row("a key", "SELECT 1 FROM BAS_PRODUCT WHERE PRODUCT_ID = '500007'");
        row("lines of an order", "SELECT 1 FROM TRA_ORDER_ITEM WHERE ORD_ID = '90000007'");
        row("deliveries of a line", "SELECT 1 FROM TRA_SEND WHERE ORD_ITEM_ID = '91000007'");
        row("returns of a delivery", "SELECT 1 FROM TRA_RETURN WHERE SEND_ID = '92000007'");
        row("orders of a day", "SELECT 1 FROM TRA_ORDER WHERE ORD_DATE BETWEEN"
                               " '2026-03-02 00:00:00' AND '2026-03-02 23:59:59'");
        row("first page of products", "SELECT * FROM BAS_PRODUCT ORDER BY PRODUCT_ID LIMIT 50");
        row("the log of a record", "SELECT 1 FROM SYS_UPDATE_LOG WHERE TABLE_NAME = 'UNI_UNION'"
                                   " AND KEY_ID1 = '300001'");
    }
    void LooksUpByIndex()
    {
        QFETCH(QByteArray, sql);
        const auto rows = data_.connection->Prepare("EXPLAIN " + sql);
        QStringList plan;
        while (rows->Step())
            plan += rows->ColumnText(0);
        const QString text = plan.join(u'\n');
        QVERIFY2(text.contains(u"Index"_s) && !text.contains(u"Seq Scan"_s), qPrintable(text));
    }

    void PartsOfTextsAreFoundByGrams_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("index");
        const auto row = [](const QString &file, const QString &statement, const QString &index) {
            QTest::newRow(qPrintable(statement)) << file << statement << index;
        };
        row(u"groups-and-pickers.txt"_s, u"orgs.text"_s, u"ix_bas_org_parts"_s);
        row(u"stock-and-rules.txt"_s, u"ruleorgs.filtered"_s, u"ix_bas_org_parts"_s);
        row(u"members.txt"_s, u"candidates.text"_s, u"ix_bas_org_parts"_s);
        row(u"group-products.txt"_s, u"uniproduct.out.text"_s, u"ix_bas_product_parts"_s);
        row(u"rollback.txt"_s, u"rollback.receipts.code"_s, u"ix_tra_send_parts"_s);
        row(u"users.txt"_s, u"candidateusers.user"_s, u"ix_usr_user_parts"_s);
        row(u"users.txt"_s, u"candidateusers.org"_s, u"ix_bas_org_parts"_s);
        // The few organisations of the sample are better read through. No test comes after this.
        data_.connection->Execute("INSERT INTO BAS_ORG (ORG_ID, ORG_CODE, ORG_NAME, ORG_NAME_PY)"
                                  " SELECT 'F' || N, 'F' || N, '其他单位' || N, 'QTDW'"
                                  " FROM generate_series(1, 5000) N; ANALYZE BAS_ORG");
    }
    void PartsOfTextsAreFoundByGrams()
    {
        QFETCH(QString, file);
        QFETCH(QString, statement);
        QFETCH(QString, index);
        const QString text = ScreenStatement(file, statement);
        QVERIFY(!text.isEmpty());
        const Sql::CompiledQuery query =
            Sql::Compile(text.toUtf8(), Store::SchemaCatalog(), Sql::Dialect::PostgreSql);
        for (const std::string &sql : {query.Page(50, 0), query.count, query.all}) {
            const auto rows =
                data_.connection->Prepare("EXPLAIN " + QByteArray::fromStdString(sql));
            QStringList plan;
            while (rows->Step())
                plan += rows->ColumnText(0);
            QVERIFY2(!plan.filter(index).isEmpty(), qPrintable(plan.join(u'\n')));
        }
    }

private:
    SampleDatabase data_;
    SampleDatabase sqlite_{SampleDatabase::Source::SqliteCopy};
};

QTEST_GUILESS_MAIN(SampleOnPostgresTest)
#include "SampleOnPostgresTest.moc"
