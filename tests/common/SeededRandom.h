// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QRandomGenerator>
#include <QtGlobal>

/// Other numbers in every run. The seed is printed; ZEL_TEST_SEED=<seed> repeats that run.
inline QRandomGenerator seededRandom()
{
    bool isGiven = false;
    const int given = qEnvironmentVariableIntValue("ZEL_TEST_SEED", &isGiven);
    // Within an int, so that any seed can be given.
    const quint32 seed = isGiven ? quint32(given) : QRandomGenerator::global()->generate() >> 1;
    qInfo("seed %u", seed);
    return QRandomGenerator(seed);
}
