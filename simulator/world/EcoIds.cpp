// SPDX-License-Identifier: Apache-2.0
#include <simulator/world/EcoIds.h>

#include <QtCore/QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

const QString prefix = u"eco-"_s;
const QString unknown = u"Unknown"_s;
const QString contactExists = u"ContactExists"_s;
const QString pending = u"PendingContactExists"_s;

} // namespace

QString EcoIds::of(const QString& ppId, bool isKnown) const
{
    const auto given = m_given.constFind(ppId);
    if (given != m_given.cend())
        return *given;
    return isKnown ? prefix + ppId : QString();
}

QString EcoIds::status(const QString& ecoId, const IsContact& isContact) const
{
    const auto given = m_states.constFind(ecoId);
    if (given != m_states.cend())
        return *given;
    const QStringList ppIds = m_given.keys(ecoId) << (ecoId.startsWith(prefix) ? ecoId.mid(prefix.size()) : QString());
    return std::any_of(ppIds.cbegin(), ppIds.cend(), isContact) ? contactExists : unknown;
}

QString EcoIds::setStatus(const QString& ecoId, const QString& status)
{
    const QStringList states{unknown, contactExists, pending};
    if (!states.contains(status))
        return u"\"%1\" is none of %2"_s.arg(status, states.join(", "_L1));
    m_states.insert(ecoId, status);
    return {};
}

void EcoIds::invite(const QString& ecoId, const IsContact& isContact)
{
    if (status(ecoId, isContact) == unknown)
        m_states.insert(ecoId, pending);
}

void EcoIds::endPending(const QString& ecoId)
{
    if (m_states.value(ecoId) == pending)
        m_states.remove(ecoId);
}

} // namespace zelcore
