// SPDX-License-Identifier: Apache-2.0
#include "Simulation.h"

#include <QtCore/QBuffer>
#include <QtGui/QImage>
#include <QtGui/QPainter>

using namespace Qt::StringLiterals;

namespace {

/// A face in a few strokes; another \a number, another person.
QByteArray portrait(int number)
{
    const int size = 128;
    QImage image(size, size, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(number * 47 % 360, 70, 225));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QColor skin = QColor::fromHsv(18 + number * 5 % 14, 60 + number * 37 % 90, 250 - number * 53 % 120);
    const QColor hair = QColor::fromHsv(25, number * 31 % 160, 40 + number * 71 % 150);
    painter.setBrush(QColor::fromHsv((number * 47 + 160) % 360, 120, 150));
    painter.drawEllipse(QPoint(64, 132), 46, 40);
    painter.setBrush(hair);
    painter.drawEllipse(QPoint(64, 54), 34, 36 + number % 3 * 8);
    painter.setBrush(skin);
    painter.drawRect(56, 78, 16, 20);
    painter.drawEllipse(QPoint(64, 62), 27, 32);
    painter.setBrush(hair);
    painter.drawChord(36, 24, 56, 50, (20 + number % 4 * 10) * 16, 150 * 16);
    painter.setBrush(QColor(40, 34, 34));
    painter.drawEllipse(QPoint(54, 60), 3, 4);
    painter.drawEllipse(QPoint(74, 60), 3, 4);
    painter.setPen(QPen(QColor(120, 50, 50), 3, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(54, 66, 20, 14, 200 * 16, 140 * 16);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

bool Simulation::start(const World& world, QString* error)
{
    zelcore::Person user = m_service.profile();
    user.displayName = u"Robin Vale"_s;
    user.statusMessage.clear();
    user.personalMessage = u"Out on the boat until Sunday"_s;
    m_service.setProfile(user);
    m_service.setProfilePicture(portrait(3));
    if (world.contacts > 0) {
        addAda();
        m_service.generateContacts(world.contacts - 1, 1);
    }
    addFaces();
    m_service.addBoxIcon(1, portrait(8));
    m_service.addBoxItem(u"Reached level 7"_s, {}, u"1"_s);
    m_service.addBoxItem(u"Plays chess on Thursdays"_s);
    if (!world.state.isEmpty())
        m_service.setRegistrationPolicy(zelcore::Simulator::RegistrationPolicy::Fixed, world.state);
    if (!m_service.start(error) || !m_service.exportRoot(error))
        return false;
    if (world.isAlive)
        m_service.setActivity(zelcore::Simulator::Activity::Mixed, 0.5);
    return true;
}

/// Somebody who comes first, and has all that one can have.
void Simulation::addAda()
{
    zelcore::Person ada;
    ada.displayName = u"Ada Brandt"_s;
    ada.personalMessage = u"Reading on the train"_s;
    ada.showBusy = true;
    ada.statusMessage = u"On my way to Lyon"_s;
    ada.appVersion = u"2.0"_s;
    m_service.addContact(ada);
}

/// Whom the service makes up has noise for a picture, or none. Two in three get a face, as far as one looks.
void Simulation::addFaces()
{
    int number = 0;
    const QList<zelcore::Person> people = m_service.contacts().mid(0, 300);
    for (const zelcore::Person& person : people) {
        ++number;
        m_service.setContactPicture(person.handle, number % 3 ? portrait(number) : QByteArray());
    }
}
