#include "CheckSupport.h"
#include "support/AdminRun.h"
#include "support/TestDatabase.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

/// A sound database: the members' type is there, which other tests do without.
struct SoundDatabase : TestDatabase
{
    SoundDatabase()
    {
        Connection().Run("INSERT INTO UNI_ORG_TYPE (ORG_TYPE_ID, UNION_ID, ORG_TYPE_NAME)"
                         " VALUES ('400001', '300002', '医疗机构')");
    }
};

} // namespace

class CheckTest : public QObject
{
    Q_OBJECT

private slots:
    void SoundDatabaseHasNoFindings()
    {
        SoundDatabase data;
        QCOMPARE(Problems(data.Database()), QStringList());
    }

    void Finds_data()
    {
        QTest::addColumn<QByteArray>("sqlite");
        QTest::addColumn<QByteArray>("postgres"); // empty: the same
        QTest::addColumn<QStringList>("problems");
        const auto row = [](const char *name, const QByteArray &sql, const QStringList &problems) {
            QTest::newRow(name) << sql << QByteArray() << problems;
        };
        row("tables of another version", "UPDATE SRV_SCHEMA SET VERSION = 1",
            {u"schema.version SRV_SCHEMA 数据库的表是版本 1，本程序需要版本 4"_s});
        row("a missing table", "DROP TABLE TRA_RETURN",
            {u"schema.table TRA_RETURN 缺少这个表"_s,
             u"schema.index TRA_RETURN 主键应为 RETURN_ID"_s,
             u"schema.index IX_TRA_RETURN_1 缺少这个索引（TRA_RETURN：SEND_ID）"_s,
             u"schema.index IX_TRA_RETURN_2 缺少这个索引（TRA_RETURN：LAST_UPDATE）"_s});
        row("a missing column", "ALTER TABLE BAS_ORG DROP COLUMN ORG_KIND",
            {u"schema.column BAS_ORG.ORG_KIND 缺少这一列"_s});
        QTest::newRow("another type")
            << QByteArray("DROP TABLE SRV_SEQUENCE; CREATE TABLE SRV_SEQUENCE"
                          " (NAME TEXT NOT NULL PRIMARY KEY, NEXT REAL NOT NULL)")
            << QByteArray("ALTER TABLE SRV_SEQUENCE ALTER NEXT TYPE double precision")
            << QStringList{(TestsRunOnPostgres()
                                ? u"schema.type SRV_SEQUENCE.NEXT 类型是 DOUBLE PRECISION，应为 "
                                  "BIGINT"_s
                                : u"schema.type SRV_SEQUENCE.NEXT 类型是 REAL，应为 INTEGER"_s)};
        row("a missing index", "DROP INDEX IX_BAS_ORG_2",
            {u"schema.index IX_BAS_ORG_2 缺少这个索引（BAS_ORG：ORG_NAME）"_s});
        row("an index of another column",
            "DROP INDEX IX_BAS_ORG_2; CREATE INDEX IX_BAS_ORG_2 ON BAS_ORG (ORG_ABBR)",
            {u"schema.index IX_BAS_ORG_2 索引的列是 ORG_ABBR，应为 ORG_NAME"_s});
        row("an index that is not unique",
            "DROP INDEX IX_BAS_ORG_1; CREATE INDEX IX_BAS_ORG_1 ON BAS_ORG (ORG_CODE)",
            {u"schema.index IX_BAS_ORG_1 索引的列是 ORG_CODE，应为 ORG_CODE UNIQUE"_s});
        QTest::newRow("a row without its mark")
            << QByteArray(
                   "ALTER TABLE UNI_USER_UNION RENAME TO OLD; DROP INDEX IX_UNI_USER_UNION_1;"
                   "CREATE TABLE UNI_USER_UNION (USER_ID TEXT NOT NULL, UNION_ID TEXT NOT"
                   " NULL, LAST_OPERATE TEXT, LAST_USER TEXT, LAST_USER_ID TEXT,"
                   " LAST_UPDATE TEXT, PRIMARY KEY (USER_ID, UNION_ID));"
                   "CREATE INDEX IX_UNI_USER_UNION_1 ON UNI_USER_UNION (UNION_ID);"
                   "INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID) VALUES ('600001','300001')")
            << QByteArray("ALTER TABLE UNI_USER_UNION ALTER LAST_OPERATE DROP NOT NULL;"
                          "INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID, LAST_OPERATE)"
                          " VALUES ('600001','300001', NULL)")
            << QStringList{u"schema.type UNI_USER_UNION.LAST_OPERATE 应为 NOT NULL"_s,
                           u"data.null UNI_USER_UNION.LAST_OPERATE 1 行没有值"_s};
        QTest::newRow("an empty text")
            << QByteArray("PRAGMA ignore_check_constraints = ON;"
                          "UPDATE USR_USER SET REMARK = '' WHERE USER_ID = '600001'")
            << QByteArray("ALTER TABLE USR_USER DROP CONSTRAINT usr_user_remark_check;"
                          "UPDATE USR_USER SET REMARK = '' WHERE USER_ID = '600001'")
            << QStringList{u"file.damaged - CHECK constraint failed in USR_USER"_s,
                           u"data.empty USR_USER.REMARK 1 行是空文本，应为 NULL"_s}
                   .mid(TestsRunOnPostgres() ? 1 : 0);
        row("a counter that is behind",
            "INSERT INTO SRV_SEQUENCE (NAME, NEXT) VALUES ('USR_USER', 600003)",
            {u"data.sequence USR_USER 下一个主键 600003 不大于最大的主键 600003"_s});
        row("a key that is no number",
            "INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_SERIAL) VALUES ('5x1', 'P')",
            {u"data.key BAS_PRODUCT.PRODUCT_ID 5x1：主键“5x1”不是数字"_s});
        row("a member of an absent group",
            "INSERT INTO UNI_ORG (UNION_ID, ORG_ID) VALUES ('399999', '200001')",
            {u"data.reference UNI_ORG.UNION_ID 399999/200001：UNI_UNION 中没有“399999”"_s});
        row("a price of an absent product",
            "INSERT INTO PRC_UNI_PRICE_PRODUCT (PRICE_ID, UNION_ID, SALE_ORGID, PRODUCT_ID)"
            " VALUES ('810001', '300001', '200001', '599999')",
            {u"data.reference PRC_UNI_PRICE_PRODUCT.PRODUCT_ID 810001：BAS_PRODUCT 中没有"
             "“599999”"_s});
        row("a code twice",
            "INSERT INTO UNI_UNION (UNION_ID, UNION_CODE) VALUES ('300009', '0001')",
            {u"data.live UNI_UNION.UNION_CODE 300009：“0001”与另一有效行重复"_s});
        row("an organisation twice in the tree",
            "INSERT INTO BAS_ORG_AFFILIATION (ID, ORG_ID, TREE_CODE) VALUES"
            " ('700001', '200001', '0001'), ('700002', '200001', '0002'),"
            " ('700003', '200002', '0002')",
            {u"data.live BAS_ORG_AFFILIATION.TREE_CODE 700003：“0002”与另一有效行重复"_s,
             u"data.live BAS_ORG_AFFILIATION.ORG_ID 700002：“200001”与另一有效行重复"_s});
        if (!TestsRunOnPostgres())
            return;
        row("a missing search index", "DROP INDEX IX_BAS_ORG_PARTS",
            {u"schema.search IX_BAS_ORG_PARTS 检索索引缺少这一部分，请执行 qel-server reindex"_s});
        row("a search index of other columns",
            "DROP INDEX IX_TRA_SEND_PARTS; CREATE INDEX IX_TRA_SEND_PARTS ON TRA_SEND (ORD_CODE)",
            {u"schema.search IX_TRA_SEND_PARTS 检索索引的这一部分被改动过，请执行 qel-server "
             "reindex"_s});
        row("a missing function", "DROP FUNCTION QEL_LOWER(text)",
            {u"schema.function QEL_LOWER 缺少这个函数，或其中一种参数"_s});
        row("a missing form of a function", "DROP FUNCTION QEL_NUMBER_TEXT(bigint)",
            {u"schema.function QEL_NUMBER_TEXT 缺少这个函数，或其中一种参数"_s});
        row("a table that queries may not read", "REVOKE SELECT ON BAS_ORG FROM qel_reader",
            {u"role.reads BAS_ORG 角色 qel_reader 不能读取这个表"_s});
        row("a table that queries must not read", "GRANT SELECT ON SRV_TOKEN TO qel_reader",
            {u"role.reads SRV_TOKEN 角色 qel_reader 能读取这个表"_s});
        row("a table that queries may write", "GRANT UPDATE (REMARK) ON USR_USER TO qel_reader",
            {u"role.writes USR_USER 角色 qel_reader 能修改这个表"_s});
        row("a function with an effect that queries may call",
            "CREATE FUNCTION EMPTY_ALL() RETURNS integer LANGUAGE sql VOLATILE AS 'SELECT 1'",
            {u"role.functions qel_reader 查询能调用 1 个有副作用的函数，例如 empty_all；"
             "请以超级用户执行 qel-reader.sql"_s});
    }
    void Finds()
    {
        QFETCH(QByteArray, sqlite);
        QFETCH(QByteArray, postgres);
        QFETCH(QStringList, problems);
        SoundDatabase data;
        data.Connection().Execute(TestsRunOnPostgres() && !postgres.isEmpty() ? postgres : sqlite);
        QCOMPARE(Problems(data.Database()), problems);
    }

