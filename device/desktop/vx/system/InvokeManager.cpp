// SPDX-License-Identifier: Apache-2.0
#include <vx/system/InvokeManager.h>

#include <device/Encoder.h>
#include <device/Log.h>
#include <device/Object.h>
#include <slog/slog.h>
#include <vx/system/InvokeRequest.h>

#include "../../object/ObjectSocket.h"

#include <QtCore/QLatin1String>

#include <cerrno>
#include <climits>
#include <cstring>

namespace vx {
namespace system {

namespace {

constexpr int logWarning = 3;
constexpr std::chrono::seconds longestWait(1);

// A target is a file in the folder of the targets, and nothing else.
bool isPlainName(const QByteArray& name)
{
    return !name.isEmpty() && name.size() <= NAME_MAX && !name.contains('/') && !name.contains('\0') && name != "." &&
           name != "..";
}

bool sendRecord(int socket, const InvokeRequest& request)
{
    device::Encoder record(device::Encoder::Json);
    record.startObject({});
    record.addString("target", request.target().toUtf8());
    record.addString("action", request.action().toUtf8());
    record.addString("mimeType", request.mimeType().toUtf8());
    record.addString("data", request.data());
    record.endObject();
    const std::string_view text = record.text();
    return ::send(socket, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
}

} // namespace

bool InvokeManager::invoke(const InvokeRequest& request)
{
    const QByteArray target = request.target().toUtf8();
    if (!isPlainName(target)) {
        slogf(device::logOpcode, logWarning, "cannot invoke \"%s\": no name of a target", target.constData());
        return false;
    }
    const std::string path = device::resolveObjectPath("/pps/services/invocation/" + target.toStdString());
    const device::Descriptor socket = device::connectToObject(path, longestWait);
    if (socket && sendRecord(socket.get(), request))
        return true;
    slogf(device::logOpcode, logWarning, "cannot invoke \"%s\" at %s: %s", target.constData(), path.c_str(),
          std::strerror(errno));
    return false;
}

} // namespace system
} // namespace vx
