// SPDX-License-Identifier: Apache-2.0
#include <vx/system/InvokeManager.h>

#include <pps/encoder.h>
#include <slog/slog.h>
#include <vx/system/InvokeRequest.h>

#include "../../object/ObjectSocket.h"

#include <QLatin1String>

#include <cerrno>
#include <climits>
#include <cstring>

namespace vx {
namespace system {

namespace {

// The library's own number in the device's log.
constexpr int logOpcode = 1058604;
constexpr int logWarning = 3;
constexpr std::chrono::seconds longestWait(1);

// A target is a file in the folder of the targets, and nothing else.
bool isPlainName(const QByteArray& name)
{
    return !name.isEmpty() && name.size() <= NAME_MAX && !name.contains('/') && !name.contains('\0') && name != "." &&
           name != "..";
}

// The request as JSON. Cleans up after itself.
class Record
{
public:
    explicit Record(const InvokeRequest& request)
    {
        pps_encoder_initialize(&m_encoder, true);
        pps_encoder_start_object(&m_encoder, nullptr);
        add("target", request.target().toUtf8());
        add("action", request.action().toUtf8());
        add("mimeType", request.mimeType().toUtf8());
        add("data", request.data());
        pps_encoder_end_object(&m_encoder);
    }
    ~Record() { pps_encoder_cleanup(&m_encoder); }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    bool sendTo(int socket) const
    {
        const auto length = static_cast<size_t>(pps_encoder_length(&m_encoder));
        return ::send(socket, pps_encoder_buffer(&m_encoder), length, MSG_NOSIGNAL) == static_cast<ssize_t>(length);
    }

private:
    void add(const char* name, const QByteArray& value)
    {
        pps_encoder_add_string_n(&m_encoder, name, std::strlen(name), value.constData(),
                                 static_cast<size_t>(value.size()));
    }

    pps_encoder_t m_encoder;
};

} // namespace

bool InvokeManager::invoke(const InvokeRequest& request)
{
    const QByteArray target = request.target().toUtf8();
    if (!isPlainName(target)) {
        slogf(logOpcode, logWarning, "cannot invoke \"%s\": no name of a target", target.constData());
        return false;
    }
    const std::string path = device::resolveObjectPath("/pps/services/invocation/" + target.toStdString());
    const device::Descriptor socket = device::connectToObject(path, longestWait);
    if (socket && Record(request).sendTo(socket.get()))
        return true;
    slogf(logOpcode, logWarning, "cannot invoke \"%s\" at %s: %s", target.constData(), path.c_str(),
          std::strerror(errno));
    return false;
}

} // namespace system
} // namespace vx
