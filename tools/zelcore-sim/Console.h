// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>

/// Lines of standard input, as they are typed or piped in. The end of the input is only that: the program may well be
/// meant to go on in the background.
class Console : public QObject
{
    Q_OBJECT
public:
    explicit Console(QObject* parent = nullptr);

Q_SIGNALS:
    void lineRead(const QString& line);

private:
    void read();

    QSocketNotifier m_notifier;
    QByteArray m_text;
};
