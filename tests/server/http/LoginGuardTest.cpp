#include "http/LoginGuard.h"
#include "http/ClientAddress.h"
#include "http/Problem.h"

#include "dataset/QelError.h"

#include <QTest>

#include <atomic>
#include <latch>
#include <list>
#include <thread>
#include <vector>

using namespace Qel::Http;
using namespace std::chrono_literals;

namespace {

const QByteArray Office = LoginAddress("198.51.100.7");
const QByteArray Home = LoginAddress("203.0.113.9");
const QByteArray Good = "Basic Z29vZA==";
const QByteArray Bad = "Basic YmFk";

using Seconds = std::optional<std::chrono::seconds>;

/// Whether the credential would be looked at; its place is given back at once.
Seconds Refuses(LoginGuard &guard, const QByteArray &address, const QByteArray &credential,
                Clock::time_point now = Clock::now())
{
    return LoginGuard::Attempt(guard, address, credential, Clock::now(), now).Refused();
}

void Fail(LoginGuard &guard, const QByteArray &address, const QByteArray &credential,
          Clock::time_point now = Clock::now())
{
    LoginGuard::Attempt(guard, address, credential, Clock::now(), now).Failed();
}

void Succeed(LoginGuard &guard, const QByteArray &credential, Clock::time_point now = Clock::now())
{
    LoginGuard::Attempt(guard, Home, credential, Clock::now(), now).Succeeded();
}

} // namespace

