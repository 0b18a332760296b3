// SPDX-License-Identifier: Apache-2.0
#include "ZelctlProcess.h"

#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtCore/QJsonArray>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

/// Every change of every contact reaches the application exactly once, whatever the number of contacts: from the
/// service's list to a line of zelctl.
class TstContacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_simulator = std::make_unique<zelcore::Simulator>();
        QVERIFY(m_simulator->start());
    }

    void cleanup()
    {
        m_shell.reset();
        m_simulator.reset();
    }

    void reportsEachChangeOnce_data()
    {
        QTest::addColumn<int>("count");
        // What fits one request for records, what the derived lists keep by default, and more than both.
        for (const int count : {0, 1, 20, 21, 149, 150, 151, 500})
            QTest::addRow("%d contacts", count) << count;
    }

    void reportsEachChangeOnce()
    {
        QFETCH(int, count);
        fill(count);
        QCOMPARE(m_shell->ask("contacts").value("contacts"_L1).toArray().size(), count);

        QStringList expected;
        for (const QString& handle : handles()) {
            zelcore::Person person = m_simulator->contact(handle);
            person.statusMessage += u" and more"_s;
            QVERIFY(m_simulator->changeContact(person));
            expected += u"contactUpdated "_s + handle;
        }
        QCOMPARE(happened(expected.size()), expected);

        expected.clear();
        const int some = qBound(1, count, 50);
        for (int i = 0; i < some; ++i) {
            QVERIFY(!m_simulator->addContact(u"New %1"_s.arg(i)).isEmpty());
            expected += u"applicationEnabled new%1"_s.arg(i);
        }
        QCOMPARE(happened(expected.size()), expected);
        QCOMPARE(m_shell->ask("contacts").value("count"_L1).toInt(), count + some);

        // From the end, the middle and the front, so that the places of the others shift.
        expected.clear();
        QStringList returning;
        for (int i = 0; i < some; ++i) {
            const QStringList present = handles();
            const QString handle = present.at((i % 3) * (present.size() - 1) / 2);
            expected += u"applicationDisabled "_s + handle;
            if (i % 2) {
                QVERIFY(m_simulator->removeContact(handle));
            } else {
                QVERIFY(m_simulator->uninstallApplication(handle));
                returning += handle;
            }
        }
        for (const QString& handle : std::as_const(returning)) {
            QVERIFY(m_simulator->installApplication(handle));
            expected += u"applicationEnabled "_s + handle;
        }
        QCOMPARE(happened(expected.size()), expected);
    }

private:
    void fill(int count)
    {
        m_simulator->generateContacts(count, 7);
        m_shell = std::make_unique<ZelctlProcess>(m_simulator->root());
        m_shell->startShell();
        m_shell->write("register");
        m_shell->takeUntil(u"Allowed"_s);
        QCOMPARE(m_shell->take().value("signal"_L1).toString(), u"contactListUpdated"_s);
    }

    /// "signal handle" of so many lines, and of those that follow up to the change of the own display name that is
    /// made then. (A change announces itself at once; a new contact is asked for first.)
    QStringList happened(qsizetype expected)
    {
        QStringList result;
        for (;;) {
            if (result.size() == expected) {
                zelcore::Person own = m_simulator->profile();
                own.displayName += u'.';
                m_simulator->setProfile(own);
            }
            const QJsonObject line = m_shell->take();
            const QString signal = line.value("signal"_L1).toString();
            if (signal.isEmpty() || signal == "displayNameUpdated"_L1)
                return result;
            result += signal + u' ' + line.value("handle"_L1).toString();
        }
    }

    QStringList handles() const
    {
        QStringList result;
        for (const zelcore::Person& person : m_simulator->contacts())
            result += person.handle;
        return result;
    }

    std::unique_ptr<zelcore::Simulator> m_simulator;
    std::unique_ptr<ZelctlProcess> m_shell;
};

ZEL_TEST(TstContacts)
#include "tst_contacts.moc"
