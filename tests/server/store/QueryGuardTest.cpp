#include "store/Connection.h"
#include "support/TestDatabase.h"

#include <QTest>

#include <memory>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QList<QByteArray> &EveryDatabase()
{
    static const QList<QByteArray> texts{
        "DELETE FROM BAS_ORG",
        "UPDATE BAS_ORG SET ORG_NAME = 'x'",
        "INSERT INTO BAS_ORG (ORG_ID) VALUES ('1')",
        "DROP TABLE BAS_ORG",
        "CREATE TABLE X (A INTEGER)",
        "CREATE TEMPORARY TABLE X (A INTEGER)",
        "BEGIN",
        "COMMIT",
        "ROLLBACK",
        "SAVEPOINT X",
        "SELECT 1; SELECT 2",
        "SELECT * FROM SRV_TOKEN",
        "SELECT (SELECT MAX(TOKEN_HASH) FROM SRV_TOKEN)",
        "SELECT ORG_ID FROM BAS_ORG WHERE EXISTS (SELECT 1 FROM SRV_IDEMPOTENCY)",
        "SELECT random()",
        "SELECT no_such_function(1)",
    };
    return texts;
}

const QList<QByteArray> &OfSqlite()
{
    static const QList<QByteArray> texts{
        "SELECT load_extension('x')",
        "SELECT randomblob(1000000000)",
        "SELECT zeroblob(1000000000)",
        "SELECT hex(ORG_ID) FROM BAS_ORG",
        "SELECT printf('%.*c', 100000000, 'x')",
        "SELECT char(39)",
        "SELECT quote(ORG_ID) FROM BAS_ORG",
        "SELECT sqlite_version()",
        "SELECT json_object('a', 1)",
        "SELECT group_concat(ORG_ID) FROM BAS_ORG",
        "SELECT ORG_ID FROM BAS_ORG WHERE ORG_ID GLOB '*'",
        "SELECT last_insert_rowid()",
        "SELECT * FROM sqlite_master",
        "SELECT * FROM sqlite_schema",
        "SELECT * FROM pragma_table_info('BAS_ORG')",
        "SELECT * FROM json_each('[1]')",
        "WITH RECURSIVE N (X) AS (SELECT 1 UNION ALL SELECT X + 1 FROM N) SELECT COUNT(*) FROM N",
        "PRAGMA query_only = OFF",
        "PRAGMA database_list",
        "ATTACH '/tmp/x' AS Y",
        "VACUUM INTO '/tmp/x'",
    };
    return texts;
}

const QList<QByteArray> &OfPostgres()
{
    static const QList<QByteArray> texts{
        "SELECT pg_sleep(30)",
        "SELECT set_config('statement_timeout', '0', false)",
        "SELECT set_config('role', 'none', false)",
        "SELECT set_config('transaction_read_only', 'off', false)",
        "SELECT pg_terminate_backend(pid) FROM pg_stat_activity",
        "SELECT pg_cancel_backend(pid) FROM pg_stat_activity",
        "SELECT pg_advisory_lock(1)",
        "SELECT pg_try_advisory_lock(1)",
        "SELECT pg_advisory_xact_lock_shared(1)",
        "SELECT lo_create(0)",
        "SELECT lo_from_bytea(0, 'x')",
        "SELECT lo_get(1)",
        "SELECT lo_import('/etc/passwd')",
        "SELECT data FROM pg_largeobject",
        "SELECT pg_read_file('/etc/passwd')",
        "SELECT pg_read_binary_file('/etc/passwd')",
        "SELECT pg_ls_dir('.')",
        "SELECT pg_stat_file('/etc/passwd')",
        "SELECT query_to_xml('DELETE FROM bas_org', true, true, '')",
        "SELECT pg_notify('x', 'y')",
        "SELECT pg_reload_conf()",
        "SELECT pg_rotate_logfile()",
        "SELECT pg_switch_wal()",
        "SELECT pg_create_restore_point('x')",
        "SELECT pg_logical_emit_message(true, 'x', 'y')",
        "SELECT pg_export_snapshot()",
        "SELECT gen_random_uuid()",
        "SELECT pg_stat_reset()",
        "SELECT dblink('dbname=postgres', 'SELECT 1')",
        "SELECT rolpassword FROM pg_authid",
        "SELECT passwd FROM pg_shadow",
        "SELECT ORG_ID FROM BAS_ORG FOR UPDATE",
        "SELECT ORG_ID INTO X FROM BAS_ORG",
        "WITH X AS (DELETE FROM BAS_ORG RETURNING ORG_ID) SELECT * FROM X",
        "RESET ROLE",
        "SET ROLE NONE",
        "SET SESSION AUTHORIZATION DEFAULT",
        "SET statement_timeout = 0",
        "SET standard_conforming_strings = off",
        "COPY BAS_ORG TO PROGRAM 'cat'",
        "COPY BAS_ORG TO STDOUT",
        "DO 'BEGIN END'",
        "LOCK TABLE BAS_ORG",
        "LISTEN X",
        "PREPARE X AS SELECT 1",
        "EXPLAIN ANALYZE SELECT 1",
        "DISCARD ALL",
    };
    return texts;
}

} // namespace

