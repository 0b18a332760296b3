// SPDX-License-Identifier: Apache-2.0
#include <Desk.h>

#include <common/Program.h>
#include <common/ReturnClicks.h>
#include <common/Screenshot.h>
#include <common/TestMain.h>
#include <simulator/RawApplication.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
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

#include <functional>
#include <optional>
#include <tuple>

Q_IMPORT_PLUGIN(ZelCoreDeskPlugin)

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using zelcore::Simulator;
using namespace zeldesk;

namespace {

const QString zelcoreDesk = QStringLiteral(ZELCORE_DESK);
const QString zelContacts = QStringLiteral(ZEL_CONTACTS);

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
        const QString lonely = path("zel-contacts"); // far from its module
        QVERIFY(QFile::copy(zelContacts, lonely));
        const QStringList picture{u"--root"_s, path("root"), u"--screenshot"_s, path("a.png")};
        const std::tuple<QString, QStringList, int, QByteArray> rows[] = {
            {zelcoreDesk, {u"--size"_s, u"9x9"_s}, 2, "zelcore-desk: --size takes"},
            {zelcoreDesk, {u"--scenario"_s, u"nowhere"_s}, 1, "nowhere"},
            // What the picture cannot show is no success.
            {zelcoreDesk, picture + QStringList{u"--"_s, u"/no/such/program"_s}, 1, "zelcore-desk: "},
            {zelcoreDesk, picture + QStringList{u"--look"_s, u"nothing"_s}, 1, "zelcore-desk: "},
            {zelContacts, {u"--contacts"_s, u"x"_s}, 2, "zel-contacts: --contacts takes a number"},
            {zelContacts, {u"-page"_s, u"x"_s}, 2, "zel-contacts: there is no page"},
            {zelContacts, {u"--simulate"_s, u"--screenshot"_s, u"/no/x.png"_s}, 1, "/no/x.png"},
            {lonely, {u"--simulate"_s}, 1, "not installed"},
            {u"env"_s, {u"QT_QUICK_CONTROLS_STYLE=x"_s, zelcoreDesk, u"--root"_s, path("root")}, 1, "x"}};
        for (const auto& [name, arguments, status, words] : rows) {
            Program program(name, {});
            const bool isWrong = program.run(arguments) == status && program.diagnostics().contains(words);
            QVERIFY2(isWrong, program.diagnostics());
        }
    }

    void aRecordingIsMade()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        const QString before = QDir::currentPath();
        QDir::setCurrent(m_folder.path());
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
        QVERIFY(shown.desk.service()->isRecording() && QFile::exists(path("by key #1.jsonl")));
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
        shown.type(u"~/"_s + QDir::home().relativeFilePath(path("by mouse.jsonl")));
        shown.click(u"&Record"_s);
        QVERIFY(shown.desk.service()->isRecording() && QFile::exists(path("by mouse.jsonl")));
        shown.desk.service()->copyExportLine();
        QCOMPARE(QGuiApplication::clipboard()->text(), shown.desk.service()->exportLine());
        QDir::setCurrent(before);
    }

    void aPictureIsTakenWhenAllIsAtRest()
    {
        QQuickWindow window;
        window.show();
        window.setProperty("settled", false);
        zeltools::Screenshot screenshot(window, path("a.png"), 20ms);
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
        // The application has the desk end, and is told to end, too, but does not.
        Program ended(zelcoreDesk, {});
        QCOMPARE(ended.run({u"--root"_s, path("root"), u"sh"_s, u"-c"_s,
                            u"trap 'echo told' TERM; kill $PPID; while :; do :; done"_s}),
                 0);
        QCOMPARE(ended.lines(), QByteArrayList{"told"});
        QVERIFY(!ended.diagnostics().contains("still running")); // and was made to
        for (const char* screen : {"QT_QPA_PLATFORM", "QT_QUICK_BACKEND", "DISPLAY", "WAYLAND_DISPLAY"})
            qunsetenv(screen); // it needs none
        Program program(zelcoreDesk, {});
        QCOMPARE(program.run({u"--root"_s, path("root"), u"--scenario"_s, u"first-steps"_s, u"--paused"_s, u"--size"_s,
                              u"900x500"_s, u"--record"_s, path("desk.jsonl"), u"--screenshot"_s, path("a.png"),
                              QStringLiteral(ZELCTL), u"contacts"_s}),
                 0);
        QCOMPARE(QImage(path("a.png")).size(), QSize(900, 500));
        QVERIFY(program.says("Anna Brandt"));
        const QByteArray said = program.diagnostics();
        QVERIFY2(!said.contains("qrc:") && !said.contains("zelcore-desk:"), said);
        QVERIFY(QFileInfo(path("desk.jsonl")).size() > 1000);
        QCOMPARE(Program(zelContacts, {}).run({u"--simulate"_s, u"--size=900x480"_s, u"--screenshot"_s, path("a.png")}),
                 0);
        QCOMPARE(QImage(path("a.png")).size(), QSize(900, 480));
    }

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    const QTemporaryDir m_folder;
    int m_argumentCount = 0;
    QGuiApplication m_application{m_argumentCount, nullptr};
};

ZEL_TEST_WITHOUT_APPLICATION(TstWindow)
#include "tst_window.moc"
