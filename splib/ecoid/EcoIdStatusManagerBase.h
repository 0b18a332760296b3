// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>

#include <iface/JsonReaderAttribute.h>

#include <QObject>
#include <QSharedPointer>
#include <QString>

namespace zelsplib {

/// The messages of EcoIdStatusManager.
class EcoIdStatusManagerBase : public QObject
{
    Q_OBJECT

public:
    void requestEcoIdStatus(const QString& ecoId);

protected:
    explicit EcoIdStatusManagerBase(QSharedPointer<zel::JsonPipe> pipe);

private:
    virtual void pushEcoIdStatusResponse(const QString& ecoId, const QString& status) = 0;

    void ecoIdStatusResponseCallback(QObject* sender, iface::JsonReaderAttribute message);

    QSharedPointer<zel::JsonPipe> m_pipe;
};

} // namespace zelsplib