    void FindsDamageOfTheFile()
    {
        if (TestsRunOnPostgres())
            QSKIP("a matter of SQLite's file");
        SoundDatabase data;
        data.Connection().Execute("PRAGMA wal_checkpoint(TRUNCATE)");
        QFile file(data.Url().mid(7));
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QByteArray bytes = file.readAll();
        // It stands in the table and in its index: in one of them it becomes another.
        const qsizetype place = bytes.lastIndexOf("H200005");
        QVERIFY(place > 0 && bytes.count("H200005") == 2);
        file.seek(place + 6);
        file.write("9");
        file.close();
        const QStringList problems = Problems(data.Database());
        QVERIFY(!problems.isEmpty());
        QVERIFY2(problems.first().startsWith(u"file.damaged - "_s), qPrintable(problems.first()));
    }

    void FindsSearchIndexThatIsNotInStep_data()
    {
        QTest::addColumn<QByteArray>("sql");
        QTest::addColumn<QString>("problem");
        const auto stale =
            u"data.search BAS_ORG 检索索引与表中的行不一致，请执行 qel-server reindex"_s;
        QTest::newRow("a row that is not in it")
            << QByteArray("DROP TRIGGER QEL_GRAMS_BAS_ORG_I;"
                          "INSERT INTO BAS_ORG (ORG_ID, ORG_CODE) VALUES ('200099', 'H99')")
            << u"schema.search QEL_GRAMS_BAS_ORG_I 检索索引缺少这一部分，请执行 qel-server reindex"_s;
        QTest::newRow("grams too few")
            << QByteArray("INSERT INTO QEL_GRAMS_BAS_ORG (QEL_GRAMS_BAS_ORG, rowid, GRAMS)"
                          " SELECT 'delete', rowid, QEL_GRAMS(ORG_CODE) FROM BAS_ORG"
                          " WHERE ORG_ID = '200001'")
            << stale;
        QTest::newRow("grams too many")
            << QByteArray("INSERT INTO QEL_GRAMS_BAS_ORG (rowid, GRAMS) VALUES (99, 'ABC BC C')")
            << stale;
        QTest::newRow("another trigger")
            << QByteArray("DROP TRIGGER QEL_GRAMS_USR_USER_D; CREATE TRIGGER QEL_GRAMS_USR_USER_D"
                          " AFTER DELETE ON USR_USER BEGIN SELECT 1; END")
            << u"schema.search QEL_GRAMS_USR_USER_D 检索索引的这一部分被改动过，请执行 qel-server "
               "reindex"_s;
    }
    void FindsSearchIndexThatIsNotInStep()
    {
        if (TestsRunOnPostgres())
            QSKIP("no write passes by an index of PostgreSQL");
        QFETCH(QByteArray, sql);
        QFETCH(QString, problem);
        SoundDatabase data;
        data.Connection().Execute(sql);
        QCOMPARE(Problems(data.Database()), QStringList{problem});
        const AdminRun run = RunAdmin({u"reindex"_s}, {{u"QEL_DATABASE"_s, data.Url()}});
        QCOMPARE(run.err, QString());
        QCOMPARE(run.status, 0);
        QCOMPARE(Problems(data.Database()), QStringList());
    }

