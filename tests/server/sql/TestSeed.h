#pragma once

#include <QString>

#include <random>

namespace Qel::Test {

/// The seed of a random test: another one each time, unless QEL_TEST_SEED names one to be repeated.
inline quint32 TestSeed()
{
    bool given = false;
    const quint32 seed = qEnvironmentVariable("QEL_TEST_SEED").toUInt(&given);
    return given ? seed : std::random_device()();
}

} // namespace Qel::Test
