// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/recordings/Texts.h>

#include <QtCore/QList>
#include <QtCore/QStringList>

namespace zelcore {

/// What an application sends beside what it sent when it was recorded.
struct Comparison
{
    /// A text that may be another one each time: what it was, and what it is.
    struct Pair
    {
        Meaning meaning;
        QString then;
        QString now;
    };

    bool sameType = false;
    QStringList differences; ///< Each names a member; none when all that counts is equal.
    QList<Pair> pairs;

    bool isEqual() const { return sameType && differences.isEmpty(); }

    /// With \a anonymous, texts of which the recording holds only a substitute have to be there as they were, no more.
    static Comparison of(const QByteArray& then, const QByteArray& now, bool isInvocation, bool anonymous);
};

} // namespace zelcore
