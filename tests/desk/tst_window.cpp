// SPDX-License-Identifier: Apache-2.0
#include <Desk.h>

#include <common/ReturnClicks.h>
#include <common/Screenshot.h>
#include <common/TestMain.h>
#include <simulator/RawApplication.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtPlugin>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <functional>
#include <optional>
#include <tuple>

Q_IMPORT_PLUGIN(ZelCoreDeskPlugin)

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using zelcore::Simulator;
using namespace zeldesk;

namespace {

/// The first item with what is meant, at \a item or below.
QQuickItem* find(QQuickItem* item, const std::function<bool(const QQuickItem&)>& isMeant)
{
    QQuickItem* found = isMeant(*item) ? item : nullptr;
    for (QQuickItem* child : item->childItems())
        found = found ? found : find(child, isMeant);
    return found;
}

/// The list that shows a model.
QQuickItem* viewOf(const QQuickWindow& window, const QObject* model)
{
    return find(window.contentItem(), [&](const QQuickItem& item) {
        return item.property("model").value<QObject*>() == model && item.property("currentIndex").isValid();
    });
}

/// A desk's window, and what is done at it.
struct DeskWindow
{
    DeskWindow()
    {
        simulator.start();
        engine.setInitialProperties(
            {{u"desk"_s, QVariant::fromValue(&desk)}, {u"dark"_s, true}, {u"width"_s, 1180}, {u"height"_s, 700}});
        engine.load(u"qrc:/qml/ZelCoreDesk/Main.qml"_s);
        window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
        if (window)
            returnClicks.emplace(*window);
    }

    void click(const QString& text) const
    {
        const QQuickItem* const button = find(window->contentItem(), [&](const QQuickItem& item) {
            return item.inherits("QQuickAbstractButton") && item.property("text") == text && item.isVisible();
        });
        QVERIFY2(button, qPrintable(text));
        QTest::mouseClick(window, Qt::LeftButton, {}, button->mapToScene(button->boundingRect().center()).toPoint());
    }
    void type(const QString& text) const
    {
        QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
        for (const QChar letter : text)
            QTest::sendKeyEvent(QTest::Click, window, Qt::Key_unknown, letter, Qt::NoModifier);
    }
    QVariant focused(const char* property) const
    {
        const QQuickItem* const item = window->activeFocusItem();
        return item ? item->property(property) : QVariant();
    }

    Simulator simulator;
    Desk desk{simulator};
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;
    std::optional<zeltools::ReturnClicks> returnClicks;
};

} // namespace

class TstWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowSaysNothingAndGoesByKeyboard()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        DeskWindow shown;
        shown.simulator.generateContacts(3, 1);
        QQuickWindow* const window = shown.window;
        QVERIFY(window);
        for (const int width : {1180, 360}) {
            window->resize(width, 700);
            QVERIFY(QTest::qWaitForWindowExposed(window));
            QVERIFY(!window->grabWindow().isNull());
        }
        QQuickItem* const contacts = viewOf(*window, shown.desk.shownContacts());
        QVERIFY(contacts);
        QTRY_COMPARE(contacts->property("count").toInt(), 3);
        QCOMPARE(window->activeFocusItem()->property("text"), QVariant(QString())); // a line to type a command
        contacts->forceActiveFocus();
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Space);
        const QString second = shown.simulator.contactIds().at(1);
        QVERIFY(!shown.simulator.hasApplication(second));
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(shown.desk.contact()->userId(), second);
        QTRY_COMPARE(shown.focused("text"), QVariant(u"‹ &Back"_s));
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, {}, {}, true); // clicks nothing
        QCoreApplication::sendEvent(window, &repeated);
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_VERIFY(contacts->hasActiveFocus());
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE(shown.focused("text"), QVariant(u"‹ &Back"_s));
        QTest::keyClick(window, Qt::Key_Escape);
        QVERIFY(contacts->hasActiveFocus()); // back where it was

        window->resize(1180, 700);
        RawApplication application(shown.simulator.root());
        application.begin();
        QQuickItem* const records = viewOf(*window, shown.desk.wire());
        QVERIFY(records);
        QTRY_COMPARE(records->property("count").toInt(), 1);
        QSignalSpy chosen(records, SIGNAL(chosen(QString)));
        records->forceActiveFocus();
        QTest::keyClick(window, Qt::Key_Down);
        QCOMPARE(chosen.size(), 1);
        QVERIFY(chosen.first().first().toString().contains("tpaApi"_L1));
    }

    void programsSayWhatIsWrong()
    {
        const QTemporaryDir folder;
        const QString lonely = folder.filePath(u"zel-contacts"_s); // far from its module
        QVERIFY(QFile::copy(QStringLiteral(ZEL_CONTACTS), lonely));
        const std::tuple<QString, QStringList, int, QByteArray> rows[] = {
            {QStringLiteral(ZELCORE_DESK), {u"--size"_s, u"9x9"_s}, 2, "zelcore-desk: --size takes"},
            {QStringLiteral(ZELCORE_DESK), {u"--scenario"_s, u"nowhere"_s}, 1, "nowhere"},
            {QStringLiteral(ZEL_CONTACTS), {u"--contacts"_s, u"x"_s}, 2, "zel-contacts: --contacts takes a number"},
            {QStringLiteral(ZEL_CONTACTS), {u"-page"_s, u"x"_s}, 2, "zel-contacts: there is no page"},
            {QStringLiteral(ZEL_CONTACTS), {u"--simulate"_s, u"--screenshot"_s, u"/no/x.png"_s}, 1, "/no/x.png"},
            {lonely, {u"--simulate"_s}, 1, "not installed"},
            {u"env"_s,
             {u"QT_QUICK_CONTROLS_STYLE=x"_s, QStringLiteral(ZELCORE_DESK), u"--root"_s, folder.path()},
             1,
             "x"}};
        for (const auto& [name, arguments, status, words] : rows) {
            QProcess program;
            program.start(name, arguments);
            QVERIFY(program.waitForFinished(60000));
            const QByteArray said = program.readAllStandardError();
            QVERIFY2(program.exitCode() == status && said.contains(words), said);
        }
    }

    void aRecordingIsMade()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        const QTemporaryDir folder;
        const QString before = QDir::currentPath();
        QDir::setCurrent(folder.path());
        DeskWindow shown;
        QVERIFY(shown.window && QTest::qWaitForWindowExposed(shown.window));
        const auto open = [&] {
            shown.click(u"&Record…"_s);
            return QTest::qWaitFor([&] { return shown.focused("objectName") == u"path"_s; });
        };
        QVERIFY(open());
        QCOMPARE(shown.focused("text"), QVariant(QDir::current().absoluteFilePath(u"wire.jsonl"_s)));
        QCOMPARE(shown.focused("selectedText"), QVariant(u"wire.jsonl"_s));
        shown.type(u"by key #1.jsonl"_s);
        QTest::keyClick(shown.window, Qt::Key_Return);
        QVERIFY(shown.desk.service()->isRecording() && QFile::exists(folder.filePath(u"by key #1.jsonl"_s)));
        shown.click(u"End the &recording"_s);
        QVERIFY(!shown.desk.service()->isRecording());

        QVERIFY(open());
        shown.type(u"by key #1.jsonl"_s); // it is there already: another name may be typed
        QTest::keyClick(shown.window, Qt::Key_Return);
        QVERIFY(!shown.desk.service()->isRecording() && shown.focused("text") == u"by key #1.jsonl"_s);
        QTest::keyClick(shown.window, Qt::Key_Tab);
        QCOMPARE(shown.focused("text"), QVariant(u"&Record"_s));
        QTest::keyClick(shown.window, Qt::Key_Tab);
        QTest::keyClick(shown.window, Qt::Key_Return); // on "Cancel"
        QVERIFY(open());
        shown.type(u"~/"_s + QDir::home().relativeFilePath(folder.filePath(u"by mouse.jsonl"_s)));
        shown.click(u"&Record"_s);
        QVERIFY(shown.desk.service()->isRecording() && QFile::exists(folder.filePath(u"by mouse.jsonl"_s)));
        shown.desk.service()->copyExportLine();
        QCOMPARE(QGuiApplication::clipboard()->text(), shown.desk.service()->exportLine());
        QDir::setCurrent(before);
    }

    void aPictureIsTakenWhenAllIsAtRest()
    {
        const QTemporaryDir folder;
        QQuickWindow window;
        window.show();
        window.setProperty("settled", false);
        zeltools::Screenshot screenshot(window, folder.filePath(u"a.png"_s), 20ms);
        QSignalSpy taken(&screenshot, &zeltools::Screenshot::taken);
        screenshot.giveUpAfter(50ms);
        QVERIFY(taken.wait());
        window.setProperty("settled", true);
        QElapsedTimer time;
        time.start();
        screenshot.stir();
        QVERIFY(taken.wait() && time.elapsed() >= 20);
        QCOMPARE(taken.at(0) + taken.at(1), (QVariantList{u"the window does not come to rest"_s, QString()}));
    }

    void theProgramTakesAPictureWithAnApplicationBesideIt()
    {
        const QTemporaryDir folder;
        const QString picture = folder.filePath(u"desk.png"_s);
        QProcess program;
        // The application has the desk end, and is told to end, too, but does not.
        program.start(QStringLiteral(ZELCORE_DESK), {u"--root"_s, folder.filePath(u"root"_s), u"sh"_s, u"-c"_s,
                                                     u"trap 'echo told' TERM; kill $PPID; while :; do :; done"_s});
        QVERIFY(program.waitForFinished(60000) && program.exitStatus() == QProcess::NormalExit);
        QCOMPARE(program.readAllStandardOutput(), "told\n");
        QVERIFY(!program.readAllStandardError().contains("still running")); // and was made to
        for (const char* screen : {"QT_QPA_PLATFORM", "QT_QUICK_BACKEND", "DISPLAY", "WAYLAND_DISPLAY"})
            qunsetenv(screen); // it needs none
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

        program.start(QStringLiteral(ZEL_CONTACTS), {u"--simulate"_s, u"--size=900x480"_s, u"--screenshot"_s, picture});
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(QImage(picture).size(), QSize(900, 480));

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
