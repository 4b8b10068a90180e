#include "CheckSupport.h"
#include "store/Schema.h"
#include "support/PostgresCluster.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

/// What the check says of a PostgreSQL server, its roles and databases: changes that the tests of
/// other programs would feel, and so on a cluster of its own.
class CheckPostgresTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        cluster_ = std::make_unique<PostgresCluster>();
        cluster_->Superuser()->Execute("CREATE DATABASE sound OWNER qel");
        database_ = Store::Database::Open(cluster_->Url(u"sound"_s));
        Store::CreateSchema(*database_->OpenWriter());
    }
    void cleanupTestCase()
    {
        database_.reset();
        cluster_.reset();
    }

    void SoundClusterHasNoFindings()
    {
        QStringList texts;
        for (const Admin::CheckFinding &finding : Admin::CheckDatabase(*database_))
            texts += finding.code + u' ' + finding.place; // settings too
        QCOMPARE(texts, QStringList());
    }

    void Finds_data()
    {
        QTest::addColumn<QByteArray>("change");
        QTest::addColumn<QByteArray>("undo");
        QTest::addColumn<QStringList>("problems");
        QTest::newRow("a role that is gone")
            << QByteArray("ALTER ROLE qel_reader RENAME TO somebody")
            << QByteArray("ALTER ROLE somebody RENAME TO qel_reader")
            << QStringList{u"role.missing qel_reader 没有这个角色"_s};
        const QStringList powers{u"role.writes qel_reader 角色有管理权限"_s};
        QTest::newRow("a role that makes roles")
            << QByteArray("ALTER ROLE qel_reader CREATEROLE")
            << QByteArray("ALTER ROLE qel_reader NOCREATEROLE") << powers;
        QTest::newRow("a role that no policy holds")
            << QByteArray("ALTER ROLE qel_reader BYPASSRLS")
            << QByteArray("ALTER ROLE qel_reader NOBYPASSRLS") << powers;
        QTest::newRow("a database without ICU")
            << QByteArray("ALTER COLLATION pg_catalog.\"und-x-icu\" RENAME TO \"none\"")
            << QByteArray("ALTER COLLATION pg_catalog.\"none\" RENAME TO \"und-x-icu\"")
            << QStringList{u"server.collation und-x-icu 数据库没有 ICU 排序规则"_s};
    }
    void Finds()
    {
        QFETCH(QByteArray, change);
        QFETCH(QByteArray, undo);
        const auto superuser = cluster_->Superuser(u"sound"_s);
        superuser->Execute(change);
        const QStringList problems = Problems(*database_);
        superuser->Execute(undo);
        QTEST(problems, "problems");
        QCOMPARE(Problems(*database_), QStringList());
    }

    void TellsOfAnEncodingThatIsNotUtf8()
    {
        cluster_->Superuser()->Execute("CREATE DATABASE latin OWNER qel ENCODING 'LATIN1'"
                                       " LOCALE 'C' TEMPLATE template0");
        const auto latin = Store::Database::Open(cluster_->Url(u"latin"_s));
        QCOMPARE(
            Problems(*latin),
            (QStringList{u"schema.version SRV_SCHEMA 数据库中还没有表"_s,
                         u"server.encoding server_encoding 数据库的编码是 LATIN1，应为 UTF8"_s}));
    }

private:
    std::unique_ptr<PostgresCluster> cluster_;
    std::unique_ptr<Store::Database> database_;
};

QTEST_GUILESS_MAIN(CheckPostgresTest)
#include "CheckPostgresTest.moc"
