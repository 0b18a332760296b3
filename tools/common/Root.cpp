// SPDX-License-Identifier: Apache-2.0
#include "Root.h"

#include <QtCore/QDir>

#include <algorithm>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

/// A word as a shell takes it.
QString quoted(QString word)
{
    static const QString plain = u"/._-+,:=@"_s;
    const bool needsNone = std::all_of(word.cbegin(), word.cend(), [](QChar c) {
        return (c.unicode() < 0x80 && c.isLetterOrNumber()) || plain.contains(c);
    });
    return needsNone ? word : u'\'' + word.replace(u'\'', "'\\''"_L1) + u'\'';
}

} // namespace

QString usualRoot()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return runtime.isEmpty() ? QDir::tempPath() + u"/zelplatform-%1"_s.arg(::getuid()) : runtime + u"/zelplatform"_s;
}

QString exportLine(const QString& root)
{
    return u"export PPS_ROOT="_s + quoted(root);
}

} // namespace zeltools