/// What a client could send if the SQL front end let everything through: the database itself
/// refuses it.
class QueryGuardTest : public QObject
{
    Q_OBJECT

private slots:
    void RefusesWhatOnlyTheFrontEndShouldStop_data()
    {
        QTest::addColumn<QByteArray>("sql");
        for (const QByteArray &sql :
             EveryDatabase() + (TestsRunOnPostgres() ? OfPostgres() : OfSqlite()))
            QTest::newRow(sql.constData()) << sql;
    }

    void RefusesWhatOnlyTheFrontEndShouldStop()
    {
        QFETCH(QByteArray, sql);
        bool refused = false;
        try {
            const auto statement = reader_->PrepareQuery(sql);
            while (statement->Step()) {
            }
        } catch (const Store::EStoreError &) {
            refused = true;
        }
        QVERIFY(refused);
    }

    void TheSessionIsAsBefore()
    {
        QCOMPARE(Read("SELECT COUNT(*) FROM BAS_ORG"), u"8"_s);
        QCOMPARE(data_.Number("SELECT COUNT(*) FROM BAS_ORG"), 8);
        if (!TestsRunOnPostgres())
            return;
        QCOMPARE(Read("SELECT current_user"), u"qel_reader"_s);
        QCOMPARE(Read("SELECT current_setting('default_transaction_read_only')"), u"on"_s);
        QCOMPARE(Read("SELECT current_setting('standard_conforming_strings')"), u"on"_s);
    }

    /// Their texts may hold what their clients look for.
    void SeesNoStatementsOfOthers()
    {
        if (!TestsRunOnPostgres())
            QSKIP("one process, no list of sessions");
        data_.Connection().Run("SELECT 'what the others do'");
        QCOMPARE(Read("SELECT COUNT(*) FROM pg_stat_activity WHERE query LIKE '%the others%'"
                      " AND pid <> pg_backend_pid()"),
                 u"0"_s);
    }

    /// What the language needs can still be called.
    void CallsWhatThePrinterWrites()
    {
        QCOMPARE(Read("SELECT QEL_UPPER('a')"), u"A"_s);
        QCOMPARE(Read("SELECT COALESCE(NULLIF(TRIM(' a '),''),'b')"), u"a"_s);
        QCOMPARE(Read("SELECT COUNT(*) FROM BAS_ORG WHERE ORG_ID LIKE '2%'"), u"8"_s);
        if (TestsRunOnPostgres()) // asked on copies of the database; this is none
            QCOMPARE(Read("SELECT COUNT(pg_last_wal_replay_lsn())"), u"0"_s);
    }

private:
    QString Read(const QByteArray &sql)
    {
        const auto statement = reader_->PrepareQuery(sql);
        return statement->Step() ? statement->ColumnText(0) : QString();
    }

    TestDatabase data_;
    std::unique_ptr<Store::Connection> reader_ = data_.Database().OpenReader();
};

QTEST_GUILESS_MAIN(QueryGuardTest)
#include "QueryGuardTest.moc"
