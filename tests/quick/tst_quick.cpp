// SPDX-License-Identifier: Apache-2.0
#include <common/Heard.h>

#include <zelcore/TestService.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtGui/QImage>
#include <QtQml/QQmlContext>
#include <QtQml/QQmlEngine>
#include <QtQuickTest/quicktest.h>

#include <memory>

using namespace Qt::StringLiterals;

/// The service, for test functions written in QML.
class World : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void qmlEngineAvailable(QQmlEngine* engine) { engine->rootContext()->setContextProperty(u"world"_s, this); }

    /// A service for one function. What the one before made is gone by now.
    QString begin()
    {
        m_service = nullptr;
        m_asked.clear();
        m_heard.take();
        m_service = std::make_unique<zelcore::TestService>();
        connect(m_service.get(), &zelcore::Simulator::messageReceived, this,
                [this](int, const QString& type) { ++m_asked[type]; });
        connect(m_service.get(), &zelcore::Simulator::registrationRequested, this,
                [this](const QString&, bool silent) { ++m_asked[silent ? u"silently"_s : u"aloud"_s]; });
        connect(m_service.get(), &zelcore::Simulator::invocationReceived, this,
                [this](const QString& target) { ++m_asked[target]; });
        return m_service->problem();
    }
    /// What the command answers.
    QString run(const QString& command)
    {
        QString reply;
        return m_service->execute(command, &reply) ? reply : u"failed: "_s + reply;
    }
    /// A file of so many bytes of a camera that was held upright and says so: its left half is blue, and its upper half
    /// is red for who does not listen.
    QUrl uprightPicture(int size) const
    {
        QImage image(1, 2, QImage::Format_RGB32);
        image.setPixelColor(0, 0, Qt::red);
        image.setPixelColor(0, 1, Qt::blue);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        image.scaled(1000, 1000).save(&buffer, "JPG");
        bytes.insert(2,
                     QByteArray::fromHex("ffe100224578696600004d4d002a00000008000101120003000000010006000000000000"));
        bytes = bytes.leftJustified(size, '\0');
        QFile file(m_folder.filePath(u"upright.jpg"_s));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("no room for a picture");
        return QUrl::fromLocalFile(file.fileName());
    }
    /// A file with a picture of nothing, which takes few bytes however big it is.
    QString plainPicture(const QSize& size) const
    {
        QImage image(size, QImage::Format_Mono);
        image.fill(0);
        const QString file = m_folder.filePath(u"plain.png"_s);
        return image.save(file) ? file : QString();
    }
    /// How many messages of this type have come from the application, invocations for this target, or requests to be
    /// registered "silently" or "aloud".
    int asked(const QString& type) const { return m_asked.value(type); }
    QStringList refusals() const { return m_service->refusals(); }
    void follow(const QObject* object) { m_heard.follow(*object); }
    /// What those that are followed have announced.
    QString heard() const { return m_heard.lines().join(u' '); }
    void forget() { m_heard.take(); }

private:
    const QTemporaryDir m_folder;
    std::unique_ptr<zelcore::TestService> m_service;
    QHash<QString, int> m_asked;
    Heard m_heard;
};

QUICK_TEST_MAIN_WITH_SETUP(quick, World)
#include "tst_quick.moc"
