// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>

#include <iface/JsonReaderAttribute.h>

#include <QObject>
#include <QSharedPointer>
#include <QString>

namespace zelsplib {

/// The messages of EcoIdManager.
class EcoIdManagerBase : public QObject
{
    Q_OBJECT

public:
    void requestEcoId(const QString& ppid);

protected:
    explicit EcoIdManagerBase(QSharedPointer<zel::JsonPipe> pipe);

private:
    virtual void pushEcoIdResponse(const QString& ppid, const QString& ecoId) = 0;

    void ecoIdResponseCallback(QObject* sender, iface::JsonReaderAttribute message);

    QSharedPointer<zel::JsonPipe> m_pipe;
};

} // namespace zelsplib
