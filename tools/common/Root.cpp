// SPDX-License-Identifier: Apache-2.0
#include "Root.h"

#include <QtCore/QStandardPaths>

#include <algorithm>

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

/// Never below a folder that others may write to: they could be there first.
QString usualRoot()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString folder =
        runtime.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) : runtime;
    return folder + u"/zelplatform"_s;
}

QString exportLine(const QString& root)
{
    return u"export PPS_ROOT="_s + quoted(root);
}

} // namespace zeltools
