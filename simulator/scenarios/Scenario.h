// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace zelcore {

class World;

/// A scenario file as the commands that it stands for: those that make its world, and those of its timeline.
struct Scenario
{
    struct Step
    {
        QString place; ///< Where in the file: line and member.
        QString line;  ///< The command as it was written; for the timeline only.
        QStringList words;
        int at = 0; ///< So many milliseconds after the start, or after the first registration.
        bool afterRegistration = false;

        /// The words without the application that they are for.
        QStringList command() const { return words.mid(words.value(0) == QLatin1String("app") ? 2 : 0); }
    };

    QString name; ///< As it was asked for.
    QList<Step> world;
    QList<Step> timeline;

    /// Finds the file of \a nameOrPath, or the scenario of this name that ships with the library. Empty, with a
    /// sentence in \a problem that says where, when there is none or it is not in the form.
    static std::optional<Scenario> load(const QString& nameOrPath, QString* problem);
    static QStringList names();

    /// What is wrong with it, and where, found by playing it on a copy of \a current: at once, in the order of its
    /// times, and as if an application registered first of all. Empty when everything can be done.
    QString problemIn(const World& current) const;
};

} // namespace zelcore