    void ReindexMakesMissingIndexes()
    {
        SoundDatabase data;
        data.Connection().Execute("DROP INDEX IX_BAS_ORG_2; DROP INDEX IX_TRA_SEND_1");
        QCOMPARE(Problems(data.Database()).size(), 2);
        QCOMPARE(RunAdmin({u"reindex"_s}, {{u"QEL_DATABASE"_s, data.Url()}}).status, 0);
        QCOMPARE(Problems(data.Database()), QStringList());
    }

    void FindsSettingsThatLosePosts()
    {
        if (!TestsRunOnPostgres())
            QSKIP("SQLite has none");
        SoundDatabase data;
        const auto settings = [&] {
            QStringList texts;
            for (const Admin::CheckFinding &finding : Admin::CheckDatabase(data.Database()))
                if (finding.code == "server.setting"_L1)
                    texts += finding.place + u' ' + finding.text;
            return texts;
        };
        // The cluster of the tests saves time by them.
        const QString fsync = u"fsync 设置是 off，应为 on"_s;
        const QString commit = u"synchronous_commit 设置是 off：已确认的提交可能丢失"_s;
        QVERIFY(settings().contains(fsync));
        QVERIFY(settings().contains(commit));
        data.Connection().Execute(
            "DO $$ BEGIN EXECUTE format('ALTER DATABASE %I SET synchronous_commit = on',"
            " current_database()); END $$");
        QVERIFY(settings().contains(fsync));
        QVERIFY(!settings().contains(commit));
    }

