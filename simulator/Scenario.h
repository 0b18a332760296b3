// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <optional>

namespace zelcore {

/// A scenario file, read and checked.
struct Scenario
{
    struct Picture
    {
        int size = 0; ///< Of a made-up picture; 0 for none.
        QByteArray bytes() const;
    };
    struct Contact
    {
        Person person;
        bool installed = true;
        Picture picture;
    };
    struct Icon
    {
        int id = 0;
        Picture picture;
    };
    /// A command and when it is due: that many milliseconds after the start, or after the first registration.
    struct Entry
    {
        int at = 0;
        bool afterRegistration = false;
        QString command;
    };

    std::optional<QJsonObject> profile; ///< By field name of the command language.
    std::optional<Picture> profilePicture;
    std::optional<Permissions> permissions;
    QString registration; ///< The rest of a "registration" command; empty for none.
    int generated = 0;
    quint32 seed = 1;
    QList<Contact> contacts;
    QList<Icon> icons;
    QList<BoxItem> items;
    QHash<QString, QString> ecoIds;
    QHash<QString, QString> ecoIdStates;
    QList<Entry> timeline;

    /// Reads \a text. Empty, with a sentence in \a problem that says where, when anything in it is wrong.
    static std::optional<Scenario> parse(const QByteArray& text, QString* problem);
    /// Finds the file of \a nameOrPath, or the scenario of this name that ships with the library.
    static std::optional<Scenario> load(const QString& nameOrPath, QString* problem);
    static QStringList names();
};

/// Says when the commands of a scenario are due.
class Timeline : public QObject
{
    Q_OBJECT
public:
    explicit Timeline(QObject* parent = nullptr);

    void setEntries(const QList<Scenario::Entry>& entries);
    void start();
    void stop();
    /// Starts the clock of the entries that wait for a registration; only the first time counts.
    void registered();

Q_SIGNALS:
    void due(const QString& command);

private:
    void schedule(bool afterRegistration);

    QList<Scenario::Entry> m_entries;
    /// Counts the starts and stops: what was scheduled before the last of them is forgotten.
    quint64 m_run = 0;
    bool m_running = false;
    bool m_registered = false;
};

} // namespace zelcore
