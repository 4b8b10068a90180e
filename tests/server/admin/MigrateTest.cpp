#include "CheckSupport.h"
#include "store/Credentials.h"
#include "store/Migrations.h"
#include "store/SearchIndex.h"
#include "support/AdminRun.h"
#include "support/ServerProcess.h"
#include "support/TestDatabase.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

/// A database that a program with tables of that version has made and worked with.
struct OldSite
{
    explicit OldSite(int version = 1)
    {
        QFile script(QStringLiteral(QEL_OLD_SITES "/version%1.sql").arg(version));
        if (!script.open(QIODevice::ReadOnly))
            qFatal("no fixture");
        Open()->Execute(script.readAll());
    }

    QString Url() const { return u"sqlite:"_s + folder.filePath(u"old.sqlite"_s); }
    std::unique_ptr<Store::Connection> Open() const
    {
        return Store::Database::Open(Url())->OpenWriter();
    }
    AdminRun Run(const QStringList &arguments) const
    {
        return RunAdmin(arguments, {{u"QEL_DATABASE"_s, Url()}});
    }

    QTemporaryDir folder;
};

} // namespace

class MigrateTest : public QObject
{
    Q_OBJECT

private slots:
    void BringsOldTablesUpToDate_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("steps");
        QTest::newRow("before versions were kept") << 1 << u"2\n3\n4\n"_s;
        QTest::newRow("without search indexes") << 2 << u"3\n4\n"_s;
    }
    void BringsOldTablesUpToDate()
    {
        QFETCH(int, version);
        QFETCH(QString, steps);
        const OldSite site(version);
        AdminRun run = site.Run({u"migrate"_s});
        QCOMPARE(run.err, QString());
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, steps);

        // What was there stays, and the tables are those of an empty database of today.
        const auto connection = site.Open();
        QCOMPARE(*connection->QueryText("SELECT UNION_NAME FROM UNI_UNION"), u"浙江采购联合体"_s);
        QCOMPARE(*connection->QueryText("SELECT RETAIL_PRICE FROM BAS_PRODUCT"), u"12.5"_s);
        QCOMPARE(*connection->QueryText("SELECT COUNT(*) FROM SYS_UPDATE_LOG"), u"1"_s);
        QCOMPARE(*connection->QueryText("SELECT KEY FROM SRV_IDEMPOTENCY"), u"0b1c"_s);
        QCOMPARE(*connection->QueryText("SELECT NEXT FROM SRV_SEQUENCE WHERE NAME = 'UNI_UNION'"),
                 u"300002"_s);
        QVERIFY(Store::FindOperator(*connection, u"admin"_s, TestDatabase::AdminToken));
        run = site.Run({u"check"_s});
        QCOMPARE(run.out, QString());
        QCOMPARE(run.status, 0);
        QCOMPARE(site.Run({u"user"_s, u"add"_s, u"admin"_s}).status, 0);
        // Parts of the texts are found that were there before.
        QCOMPARE(*connection->QueryText("SELECT COUNT(*) FROM BAS_ORG WHERE rowid IN (SELECT rowid"
                                        " FROM QEL_GRAMS_BAS_ORG WHERE QEL_GRAMS_BAS_ORG MATCH"
                                        " '\"民医\" *')"),
                 u"1"_s);
    }

    void MigratesToSearchIndexesOnPostgres_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("steps");
        QTest::newRow("from none") << 2 << u"3\n4\n"_s;
        QTest::newRow("from trigrams") << 3 << u"4\n"_s;
    }
    void MigratesToSearchIndexesOnPostgres()
    {
        QFETCH(int, version);
        QFETCH(QString, steps);
        if (!TestsRunOnPostgres())
            QSKIP("above on SQLite");
        TestDatabase data(TestDatabase::Content::Tables);
        { // those versions: the same tables
            Store::Transaction transaction(data.Connection());
            Store::DropSearchIndexes(data.Connection());
            data.Connection().Execute("DROP FUNCTION QEL_PART_GRAMS; DROP FUNCTION QEL_GRAMS;"
                                      "CREATE SCHEMA QEL_SEARCH;"
                                      "CREATE EXTENSION pg_trgm SCHEMA QEL_SEARCH;"
                                      "UPDATE SRV_SCHEMA SET VERSION = " +
                                      QByteArray::number(version));
            transaction.Commit();
        }
        const AdminRun run = RunAdmin({u"migrate"_s}, {{u"QEL_DATABASE"_s, data.Url()}});
        QCOMPARE(run.err, QString());
        QCOMPARE(run.out, steps);
        QCOMPARE(Problems(data.Database()), QStringList());
        QCOMPARE(data.Number("SELECT COUNT(*) FROM pg_namespace WHERE nspname = 'qel_search'"), 0);
    }

    void DoesNothingTheSecondTime()
    {
        const OldSite site;
        QCOMPARE(site.Run({u"migrate"_s}).status, 0);
        const AdminRun run = site.Run({u"migrate"_s});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.out, QString());
        QCOMPARE(run.err, u"数据库的表已是版本 4。\n"_s);
        QCOMPARE(*site.Open()->QueryText("SELECT COUNT(*) FROM SRV_SCHEMA"), u"3"_s);
    }

    void FailedStepLeavesVersionBefore()
    {
        const OldSite site;
        // In the way of the step's last table.
        site.Open()->Execute("CREATE TABLE SRV_SCHEMA_BLOCK (X); "
                             "CREATE VIEW SRV_SCHEMA AS SELECT 1 AS VERSION, 2 AS CREATED");
        QCOMPARE(site.Run({u"migrate"_s}).status, 1);
        const auto connection = site.Open();
        QVERIFY(!Store::HasTable(*connection, u"SRV_TOKEN_1"_s));
        QCOMPARE(*connection->QueryText("SELECT COUNT(*) FROM SRV_TOKEN"), u"1"_s);
        QVERIFY(Store::HasTable(*connection, u"IX_BAS_ORG_1"_s));
        connection->Execute("DROP VIEW SRV_SCHEMA");
        QCOMPARE(site.Run({u"migrate"_s}).out, u"2\n3\n4\n"_s);
    }

    void ServerSaysWhatToDo()
    {
        const OldSite site;
        const AdminRun run = site.Run({u"--listen"_s, u"127.0.0.1:0"_s});
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, u"qel-server: 数据库的表是版本 1，本程序需要版本 4。请先备份"
                          "（qel-server backup），再执行 qel-server migrate。\n"_s);
        QCOMPARE(site.Run({u"user"_s, u"list"_s}).err, run.err);
        QCOMPARE(site.Run({u"check"_s}).out,
                 u"schema.version\tSRV_SCHEMA\t数据库的表是版本 1，本程序需要版本 4\n"_s);
    }

    void SampleDataAreMigratedByTheServer()
    {
        const OldSite site;
        {
            const ServerProcess server({u"--database"_s, site.Url(), u"--demo"_s});
            QCOMPARE(server.Query(u"SELECT UNION_NAME FROM UNI_UNION"_s).status, 200);
        }
        QCOMPARE(Store::SchemaVersionOf(*site.Open()), Store::SchemaVersion);
    }

    void RefusesTablesOfNewerProgram()
    {
        TestDatabase data;
        data.Connection().Run("INSERT INTO SRV_SCHEMA (VERSION, CREATED) VALUES (?1, 'x')",
                              {qint64(Store::SchemaVersion + 1)});
        const QString message =
            u"qel-server: 数据库的表是版本 %1，比本程序的版本 %2 新。请使用新版本的程序。\n"_s
                .arg(Store::SchemaVersion + 1)
                .arg(Store::SchemaVersion);
        for (const QStringList &arguments :
             {QStringList{u"migrate"_s}, QStringList{u"user"_s, u"list"_s},
              QStringList{u"--listen"_s, u"127.0.0.1:0"_s}}) {
            const AdminRun run = RunAdmin(arguments, {{u"QEL_DATABASE"_s, data.Url()}});
            QCOMPARE(run.status, 1);
            QCOMPARE(run.err, message);
        }
    }

    void EmptyDatabaseGetsItsTables()
    {
        TestDatabase data(TestDatabase::Content::Nothing);
        QCOMPARE(
            RunAdmin({u"user"_s, u"list"_s}, {{u"QEL_DATABASE"_s, data.Url()}}).err,
            u"qel-server: 数据库中还没有表。请先启动一次服务器，或执行 qel-server migrate。\n"_s);
        const AdminRun run = RunAdmin({u"migrate"_s}, {{u"QEL_DATABASE"_s, data.Url()}});
        QCOMPARE(run.err, QString());
        QCOMPARE(run.out, u"%1\n"_s.arg(Store::SchemaVersion));
        QCOMPARE(Problems(data.Database()), QStringList());
    }

    void OfManyServersOneMakesTheTables()
    {
        TestDatabase data(TestDatabase::Content::Nothing);
        constexpr int count = 4;
        std::vector<std::unique_ptr<QProcess>> servers;
        for (int number = 0; number < count; ++number) {
            servers.push_back(std::make_unique<QProcess>());
            servers.back()->setProcessChannelMode(QProcess::MergedChannels);
            servers.back()->start(QStringLiteral(QEL_SERVER_PROGRAM),
                                  {u"--listen"_s, u"127.0.0.1:0"_s, u"--database"_s, data.Url()});
        }
        for (const auto &server : servers) {
            QByteArray output;
            while (!output.contains("listening on") && server->waitForReadyRead(60'000))
                output += server->readAll();
            QVERIFY2(output.contains("listening on"), output.constData());
        }
        for (const auto &server : servers) {
            server->terminate();
            QVERIFY(server->waitForFinished(60'000));
        }
        QCOMPARE(data.Number("SELECT COUNT(*) FROM SRV_SCHEMA"), 1);
        QCOMPARE(Problems(data.Database()), QStringList());
    }
};

QTEST_GUILESS_MAIN(MigrateTest)
#include "MigrateTest.moc"
