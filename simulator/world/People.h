// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>

#include <random>

namespace zelcore {

/// Makes up people, with names and messages in many scripts. The same seed gives the same people, on any machine.
class PeopleMaker
{
public:
    explicit PeopleMaker(quint32 seed);

    /// \a number becomes part of the ids, so that people of different numbers never collide. One in three has a
    /// picture of pictures().
    Person next(int number);
    /// Something a person might say about himself.
    QString message();
    QString status();
    /// A random number below \a limit, which is above 0.
    int below(int limit);

    /// The pictures that made-up people share.
    const QList<QByteArray>& pictures();
    /// A picture of exactly \a size bytes: a square of one colour as PNG, and noise behind it, which nobody reads.
    /// Below 99 bytes it is cut, and cannot be shown.
    static QByteArray picture(int size, quint32 seed);

private:
    // The engine's sequence is prescribed; what the library's distributions make of it is not.
    std::mt19937 m_random;
    QList<QByteArray> m_pictures;
};

class World;

/// Adds \a count people who run the application. Empty, or why not; those before the one that failed are there then.
QString addPeople(World& world, int count, quint32 seed);

} // namespace zelcore
