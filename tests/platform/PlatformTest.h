// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/BothSides.h>
#include <common/FakeClock.h>
#include <common/Heard.h>
#include <common/TestMain.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>
#include <zelcore/TestService.h>

#include <QtCore/QMetaProperty>
#include <QtCore/QUuid>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace vx::platform::zel;

template <typename... Values>
QString words(const Values&... values)
{
    return QStringList{QVariant::fromValue(values).toString()...}.join(u' ');
}

/// The properties of a public object or value, each as "name=value".
template <class Public>
QString shown(const Public& object)
{
    QStringList all;
    const QMetaObject& type = Public::staticMetaObject;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        QVariant value;
        if constexpr (std::is_base_of_v<QObject, Public>)
            value = type.property(i).read(&object);
        else
            value = type.property(i).readOnGadget(&object);
        all.append(QLatin1String(type.property(i).name()) + u'=' + value.toString());
    }
    return all.join(u' ');
}

/// Each case has a service of its own, with a user, three contacts and a box, and the library begins as in a new
/// process. Nobody is registered but by the case.
class PlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_handlerBefore = qInstallMessageHandler(noteWarning);
        m_clock = FakeClock::install();
        m_heard = std::make_unique<Heard>();
        m_service = std::make_unique<zelcore::TestService>();
        connect(m_service.get(), &zelcore::Simulator::recordPassed, this, [this] { ++m_passed; });
        connect(m_service.get(), &zelcore::Simulator::messageReceived, this, &PlatformTest::note);
        m_service->setProfilePicture("GIF89a");
        play(u"registration manual; profile handle=my-handle ppId=my-ppid appVersion=1.2 displayName=Ada "
             "personalMessage=Hello statusMessage=here clientVersion=77; contact add bea; contact add ada "
             "displayName=Ada showBusy=on; contact add cem; box icon 7 100; box add one c1 7; box add two"_s);
    }
    void cleanup()
    {
        takeWarnings();
        qInstallMessageHandler(m_handlerBefore);
        m_context.reset();
        QVERIFY(ServiceBridge::letGo());
        m_service.reset();
        m_asked.clear();
        FakeClock::uninstall();
    }

protected:
    /// Gives the service commands, between semicolons, and waits for all that comes of them.
    void play(const QString& commands)
    {
        bothsides::command(*m_service, commands);
        if (ServiceBridge::root())
            settle();
    }
    /// Until the library and the service have nothing more to say to each other. What comes in one turn may have its
    /// answer in the next.
    void settle()
    {
        for (int quiet = 0, before = m_passed; quiet < 2; ++quiet) {
            bothsides::passMark();
            if (std::exchange(before, m_passed) + 2 != m_passed) // the mark itself
                quiet = -1;
        }
    }
    /// The library asks again for what has not come.
    void askAgain()
    {
        m_clock->advance(30000);
        settle();
    }
    /// The context of an application that is registered and has everything.
    Context* ready()
    {
        if (!m_context)
            m_context = std::make_unique<Context>(m_uuid);
        play(u"state Success"_s);
        if (!m_context->isReady() || !ContactService(m_context.get()).isComplete())
            QTest::qFail("the application does not get ready", __FILE__, __LINE__);
        return m_context.get();
    }
    /// What applications have asked for since the last time, and nothing that the library asks for by itself.
    QByteArrayList asked()
    {
        settle();
        return std::exchange(m_asked, {});
    }
    /// What the library has warned of since it was asked last.
    static QStringList takeWarnings() { return std::exchange(m_untaken, {}); }

    QUuid const m_uuid{QStringLiteral("{6F8D2C4E-5B0A-4A37-9D0E-0C8F3F1F2A10}")};
    std::unique_ptr<zelcore::TestService> m_service;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<Heard> m_heard;

private:
    void note(int, const QString& type, const QByteArray& json)
    {
        static const QStringList byItself{u"tpaApi"_s, u"requestListAll"_s, u"requestListElements"_s,
                                          u"requestUserAvatar"_s, u"stream"_s};
        if (!byItself.contains(type) && !json.contains("\"mark "))
            m_asked.append(json);
    }
    static void noteWarning(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (type == QtWarningMsg && qstrcmp(context.category, "zel.platform") == 0)
            m_untaken.append(text);
        else if (qstrcmp(context.category, "zelcore") != 0) // what the service refuses is part of a case
            m_handlerBefore(type, context, text);
    }

    static inline QtMessageHandler m_handlerBefore = nullptr;
    static inline QStringList m_untaken;
    QSharedPointer<FakeClock> m_clock;
    QByteArrayList m_asked;
    int m_passed = 0; ///< records, both ways
};