    void LongListsAreCutAndSaySo()
    {
        SoundDatabase data;
        data.Connection().Execute(
            "INSERT INTO STK_ORG_SET (OWNER_ORGID, ORG_ID)"
            " WITH RECURSIVE N (X) AS (SELECT 1 UNION ALL SELECT X + 1 FROM N WHERE X < 150)"
            " SELECT '200001', CAST(210000 + X AS text) FROM N");
        const QStringList problems = Problems(data.Database());
        QCOMPARE(problems.size(), 101);
        QCOMPARE(problems.last(), u"data.reference - 多于 100 个，其余从略"_s);
    }

    void CommandPrintsOneLineEach()
    {
        SoundDatabase data;
        const QMap<QString, QString> environment{{u"QEL_DATABASE"_s, data.Url()}};
        if (!TestsRunOnPostgres()) { // whose cluster has findings of its own
            const AdminRun sound = RunAdmin({u"check"_s}, environment);
            QCOMPARE(sound.status, 0);
            QCOMPARE(sound.out + sound.err, QString());
        }
        data.Connection().Execute("DROP INDEX IX_BAS_ORG_2; DROP INDEX IX_BAS_ORG_3");
        const AdminRun run = RunAdmin({u"check"_s}, environment);
        QCOMPARE(run.status, 1);
        const QStringList lines = run.Lines();
        QCOMPARE(lines.value(0),
                 u"schema.index\tIX_BAS_ORG_2\t缺少这个索引（BAS_ORG：ORG_NAME）"_s);
        QCOMPARE(lines.value(1),
                 u"schema.index\tIX_BAS_ORG_3\t缺少这个索引（BAS_ORG：REGION_ID）"_s);
    }
};

QTEST_GUILESS_MAIN(CheckTest)
#include "CheckTest.moc"
