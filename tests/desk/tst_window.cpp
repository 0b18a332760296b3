// SPDX-License-Identifier: Apache-2.0
#include <Desk.h>

#include <common/TestMain.h>
#include <simulator/RawApplication.h>

#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtPlugin>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

Q_IMPORT_PLUGIN(ZelCoreDeskPlugin)

using namespace Qt::StringLiterals;
using zelcore::Simulator;
using namespace zeldesk;

namespace {

/// The list that shows a model, below \a item.
QQuickItem* viewOf(QQuickItem* item, const QObject* model)
{
    if (item->property("model").value<QObject*>() == model && item->property("currentIndex").isValid())
        return item;
    QQuickItem* found = nullptr;
    for (QQuickItem* child : item->childItems())
        found = found ? found : viewOf(child, model);
    return found;
}

} // namespace

class TstWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowSaysNothingAndGoesByKeyboard()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        Simulator simulator;
        QVERIFY(simulator.start());
        Desk desk(simulator);
        simulator.generateContacts(3, 1);
        QQmlApplicationEngine engine;
        engine.setInitialProperties({{u"desk"_s, QVariant::fromValue(&desk)}, {u"dark"_s, true}});
        engine.load(u"qrc:/qml/ZelCoreDesk/Main.qml"_s);
        QCOMPARE(engine.rootObjects().size(), 1);
        auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
        for (const int width : {1180, 360}) {
            window->resize(width, 700);
            QVERIFY(QTest::qWaitForWindowExposed(window));
            QVERIFY(!window->grabWindow().isNull());
        }
        QQuickItem* const contacts = viewOf(window->contentItem(), desk.shownContacts());
        QVERIFY(contacts);
        QTRY_COMPARE(contacts->property("count").toInt(), 3);
        QCOMPARE(window->activeFocusItem()->property("text"), QVariant(QString())); // a line to type a command
        contacts->forceActiveFocus();
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Space);
        const QString second = simulator.contactIds().at(1);
        QVERIFY(!simulator.hasApplication(second));
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(desk.contact()->userId(), second);
        QTRY_VERIFY(!contacts->hasActiveFocus());
        QTest::keyClick(window, Qt::Key_Escape);
        QVERIFY(contacts->hasActiveFocus()); // back where it was

        window->resize(1180, 700);
        RawApplication application(simulator.root());
        application.begin();
        QQuickItem* const records = viewOf(window->contentItem(), desk.wire());
        QVERIFY(records);
        QTRY_COMPARE(records->property("count").toInt(), 1);
        QSignalSpy chosen(records, SIGNAL(chosen(QString)));
        records->forceActiveFocus();
        QTest::keyClick(window, Qt::Key_Down);
        QCOMPARE(chosen.size(), 1);
        QVERIFY(chosen.first().first().toString().contains("tpaApi"_L1));
    }

    void theProgramTakesAPictureWithAnApplicationBesideIt()
    {
        const QTemporaryDir folder;
        const QString picture = folder.filePath(u"desk.png"_s);
        for (const char* screen : {"QT_QPA_PLATFORM", "QT_QUICK_BACKEND", "DISPLAY", "WAYLAND_DISPLAY"})
            qunsetenv(screen); // it needs none
        QProcess program;
        program.start(QStringLiteral(ZELCORE_DESK),
                      {u"--root"_s, folder.filePath(u"root"_s), u"--scenario"_s, u"first-steps"_s, u"--paused"_s,
                       u"--size"_s, u"900x500"_s, u"--record"_s, folder.filePath(u"wire.jsonl"_s), u"--screenshot"_s,
                       picture, QStringLiteral(ZELCTL), u"contacts"_s});
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitCode(), 0);
        QCOMPARE(QImage(picture).size(), QSize(900, 500));
        QVERIFY(program.readAllStandardOutput().contains("Anna Brandt"));
        const QByteArray said = program.readAllStandardError();
        QVERIFY2(!said.contains("qrc:") && !said.contains("zelcore-desk:"), said);
        QVERIFY(QFileInfo(folder.filePath(u"wire.jsonl"_s)).size() > 1000);

        // What the picture cannot show is no success.
        for (const QStringList& words : {QStringList{u"--"_s, u"/no/such/program"_s}, {u"--look"_s, u"nothing"_s}}) {
            program.start(QStringLiteral(ZELCORE_DESK),
                          QStringList{u"--root"_s, folder.filePath(u"root"_s), u"--screenshot"_s, picture} + words);
            QVERIFY(program.waitForFinished(60000));
            QCOMPARE(program.exitCode(), 1);
            QVERIFY(program.readAllStandardError().contains("zelcore-desk: "));
        }
    }

private:
    int m_argumentCount = 0;
    QGuiApplication m_application{m_argumentCount, nullptr};
};

ZEL_TEST_WITHOUT_APPLICATION(TstWindow)
#include "tst_window.moc"
