// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QRandomGenerator>
#include <QtGlobal>

/// The same numbers in every run, so that who runs the tests to see whether a change is right sees nothing else;
/// ZEL_TEST_SEED=<seed> gives others, and ZEL_TEST_SEED=random those of a seed drawn anew. The seed is printed.
inline QRandomGenerator seededRandom()
{
    const QByteArray given = qgetenv("ZEL_TEST_SEED");
    // Within an int, so that any seed can be given.
    const quint32 seed = given == "random" ? QRandomGenerator::global()->generate() >> 1 : quint32(given.toInt());
    qInfo("seed %u", seed);
    return QRandomGenerator(seed);
}
