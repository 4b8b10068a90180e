#pragma once

#include <QString>
#include <QTest>

#include <algorithm>
#include <random>

namespace Qel::Test {

/// The seed of a random test: another one each time, unless QEL_TEST_SEED names one to be repeated.
inline quint32 TestSeed()
{
    bool given = false;
    const quint32 seed = qEnvironmentVariable("QEL_TEST_SEED").toUInt(&given);
    return given ? seed : std::random_device()();
}

/// Rows of a data function with the columns "seed" and "rounds": QEL_TEST_ROUNDS rounds in parts of
/// at most `mostAtOnce`, because Qt gives each row five minutes; without it one row with 0 rounds,
/// which is as many as a test takes time for.
inline void AddRounds(int mostAtOnce)
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("rounds");
    const quint32 seed = TestSeed();
    const int rounds = qEnvironmentVariableIntValue("QEL_TEST_ROUNDS");
    if (rounds <= 0)
        QTest::addRow("seed %u", seed) << seed << 0;
    for (int done = 0; done < rounds; done += mostAtOnce) {
        const quint32 ofPart = seed + quint32(done / mostAtOnce);
        QTest::addRow("seed %u", ofPart) << ofPart << std::min(mostAtOnce, rounds - done);
    }
}

} // namespace Qel::Test
