// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QRandomGenerator>

#include <optional>

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

/// What a random test decides by: the numbers of a generator, or the bytes of an input that somebody has to offer. An
/// input that is used up goes on with zeros.
class Choices
{
public:
    explicit Choices(quint32 seed)
        : m_random(seed)
    {
    }
    explicit Choices(QByteArrayView input)
        : m_input(input)
    {
    }

    /// A number from 0 to below \a end, which is positive.
    int bounded(int end)
    {
        if (m_random)
            return m_random->bounded(end);
        unsigned number = 0;
        for (int reach = 1; reach < end && !m_input.isEmpty(); reach *= 256) {
            number = number * 256 + static_cast<unsigned char>(m_input.front());
            m_input = m_input.sliced(1);
        }
        return int(number % unsigned(end));
    }
    bool isUsedUp() const { return !m_random && m_input.isEmpty(); }

private:
    std::optional<QRandomGenerator> m_random;
    QByteArrayView m_input;
};
