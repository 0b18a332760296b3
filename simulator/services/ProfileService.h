// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/ServiceContext.h>

#include <functional>

namespace zelcore {

/// Takes the changes that applications make: the own profile and its picture, items and icons of the box. A picture
/// is asked for when its hash is announced, and counts only once its bytes have come and match.
class ProfileService
{
public:
    /// \a context must outlive it.
    explicit ProfileService(ServiceContext& context)
        : m_context(context)
    {
    }

    QString requestChange(Session& session, const QJsonObject& body);
    void refuseChange(const Session& session, const QString& why) { answerChange(session, why); }
    QString createBoxItem(Session& session, const QJsonObject& body);
    QString createBoxIcon(Session& session, const QJsonObject& body);
    QString requestUserPicture(Session& session, const QJsonObject& body);
    QString requestBoxIcon(Session& session, const QJsonObject& body);
    /// A piece of a picture that was asked for.
    QString stream(Session& session, const QJsonObject& body);

private:
    QString changeProfile(Session& session, const QJsonObject& change);
    QString mergedProfile(const QJsonObject& change, Person* merged) const;
    QString applyProfile(const Session& session, const QJsonObject& change);
    QString answerChange(const Session& session, const QString& problem);
    QString finish(const Session& session, const ExpectedPicture& picture);
    /// The icon of this id, if its bytes are on their way from any application that sees the same box.
    ExpectedPicture* expectedIcon(const Session& asking, const QString& iconId) const;
    void sendPicture(const Session& session, const QString& streamId, const QByteArray& data);

    ServiceContext& m_context;
};

} // namespace zelcore
