// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <memory>

namespace zelcore {

class TestServicePrivate;

/// A core service for one test function: made at its start, it serves in a folder of its own, and what the function
/// makes of the client library finds it, whatever the functions before did. A process may have any number of them, one
/// after the other; each takes some milliseconds.
///
/// It is a Simulator that runs already: build the world with its calls, then make the application's objects. Nothing of
/// an earlier function is left in it, nor in the library: registration, profile, contacts, box, pending requests and
/// messages under way are gone. The timeline of a scenario stands still until it is stepped.
///
/// Ownership: the function's, or the fixture's from init() to cleanup(). The application's objects are made after it
/// and deleted before it; one that has a Context for longer keeps the library as it is, and the next TestService does
/// not run and says so in problem().
/// Thread: that of the application. Handlers: as Simulator.
///
///     void TestBrowser::showsWhoIsThere()
///     {
///         zelcore::TestService service;
///         QVERIFY2(service.isRunning(), qPrintable(service.problem()));
///         service.addContact(QStringLiteral("Anna"));
///         ContactBrowser browser;                       // registers, as ever
///         QTRY_COMPARE(browser.names(), QStringList(QStringLiteral("Anna")));
///     }
class ZELCORE_EXPORT TestService : public Simulator
{
    Q_OBJECT

public:
    /// Serves at once, with PPS_ROOT set to its folder; where that fails, isRunning() is false and problem() says why.
    /// \a parent owns it if there is one.
    explicit TestService(QObject* parent = nullptr);
    /// PPS_ROOT is what it was before.
    ~TestService() override;

    /// Why it does not run, and what to do: a sentence, which is also told as a warning. Empty when all is well.
    QString problem() const;
    /// What the service has refused so far, a line each: an application that does everything right has none.
    QStringList refusals() const;

private:
    std::unique_ptr<TestServicePrivate> const d;
};

} // namespace zelcore
