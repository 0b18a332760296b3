// SPDX-License-Identifier: Apache-2.0
#include "Answers.h"
#include "Desk.h"

#include <QtCore/QPointer>

#include <functional>

using namespace vx::platform::zel;

namespace {

/// A public class: how to make one, what it answers, and how to have it signal something.
struct Subject
{
    const char* name;
    std::function<QObject*(Context*)> make;
    std::function<QString(QObject&)> answers;
    QString withoutAccess;
    bool worksWhenMadeEarly;
    std::function<void(QObject&, std::function<void()>)> onSignal; ///< null when it has no signals
    std::function<void(Desk&)> raise;
};

template <class Public>
Subject subject(const char* name, bool worksWhenMadeEarly)
{
    return {name,
            [](Context* context) -> QObject* { return new Public(context); },
            [](QObject& object) { return answers::of(static_cast<Public&>(object)); },
            answers::withoutAccess<Public>(),
            worksWhenMadeEarly,
            {},
            {}};
}

template <class Public, class Signal>
Subject subject(const char* name, bool worksWhenMadeEarly, Signal signal, std::function<void(Desk&)> raise)
{
    Subject result = subject<Public>(name, worksWhenMadeEarly);
    result.onSignal = [signal](QObject& object, const std::function<void()>& slot) {
        QObject::connect(&static_cast<Public&>(object), signal, &object, slot);
    };
    result.raise = std::move(raise);
    return result;
}

} // namespace

/// Every public class with and without access. One process, one bridge: the cases build on each other.
class TstAccess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_desk.permission().insert(QStringLiteral("zelInvites"), true);
        m_desk.permission().insert(QStringLiteral("showAppBox"), true);
        m_desk.contact(QStringLiteral("ada"));
        m_desk.lists.insert(QStringLiteral("platformContact"), {Desk::contactId(QStringLiteral("ada"))});
        m_desk.lists.insert(QStringLiteral("profileBoxItem"), {ScriptedCore::json(R"({"itemId":"1","text":"one"})")});
        m_context = std::make_unique<Context>(QUuid::createUuid());
    }

    void answersDefaultsWithoutAContext()
    {
        for (const Subject& subject : subjects()) {
            const std::unique_ptr<QObject> object(subject.make(nullptr));
            QVERIFY2(subject.answers(*object) == subject.withoutAccess, subject.name);
        }
    }

    void livesOrNotWhenMadeTooEarly()
    {
        std::vector<std::unique_ptr<QObject>> early;
        for (const Subject& subject : subjects()) {
            early.emplace_back(subject.make(m_context.get()));
            QVERIFY2(subject.answers(*early.back()) == subject.withoutAccess, subject.name);
        }
        QVERIFY(m_desk.nothingWritten());
        QVERIFY(m_desk.becomeAllowed());
        QVERIFY(m_desk.settle());
        for (std::size_t i = 0; i < early.size(); ++i) {
            const bool works = subjects()[i].answers(*early[i]) != subjects()[i].withoutAccess;
            QVERIFY2(works == subjects()[i].worksWhenMadeEarly, subjects()[i].name);
        }
    }

    void answersDefaultsWhileAccessIsLost()
    {
        std::vector<std::unique_ptr<QObject>> objects;
        for (const Subject& subject : subjects())
            objects.emplace_back(subject.make(m_context.get()));
        QVERIFY(m_desk.settle());
        const auto work = [&](std::size_t i) {
            return subjects()[i].answers(*objects[i]) != subjects()[i].withoutAccess;
        };
        for (std::size_t i = 0; i < objects.size(); ++i)
            QVERIFY2(work(i), subjects()[i].name);
        m_desk.changeState(QStringLiteral("TemporaryError"));
        QVERIFY(m_desk.settle());
        while (m_desk.core.hasRecord())
            m_desk.core.nextRecord();
        for (std::size_t i = 0; i < objects.size(); ++i)
            QVERIFY2(!work(i), subjects()[i].name);
        QVERIFY(m_desk.nothingWritten());
        m_desk.changeState(QStringLiteral("Success"));
        QVERIFY(m_desk.settle());
        for (std::size_t i = 0; i < objects.size(); ++i)
            QVERIFY2(work(i), subjects()[i].name);
    }

    void answersDefaultsAfterItsContextIsGone()
    {
        for (const Subject& subject : subjects()) {
            auto context = std::make_unique<Context>(QUuid::createUuid());
            const std::unique_ptr<QObject> object(subject.make(context.get()));
            QVERIFY2(subject.answers(*object) != subject.withoutAccess, subject.name);
            context.reset();
            QVERIFY2(subject.answers(*object) == subject.withoutAccess, subject.name);
        }
    }

    void mayBeDestroyedInItsOwnSlot()
    {
        for (const Subject& subject : subjects()) {
            if (!subject.onSignal)
                continue;
            const QPointer<QObject> doomed(subject.make(m_context.get()));
            const std::unique_ptr<QObject> behind(subject.make(m_context.get()));
            bool hasReachedOthers = false;
            subject.onSignal(*doomed, [doomed] { delete doomed; });
            subject.onSignal(*behind, [&] { hasReachedOthers = true; });
            subject.raise(m_desk);
            QTRY_VERIFY2(hasReachedOthers, subject.name);
            QVERIFY2(!doomed, subject.name);
        }
    }

private:
    static const std::vector<Subject>& subjects()
    {
        static const std::vector<Subject> all{
            subject<ApplicationPermissions>("ApplicationPermissions", false),
            subject<ContactService>("ContactService", false, &ContactService::contactUpdated,
                                    [](Desk& desk) {
                                        desk.sendElements(
                                            QStringLiteral("listChange"), QStringLiteral("platformUser"),
                                            {desk.contact(QStringLiteral("ada"), R"({"displayName":"Ada"})")});
                                    }),
            subject<ProfileBox>("ProfileBox", true, &ProfileBox::itemAdded,
                                [](Desk& desk) {
                                    desk.sendElements(QStringLiteral("listAdd"), QStringLiteral("profileBoxItem"),
                                                      {ScriptedCore::json(R"({"itemId":"2","text":"two"})")});
                                }),
            subject<UserProfile>("UserProfile", false, &UserProfile::displayNameUpdated,
                                 [](Desk& desk) { desk.changeProfile(R"({"displayName":"Eva"})"); }),
            subject<Utils>("Utils", true, &Utils::ecoIdUpdated, [](Desk& desk) { desk.settle(); }),
        };
        return all;
    }

    Desk m_desk;
    std::unique_ptr<Context> m_context;
};

QTEST_GUILESS_MAIN(TstAccess)
#include "tst_access.moc"
