#include "http/Readiness.h"

#include "dataset/QelError.h"

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <future>

using namespace Qel;
using namespace Qel::Http;
using namespace Qt::StringLiterals;

class ReadinessTest : public QObject
{
    Q_OBJECT

private slots:
    void ADatabaseThatAnswersIsReady()
    {
        Readiness readiness([] {});
        QVERIFY(!readiness.Trouble());
    }

    void EachQuestionIsAskedAnew()
    {
        std::atomic<bool> works = true;
        Readiness readiness([&] {
            if (!works)
                throw EQelError(u"没有连接"_s);
        });
        QVERIFY(!readiness.Trouble());
        works = false;
        QCOMPARE(readiness.Trouble().value(), u"没有连接"_s);
        works = true;
        QVERIFY(!readiness.Trouble());
    }

    void ADatabaseThatHangsIsNotWaitedFor()
    {
        std::promise<void> freed;
        std::shared_future<void> hanging = freed.get_future().share();
        Readiness readiness([hanging] { hanging.wait(); });
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(readiness.Trouble().value(), u"数据库没有回应"_s);
        QVERIFY(timer.elapsed() < 1'000);
        // Whoever asks meanwhile does not wait again.
        timer.restart();
        for (int at = 0; at < 100; ++at)
            QVERIFY(readiness.Trouble());
        QVERIFY(timer.elapsed() < 500);
        freed.set_value();
        QTRY_VERIFY(!readiness.Trouble());
    }
};

QTEST_GUILESS_MAIN(ReadinessTest)
#include "ReadinessTest.moc"
