// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>

#include <simulator/RawApplication.h>

#include <zelcore/Simulator.h>

#include <QtTest/QSignalSpy>

/// The library and a simulated service in one process.
namespace bothsides {

/// Commands for the service, between semicolons. It has to be able to do them.
inline void command(zelcore::Simulator& service, const QString& commands)
{
    for (const QString& line : commands.split(u';')) {
        QString problem;
        if (!service.execute(line, &problem))
            qFatal("the service cannot: %s: %s", qPrintable(line), qPrintable(problem));
    }
}

/// Has a mark pass from the library to the service and back. What either said before has been heard then.
inline void passMark()
{
    static int count = 0;
    const QVariantList mark{QStringLiteral("mark %1").arg(++count), QString()};
    QCoreApplication::sendPostedEvents();
    auto* const utils = vx::platform::zel::ServiceBridge::instance()->utils();
    const QSignalSpy marks(utils, &vx::platform::zel::UtilsDelegate::ecoIdUpdated);
    utils->ecoIdRequest(mark.first().toString());
    if (!RawApplication::waitFor([&] { return marks.contains(mark); }))
        qFatal("the mark never came");
}

} // namespace bothsides
