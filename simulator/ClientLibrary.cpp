// SPDX-License-Identifier: Apache-2.0
#include <simulator/ClientLibrary.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QEvent>
#include <QtCore/QFile>

#include <dlfcn.h>

using namespace Qt::StringLiterals;

namespace zelcore::clientlibrary {

namespace {

/// What a QML module or another plugin has brought along is not among what the program was linked with.
template <typename Function>
Function find(const char* name)
{
    void* symbol = ::dlsym(RTLD_DEFAULT, name);
    if (void* const library = symbol ? nullptr : ::dlopen("libzelplatform.so.2", RTLD_LAZY | RTLD_NOLOAD)) {
        symbol = ::dlsym(library, name);
        ::dlclose(library); // which was open before
    }
    return reinterpret_cast<Function>(symbol);
}

/// Null when the process has not looked for a service.
QString connectedRoot()
{
    const auto root = find<const char* (*)()>("zel_platform_root");
    const char* const folder = root ? root() : nullptr;
    return folder ? QFile::decodeName(folder) : QString();
}

} // namespace

bool isConnectedTo(const QString& root)
{
    const QString connected = connectedRoot();
    return !connected.isNull() && QDir(connected).absolutePath() == QDir(root).absolutePath();
}

bool letGo()
{
    const auto letGo = find<bool (*)()>("zel_platform_let_go");
    if (!letGo || letGo())
        return true;
    // What the application deletes later is as good as gone.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return letGo();
}

QString freeFor(const QString& root)
{
    if (isConnectedTo(root) || letGo())
        return {};
    return u"too late: this process is connected to %1, and the application still has a Context: delete its objects "
           u"before another service begins (zelcore::TestService has the recipe)"_s.arg(connectedRoot());
}

} // namespace zelcore::clientlibrary
