// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/Manual.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QList>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QStringList>

class QCommandLineParser;

namespace zeltools {

/// What every program with a window may be told on its command line.
struct WindowOptions
{
    QSize size;
    QString page;
    QString screenshot; ///< The file for a picture of the window; the program ends when it is taken.

    static QList<QCommandLineOption> all(const QString& usualSize, const QStringList& pages);
    /// Takes over what a parser that knows these has found, for a window that is \a smallest or larger. A sentence for
    /// what cannot be meant; empty if all can.
    QString read(const QCommandLineParser& parser, const QStringList& pages, QSize smallest);
};

/// To be asked before there is an application object, which needs a screen unless this has found that nobody looks at
/// one: what the words ask of the program itself is printed, and true the answer. The parser knows the program's
/// options; those of \a manual itself it learns.
bool isAnswered(const Manual& manual, QCommandLineParser& parser, int argc, char* argv[], const QString& version);

} // namespace zeltools
