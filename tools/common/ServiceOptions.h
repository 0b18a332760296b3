// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QCommandLineOption>
#include <QtCore/QList>
#include <QtCore/QString>

class QCommandLineParser;

namespace zelcore {
class Simulator;
}

namespace zeltools {

struct Manual;

/// What every program that is a core service may be told on its command line, and what it begins with.
struct ServiceOptions
{
    QString root; ///< The usual one unless another is named.
    QString scenario;
    int contacts = 0;
    quint32 seed = 1;
    bool isPaused = false;
    QString record;

    static QList<QCommandLineOption> all();
    /// Adds the values, variables and files that every core service has to what \a manual says of its own.
    static void describe(Manual& manual);
    /// A sentence when one of \a options is given and says nothing; empty when none is.
    static QString emptyAmong(const QList<QCommandLineOption>& options, const QCommandLineParser& parser);
    /// Takes over what a parser that knows these, and maybe others, has found. A sentence for what cannot be meant;
    /// empty if all can.
    QString read(const QCommandLineParser& parser);

    // False when it cannot be: with a sentence in \a error, but for what the service refuses, of which it warns itself.

    /// Makes the world that \a simulator is to serve.
    bool makeWorld(zelcore::Simulator& simulator, QString* error) const;
    /// Records what passes, if that is asked for, and serves.
    bool serve(zelcore::Simulator& simulator, QString* error) const;
};

} // namespace zeltools
