#include "support/TestDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace Qel;

class CredentialsTest : public QObject
{
    Q_OBJECT

private slots:
    void FindsOperatorWithOrganisation()
    {
        TestDatabase data;
        const auto found =
            Store::FindOperator(data.Connection(), u"admin"_s, TestDatabase::AdminToken);
        QVERIFY(found);
        QCOMPARE(found->userId, u"600001"_s);
        QCOMPARE(found->userName, u"系统管理员"_s);
        QCOMPARE(found->orgName, u"省药品采购服务中心"_s);
    }

    void RefusesWrongTokenAndUnknownUser()
    {
        TestDatabase data;
        const auto find = [&](const QString &user, const QByteArray &token) {
            return Store::FindOperator(data.Connection(), user, token).has_value();
        };
        QVERIFY(!find(u"admin"_s, "0123456789abcdef-other"));
        QVERIFY(!find(u"admin"_s, ""));
        QVERIFY(!find(u"zhang"_s, TestDatabase::AdminToken));
        QVERIFY(!find(u"nobody"_s, TestDatabase::AdminToken));
        QVERIFY(!find(QString(), QByteArray()));
    }

    void RefusesUserWhoWasDisabledAfterwards()
    {
        TestDatabase data;
        data.Connection().Execute(
            "UPDATE USR_USER SET ENABLE_FLAG = '0' WHERE USER_CODE = 'admin'");
        QVERIFY(!Store::FindOperator(data.Connection(), u"admin"_s, TestDatabase::AdminToken));
    }

    void StoresHashAndNotToken()
    {
        TestDatabase data;
        // echo -n 0123456789abcdef-admin | sha256sum
        QCOMPARE(data.Text("SELECT TOKEN_HASH FROM SRV_TOKEN WHERE USER_CODE = 'admin'"),
                 u"cf9f93a5356c69ae742744ec68f46cc02ce97a3872de5c56625e705afbe3b4e5"_s);
    }

    void NewTokenReplacesOldOne()
    {
        TestDatabase data;
        Store::SetToken(data.Connection(), u"admin"_s, "another-token-of-length");
        QVERIFY(!Store::FindOperator(data.Connection(), u"admin"_s, TestDatabase::AdminToken));
        QVERIFY(Store::FindOperator(data.Connection(), u"admin"_s, "another-token-of-length"));
    }

    void RefusesTokenFor_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QByteArray>("token");
        QTest::newRow("too short") << u"admin"_s << QByteArray("0123456789abcde");
        QTest::newRow("unknown user") << u"nobody"_s << QByteArray("0123456789abcdef");
        QTest::newRow("disabled user") << u"gone"_s << QByteArray("0123456789abcdef");
    }
    void RefusesTokenFor()
    {
        QFETCH(QString, user);
        QFETCH(QByteArray, token);
        TestDatabase data;
        QVERIFY_THROWS_EXCEPTION(EQelError, Store::SetToken(data.Connection(), user, token));
    }
};

QTEST_GUILESS_MAIN(CredentialsTest)
#include "CredentialsTest.moc"
