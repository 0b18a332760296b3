// SPDX-License-Identifier: Apache-2.0
#include <platform/mistakes/Mistakes.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QMetaEnum>
#include <QtCore/QMutex>
#include <QtCore/QMutexLocker>
#include <QtCore/QSet>
#include <QtCore/QThread>

#include <atomic>

using namespace Qt::StringLiterals;

namespace vx::platform::zel::mistakes {

namespace {

/// What was asked for last. Requests are written within the call, so a message that is too long is its.
std::atomic<const char*> lastRequest = "a request";

QMutex mutex;

QSet<QString>& toldSoFar()
{
    static QSet<QString> told;
    return told;
}

bool isNew(const QString& text)
{
    const QMutexLocker locker(&mutex); // let go before anybody is told: a message handler may make mistakes, too
    QSet<QString>& told = toldSoFar();
    const qsizetype before = told.size();
    told.insert(text);
    return told.size() != before;
}

QString withoutAccess(const Context& context)
{
    const RegistrationState::Type state = context.registrationState();
    if (const QString reason = whyNothingIsPossible(state); !reason.isEmpty())
        return reason;
    if (state == RegistrationState::Allowed)
        return u"made before access was allowed, it refuses requests for its life; make it when the "
               "context is ready, as whenReady() tells"_s;
    return u"access is not allowed, the registration state is %1; wait until the context is ready, as "
           "whenReady() tells"_s.arg(nameOf(state));
}

} // namespace

bool warn(const char* where, QAnyStringView what)
{
    const QString text = QLatin1String(where) + ": "_L1 + what.toString();
    if (isNew(text))
        qCWarning(lcPlatform, "%ls", qUtf16Printable(text));
    return false;
}

void remark(const char* where, const char* what)
{
    const QString text = QLatin1String(where) + ": "_L1 + QLatin1String(what);
    if (isNew(text))
        qCInfo(lcPlatform, "%ls", qUtf16Printable(text));
}

void forget()
{
    const QMutexLocker locker(&mutex);
    toldSoFar().clear();
}

bool isRightThread(const char* where)
{
    return ServiceBridge::instance()->thread() == QThread::currentThread() ||
           warn(where, "used from another thread; every public object belongs to the one that made the first");
}

bool checkMaking(const char* where, const QPointer<Context>& context, Needs needs)
{
    if (!context)
        return warn(where,
                    "made without a context, it answers defaults for its life; give it the application's Context");
    isRightThread(where);
    if (needs != Needs::Context && !context->isAccessAllowed())
        return warn(where, "made before access was allowed, it answers defaults for its life; make it when the "
                           "context is ready, as whenReady() tells");
    if (needs == Needs::Readiness && !context->isReady())
        warn(where,
             "made before the context was ready, it misses what has not come yet; make it when whenReady() tells");
    return !context.isNull(); // a message handler may have destroyed it
}

bool hasAccess(const char* where, const Context* context)
{
    if (context && context->thread() != QThread::currentThread())
        isRightThread(where);
    return context && context->isAccessAllowed();
}

bool mayRequest(const char* where, const Context* context, bool isAllowed)
{
    if (!context)
        return warn(where, "there is no context; give the object one, and keep it for as long as the object is used");
    lastRequest = where;
    return isAllowed || warn(where, withoutAccess(*context));
}

void warnOfLongMessage()
{
    warn(lastRequest, "the message has more than 65536 bytes, which the object does not carry; the text has to be "
                      "shorter");
}

QString whyNothingIsPossible(RegistrationState::Type state)
{
    if (!ServiceBridge::instance()->isInitialized())
        return u"there is no core service; start one before the application"_s;
    if (state == RegistrationState::Unknown)
        return u"the service has not said yet how things stand, or nothing that this version knows; "
               "wait for registrationStateUpdated()"_s;
    return {};
}

QString nameOf(RegistrationState::Type state)
{
    return QString::fromLatin1(QMetaEnum::fromType<RegistrationState::Type>().valueToKey(static_cast<int>(state)));
}

} // namespace vx::platform::zel::mistakes
