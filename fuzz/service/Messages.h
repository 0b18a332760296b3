// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Script.h"

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>

/// What the library has written that an answer may refer to.
struct Learned
{
    QHash<QByteArray, QByteArray> cookies; ///< by list type
    QByteArray streamId;
    QByteArray imageHash;
};

/// A step's line as a message: sound for the most part, and wrong wherever the line says so.
///
///     <type><list> <flags> <element> <element> ...
///
/// An element is the letter of its id and pairs of letters for its members: "anaiE" has the id "a", the display name
/// "a" and the avatar id "". The letters are those of the tables in the source file.
QByteArray messageOf(Line line, const Learned& learned);

/// A value in JSON.
QByteArray valueOf(char key, const Learned& learned);
