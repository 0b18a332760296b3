// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/recordings/Recording.h>
#include <simulator/recordings/Texts.h>

#include <QtCore/QHash>

namespace zelcore {

/// Takes out of a recording what is personal: names, messages, identifiers, places and pictures. The same text becomes
/// the same other text wherever it stands, a picture another one of its size, with the hash of that; so the recording
/// still replays. What only the protocol means by a word stays; what nobody knows goes.
class Anonymiser
{
public:
    Recording anonymised(Recording recording);

private:
    /// The pieces of one picture, as far as they have come.
    struct Stream
    {
        QList<qsizetype> entries;
        QList<qsizetype> lengths;
        QByteArray encoded;
    };

    void findPictures(const Recording& recording);
    void replacePicture(const Stream& stream);
    QByteArray anonymised(qsizetype index, const Recording::Entry& entry);
    QString replaced(Meaning meaning, const TextPlace& place, const QString& text);

    QHash<QString, QString> m_texts;
    QHash<QString, quint32> m_seeds;    ///< What the other pictures are made from, by the hash of the real one.
    QHash<qsizetype, QString> m_pieces; ///< What stands instead, by entry.
};

} // namespace zelcore