class LoginGuardTest : public QObject
{
    Q_OBJECT

private slots:
    void FiveFailuresWithinAMinuteCloseAnAddressForTheRestOfIt()
    {
        LoginGuard guard;
        const auto begin = Clock::now();
        for (int second = 0; second < 5; ++second) {
            QVERIFY(!Refuses(guard, Office, Bad, begin + second * 1s));
            Fail(guard, Office, Bad, begin + second * 1s);
        }
        QCOMPARE(Refuses(guard, Office, Bad, begin + 10s).value(), 50s);
        QCOMPARE(Refuses(guard, Office, Bad, begin + 59'500ms).value(), 1s);
        QVERIFY(!Refuses(guard, Office, Bad, begin + 60s));
    }

    void FourFailuresAndOldOnesCloseNothing()
    {
        LoginGuard guard;
        const auto begin = Clock::now();
        for (int minute = 0; minute < 10; ++minute) {
            Fail(guard, Office, Bad, begin + minute * 20s);
            QVERIFY(!Refuses(guard, Office, Bad, begin + minute * 20s));
        }
    }

    void AnotherAddressIsNotConcerned()
    {
        LoginGuard guard;
        for (int at = 0; at < 5; ++at)
            Fail(guard, Office, Bad);
        QVERIFY(Refuses(guard, Office, Good));
        QVERIFY(!Refuses(guard, Home, Good));
    }

    void WhoWasGoodWithinTwelveHoursIsNotLockedOutByANeighbour()
    {
        LoginGuard guard;
        const auto begin = Clock::now();
        Succeed(guard, Good, begin);
        const auto later = begin + 12h - 1min;
        for (int at = 0; at < 5; ++at)
            Fail(guard, Office, Bad, later);
        QVERIFY(!Refuses(guard, Office, Good, later));
        QVERIFY(Refuses(guard, Office, Bad, later));
        for (int at = 0; at < 5; ++at)
            Fail(guard, Office, Bad, begin + 12h);
        QVERIFY(Refuses(guard, Office, Good, begin + 12h));
    }

    void ACredentialThatWasTakenBackIsKnownNoLonger()
    {
        LoginGuard guard;
        Succeed(guard, Good);
        for (int at = 0; at < 5; ++at)
            Fail(guard, Office, Good);
        QVERIFY(Refuses(guard, Office, Good));
    }

    void OfManyAtOnceNoMoreThanFiveAreLookedAtAndFail()
    {
        LoginGuard guard;
        std::latch begin(32);
        std::atomic<int> lookedAt = 0;
        std::atomic<int> refused = 0;
        {
            std::vector<std::jthread> threads;
            for (int at = 0; at < 32; ++at)
                threads.emplace_back([&] {
                    begin.arrive_and_wait();
                    LoginGuard::Attempt attempt(guard, Office, Bad, Clock::now() + 30s);
                    if (attempt.Refused())
                        return void(++refused);
                    ++lookedAt;
                    std::this_thread::yield(); // the database is asked
                    attempt.Failed();
                });
        }
        QCOMPARE(lookedAt.load(), 5);
        QCOMPARE(refused.load(), 27);
    }

    void ManyGoodOnesAtOnceAreAllLookedAt()
    {
        LoginGuard guard;
        std::latch begin(32);
        std::atomic<int> good = 0;
        {
            std::vector<std::jthread> threads;
            for (int at = 0; at < 32; ++at)
                threads.emplace_back([&, credential = Good + QByteArray::number(at)] {
                    begin.arrive_and_wait();
                    LoginGuard::Attempt attempt(guard, Office, credential, Clock::now() + 30s);
                    if (attempt.Refused())
                        return;
                    ++good;
                    attempt.Succeeded();
                });
        }
        QCOMPARE(good.load(), 32);
    }

    void AnAttemptThatEndsOtherwiseGivesItsPlaceBack()
    {
        LoginGuard guard;
        for (int at = 0; at < 10; ++at)
            QVERIFY(!Refuses(guard, Office, Bad));
    }

    void FirstVerdictEndsAnAttemptAndAloneCounts()
    {
        LoginGuard guard;
        std::list<LoginGuard::Attempt> held;
        for (int at = 0; at < 2 * LoginGuard::MostFailures; ++at)
            held.emplace_back(guard, Office, "Basic " + QByteArray::number(at), Clock::now())
                .Succeeded(); // or the sixth would find no place
        LoginGuard::Attempt wrong(guard, Office, Bad, Clock::now());
        for (int at = 0; at < LoginGuard::MostFailures; ++at)
            wrong.Failed();
        wrong.Succeeded();
        QVERIFY(!Refuses(guard, Office, Bad));
        for (int at = 0; at < LoginGuard::MostFailures - 1; ++at)
            Fail(guard, Office, Bad);
        QVERIFY(Refuses(guard, Office, Bad));
    }

    void WhoFindsAllPlacesTakenWaitsNoLongerThanItsTime()
    {
        LoginGuard guard;
        std::list<LoginGuard::Attempt> hanging;
        for (int at = 0; at < LoginGuard::MostFailures; ++at)
            hanging.emplace_back(guard, Office, Bad, Clock::now());
        QVERIFY_THROWS_EXCEPTION(EProblem, Refuses(guard, Office, Good));
        QVERIFY(!Refuses(guard, Home, Good));
        hanging.pop_back();
        QVERIFY(!Refuses(guard, Office, Good));
    }

    void MemoryIsBounded()
    {
        LoginGuard guard;
        for (std::size_t at = 0; at < LoginGuard::MostAddresses + 100; ++at)
            Fail(guard, QByteArray::number(static_cast<qint64>(at)), Bad);
        QCOMPARE(guard.AddressCount(), LoginGuard::MostAddresses);
    }

    void AddressesOfOneCustomerAreOne()
    {
        QCOMPARE(LoginAddress("2001:db8:1:2::1"), LoginAddress("2001:db8:1:2:ffff::9"));
        QVERIFY(LoginAddress("2001:db8:1:2::1") != LoginAddress("2001:db8:1:3::1"));
        QCOMPARE(LoginAddress("::ffff:198.51.100.7"), LoginAddress("198.51.100.7"));
        QVERIFY(LoginAddress("198.51.100.7") != LoginAddress("198.51.100.8"));
    }

    void OnlyATrustedProxyIsBelieved_data()
    {
        QTest::addColumn<QByteArray>("peer");
        QTest::addColumn<QByteArray>("forwardedFor");
        QTest::addColumn<QByteArray>("forwarded");
        QTest::addColumn<QByteArray>("client");
        const QByteArray proxy = "10.1.2.3";
        const auto row = [](const char *name, const QByteArray &peer, const QByteArray &list,
                            const QByteArray &elements, const QByteArray &client) {
            QTest::newRow(name) << peer << list << elements << client;
        };
        row("stranger", "192.0.2.1", "198.51.100.7", "", "192.0.2.1");
        row("proxy", proxy, "198.51.100.7", "", "198.51.100.7");
        row("proxy that says nothing", proxy, "", "", proxy);
        row("what the client put in front", proxy, "1.1.1.1, 198.51.100.7", "", "198.51.100.7");
        row("two proxies in a row", proxy, "1.1.1.1,198.51.100.7,10.9.9.9", "", "198.51.100.7");
        row("with a port", proxy, "198.51.100.7:4711", "", "198.51.100.7");
        row("IPv6 with a port", proxy, "[2001:db8::1]:4711", "", "2001:db8::1");
        row("no address", proxy, "198.51.100.7, unknown", "", proxy);
        row("element", proxy, "", "proto=https;for=198.51.100.7;by=10.1.2.3", "198.51.100.7");
        row("quoted element", proxy, "", "for=1.1.1.1, For=\"[2001:db8::1]:80\"", "2001:db8::1");
        row("both and the same", proxy, "198.51.100.7", "for=198.51.100.7", "198.51.100.7");
        row("both and not the same", proxy, "198.51.100.7", "for=1.1.1.1", proxy);
        row("all trusted", proxy, "10.0.0.1", "", "10.0.0.1");
        row("trusted single address", "2001:db8:ff::1", "198.51.100.7", "", "198.51.100.7");
        row("its neighbour", "2001:db8:ff::2", "198.51.100.7", "", "2001:db8:ff::2");
    }
    void OnlyATrustedProxyIsBelieved()
    {
        QFETCH(QByteArray, peer);
        QFETCH(QByteArray, forwardedFor);
        QFETCH(QByteArray, forwarded);
        QFETCH(QByteArray, client);
        const QList<AddressBlock> trusted{ParseAddressBlock(QStringLiteral("10.0.0.0/8")),
                                          ParseAddressBlock(QStringLiteral("2001:db8:ff::1"))};
        Request request;
        request.address = peer;
        request.forwardedFor = forwardedFor;
        request.forwarded = forwarded;
        QCOMPARE(ClientAddress(request, trusted), client);
    }

    void RefusesAProxyThatIsNoAddress_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : {"", "proxy.example", "10.0.0.0/33", "10.0.0.0/x", "10.0.0.0/-1"})
            QTest::newRow(text) << QString::fromLatin1(text);
    }
    void RefusesAProxyThatIsNoAddress()
    {
        QFETCH(QString, text);
        QVERIFY_THROWS_EXCEPTION(Qel::EQelError, ParseAddressBlock(text));
    }
};

QTEST_GUILESS_MAIN(LoginGuardTest)
#include "LoginGuardTest.moc"
