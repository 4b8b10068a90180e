#include "host/LocalServer.h"
#include "dataset/QelError.h"
#include "host/Session.h"

#include <QTest>

#include <csignal>

using namespace Qel;
using namespace Qel::Host;
using namespace Qt::StringLiterals;

class LocalServerTest : public QObject
{
    Q_OBJECT

private slots:
    void StartsAServerThatKnowsTheOperatorAndStopsIt();
    void EveryStartHasACredentialOfItsOwn();
    void ProgramThatEndsIsToldInWords();
    void MissingProgramIsToldInWords();
};

void LocalServerTest::StartsAServerThatKnowsTheOperatorAndStopsIt()
{
    pid_t process = 0;
    {
        LocalServer server(u"admin"_s, {});
        const QUrl address = server.Start(QStringLiteral(QEL_SERVER_PROGRAM));
        process = static_cast<pid_t>(server.ProcessId());
        QCOMPARE(address.host(), u"127.0.0.1"_s);
        QCOMPARE(address.password().size(), 64); // 256 bits in hexadecimal digits
        QCOMPARE(FetchSession(address).value(u"UserCode"_s), u"admin"_s);
        QUrl wrong = address;
        wrong.setPassword(u"0"_s);
        QVERIFY_THROWS_EXCEPTION(EQelError, FetchSession(wrong));
    }
    QVERIFY(kill(process, 0) != 0);
}

void LocalServerTest::EveryStartHasACredentialOfItsOwn()
{
    LocalServer one(u"admin"_s, {});
    LocalServer other(u"admin"_s, {});
    const QString program = QStringLiteral(QEL_SERVER_PROGRAM);
    QVERIFY(one.Start(program).password() != other.Start(program).password());
}

void LocalServerTest::ProgramThatEndsIsToldInWords()
{
    LocalServer server(u"admin"_s, {});
    QVERIFY_THROWS_EXCEPTION(EQelError, server.Start(u"/bin/false"_s));
}

void LocalServerTest::MissingProgramIsToldInWords()
{
    LocalServer server(u"admin"_s, {});
    QVERIFY_THROWS_EXCEPTION(EQelError, server.Start({}));
    LocalServer another(u"admin"_s, {});
    QVERIFY_THROWS_EXCEPTION(EQelError, another.Start(u"/nowhere/qel-server"_s));
}

QTEST_MAIN(LocalServerTest)
#include "LocalServerTest.moc"
