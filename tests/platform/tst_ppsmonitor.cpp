// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/PPSMonitor.h>

#include <QtCore/QLoggingCategory>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <sys/socket.h>
#include <unistd.h>

using vx::platform::zel::PPSMonitor;

class TstPPSMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void announcesExactlyTheBytesOfEachRead();
    void cutsWhatIsLongerThanOneRead_data();
    void cutsWhatIsLongerThanOneRead();
    void warnsOfAFailedReadAndAnnouncesNothing();
    void readsOnWhileASlotSpinsAnEventLoop();
    void leavesTheDescriptorOpen();
    void tracesOnlyWhenAsked();

private:
    void write(const QByteArray& bytes) { QCOMPARE(::write(m_far, bytes.constData(), bytes.size()), bytes.size()); }

    int m_near = -1;
    int m_far = -1;
    std::unique_ptr<PPSMonitor> m_monitor;
    std::unique_ptr<QSignalSpy> m_messages;
};

void TstPPSMonitor::init()
{
    int ends[2];
    QCOMPARE(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends), 0);
    m_near = ends[0];
    m_far = ends[1];
    const int room = 1 << 20;
    ::setsockopt(m_far, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    m_monitor = std::make_unique<PPSMonitor>(m_near, nullptr);
    m_messages = std::make_unique<QSignalSpy>(m_monitor.get(), &PPSMonitor::ppsMessageReceived);
}

void TstPPSMonitor::cleanup()
{
    m_messages.reset();
    m_monitor.reset();
    ::close(m_near);
    ::close(m_far);
}

void TstPPSMonitor::announcesExactlyTheBytesOfEachRead()
{
    const QByteArray withNul("@platform\n\0\xff tail", 17);
    write("first");
    write(withNul);
    QTRY_COMPARE(m_messages->size(), 2);
    QCOMPARE(m_messages->at(0).at(0).toByteArray(), QByteArray("first"));
    QCOMPARE(m_messages->at(1).at(0).toByteArray(), withNul);
}

void TstPPSMonitor::cutsWhatIsLongerThanOneRead_data()
{
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("announced");
    QTest::newRow("one byte less") << 65535 << 65535;
    QTest::newRow("just one read") << 65536 << 65536;
    QTest::newRow("one byte more") << 65537 << 65536;
}

void TstPPSMonitor::cutsWhatIsLongerThanOneRead()
{
    QFETCH(int, written);
    write(QByteArray(written, 'x'));
    write("next");
    QTRY_COMPARE(m_messages->size(), 2);
    QTEST(static_cast<int>(m_messages->at(0).at(0).toByteArray().size()), "announced");
    QCOMPARE(m_messages->at(1).at(0).toByteArray(), QByteArray("next"));
}

void TstPPSMonitor::warnsOfAFailedReadAndAnnouncesNothing()
{
    QTest::ignoreMessage(QtWarningMsg, "PpsMonitor::read failed to read pps data, error ");
    QVERIFY(QMetaObject::invokeMethod(m_monitor.get(), "readyRead")); // nothing is there: the read fails
    QCOMPARE(m_messages->size(), 0);

    write("later"); // the notifier is still on
    QTRY_COMPARE(m_messages->size(), 1);
}

void TstPPSMonitor::readsOnWhileASlotSpinsAnEventLoop()
{
    QStringList order;
    connect(m_monitor.get(), &PPSMonitor::ppsMessageReceived, this, [&](const QByteArray& message) {
        order += QStringLiteral("+") + QString::fromLatin1(message);
        if (message == "outer") {
            write("inner");
            QTRY_COMPARE(m_messages->size(), 2);
        }
        order += QStringLiteral("-") + QString::fromLatin1(message);
    });
    write("outer");
    QTRY_COMPARE(order.size(), 4);
    QCOMPARE(order.join(QLatin1Char(' ')), QStringLiteral("+outer +inner -inner -outer"));
}

void TstPPSMonitor::leavesTheDescriptorOpen()
{
    m_messages.reset();
    m_monitor.reset();
    write("still there");
    char buffer[32];
    QCOMPARE(::read(m_near, buffer, sizeof buffer), 11);
}

void TstPPSMonitor::tracesOnlyWhenAsked()
{
    static QStringList lines;
    lines.clear();
    const auto before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& line) { lines.append(line); });
    write("quiet");
    QTRY_COMPARE(m_messages->size(), 1);
    const qsizetype quietLines = lines.size();
    QLoggingCategory::setFilterRules(QStringLiteral("zel.platform.debug=true"));
    write("loud");
    QTRY_COMPARE(m_messages->size(), 2);
    QLoggingCategory::setFilterRules({});
    qInstallMessageHandler(before);

    QCOMPARE(quietLines, 0);
    const QStringList expected{QStringLiteral("4  : Start of Message : PPSMonitor::readyRead"),
                               QStringLiteral("\"loud\" : End of Message : PPSMonitor::readyRead")};
    QCOMPARE(lines, expected);
}

QTEST_GUILESS_MAIN(TstPPSMonitor)
#include "tst_ppsmonitor.moc"
