// SPDX-License-Identifier: Apache-2.0
#include <zelcore/TestService.h>

#include <simulator/ClientLibrary.h>

#include <QtCore/QLoggingCategory>

namespace zelcore {

namespace {
Q_LOGGING_CATEGORY(lcTestService, "zelcore")
}

class TestServicePrivate
{
public:
    const QByteArray formerRoot = qgetenv("PPS_ROOT");
    const bool hadRoot = qEnvironmentVariableIsSet("PPS_ROOT");
    QString problem;
    QStringList refusals;
};

TestService::TestService(QObject* parent)
    : Simulator(parent)
    , d(std::make_unique<TestServicePrivate>())
{
    connect(this, &Simulator::refused, this, [this](const QString& line) { d->refusals.append(line); });
    setTimelinePaused(true);
    if (start(&d->problem) && exportRoot(&d->problem))
        return;
    stop();
    qCWarning(lcTestService).noquote() << d->problem;
}

TestService::~TestService()
{
    if (clientlibrary::isConnectedTo(root()))
        clientlibrary::letGo();
    if (d->hadRoot)
        qputenv("PPS_ROOT", d->formerRoot);
    else
        qunsetenv("PPS_ROOT");
}

QString TestService::problem() const
{
    return d->problem;
}

QStringList TestService::refusals() const
{
    return d->refusals;
}

} // namespace zelcore
