// SPDX-License-Identifier: Apache-2.0
#include "Sender.h"

#include <zelcore/Simulator.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QSocketNotifier>

#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

long voluntarySwitches()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
}

} // namespace

Sender::Sender(int contacts)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QCoreApplication::applicationFilePath(), {u"serve"_s, m_folder.path(), QString::number(contacts)});
    if (!m_process.waitForReadyRead() || m_process.readLine() != "serving\n") {
        std::fprintf(stderr, "soak: the service did not start\n");
        std::exit(1);
    }
    qputenv("PPS_ROOT", QFile::encodeName(m_folder.path()));
}

Sender::~Sender()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

void Sender::send(int portions)
{
    m_process.write(QByteArray(portions, '+'));
    m_process.waitForBytesWritten();
}

Sender::Pace Sender::finish()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished();
    const QList<QByteArray> words = m_process.readAll().split(' ');
    return {words.value(0).toDouble(), words.value(1).toInt()};
}

int Sender::serve(const QString& root, int contacts)
{
    zelcore::Simulator service;
    service.setRoot(root);
    service.generateContacts(contacts, 1);
    QString error;
    if (!service.start(&error)) {
        std::fprintf(stderr, "soak: %s\n", qPrintable(error));
        return 1;
    }
    std::printf("serving\n");
    std::fflush(stdout);

    QList<zelcore::Person> people = service.contacts();
    int number = 0;
    qint64 longest = 0;
    long waits = 0;
    QSocketNotifier asked(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&asked, &QSocketNotifier::activated, &service, [&] {
        char one = 0;
        if (::read(STDIN_FILENO, &one, 1) <= 0)
            return QCoreApplication::quit();
        QElapsedTimer clock;
        clock.start();
        waits -= voluntarySwitches();
        for (int i = 0; i < portion; ++i) {
            zelcore::Person& person = people[number % people.size()];
            // As long at the end as in the beginning.
            person.personalMessage = QString::number(++number).rightJustified(8, u'0');
            service.changeContact(person);
        }
        waits += voluntarySwitches();
        longest = qMax(longest, clock.nsecsElapsed());
    });
    const int result = QCoreApplication::exec();
    std::printf("%.1f %ld", double(longest) / 1e6, waits);
    return result;
}
