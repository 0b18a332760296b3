// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <device/Log.h>

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <array>
#include <concepts>
#include <cstddef>

/// What the services core tells the system log: one line at a time, each from a fixed set of texts.
///
/// Stateless; callable from any thread. A line that the system log would not take is never put together, so the
/// lines of single messages may stay in the paths that every message takes.
namespace zelsplib::logging {

enum LogCode {
    GENERAL_INFO,
    GENERAL_DEBUG_INFO,
    GENERAL_WARNING_INFO,
    GENERAL_ERROR,
    ZELSP_SVC_INIT_FAILURE,
    ZELSP_AVATAR_REQUEST_SEND,
    ZELSP_AVATAR_RECEIVED,
    ZELSP_CONTACTS_NOT_READY,
    ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE,
    ZELSP_PROFILE_BOX_REQ_IMG_CALLBACK,
    ZELSP_PROFILE_BOX_REQ_IMG_FAILURE,
    ZELSP_PROFILE_BOX_IMG_DATA_RECEIVED,
    ZELSP_PPS_INIT_FAILURE,
    ZELSP_PPS_SEND_JSONDATA,
    ZELSP_PPS_RECV_JSONDATA,
};

/// Sends one line. False only when the system log reports a failure.
bool LogString(int severity, const QString& text);

namespace detail {

struct LogTemplate
{
    int severity;
    std::size_t arguments;
    const char* text; ///< label and text, with a placeholder for each argument
};

// The labels stand against their message without a blank, and some texts have "streamId[" beside "userId=[". Who
// filters the system log relies on these lines as they are.
constexpr LogTemplate logTemplate(LogCode code)
{
    switch (code) {
    case GENERAL_INFO:
        return {5, 1, "%1"};
    case GENERAL_DEBUG_INFO:
        return {7, 1, "%1"};
    case GENERAL_WARNING_INFO:
        return {3, 1, "Warning:%1"};
    case GENERAL_ERROR:
        return {2, 1, "Error:%1"};
    case ZELSP_SVC_INIT_FAILURE:
        return {3, 1, "Failed to initialize ZELSPServices, errno:%1"};
    case ZELSP_AVATAR_REQUEST_SEND:
        return {6, 2, "sending avatar request: userId=[%1], streamId[%2]"};
    case ZELSP_AVATAR_RECEIVED:
        return {6, 3, "received avatar: userId=[%1], streamId[%2], avatarSize[%3]"};
    case ZELSP_CONTACTS_NOT_READY:
        return {6, 1, "platform contact list is not ready, called by function %1"};
    case ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE:
        return {3, 3,
                "failed to add image into user profile box image list: livelistsize=[%1], imgCacheSize=[%2], "
                "addedIndex=[%3]"};
    case ZELSP_PROFILE_BOX_REQ_IMG_CALLBACK:
        return {6, 2, "zelcore request user profile box image, imageId:%1, streamId:%2"};
    case ZELSP_PROFILE_BOX_REQ_IMG_FAILURE:
        return {3, 2, "Failed to find pending user profile box image, imageId:%1, streamId:%2"};
    case ZELSP_PROFILE_BOX_IMG_DATA_RECEIVED:
        return {6, 3, "received user_profile_box icon: imageId=[%1], streamId[%2], iconSize[%3]"};
    case ZELSP_PPS_INIT_FAILURE:
        return {3, 1, "can't open pps file at: %1, shutting down library"};
    case ZELSP_PPS_SEND_JSONDATA:
        return {6, 1, "sending json string to zelcore ==>: %1"};
    case ZELSP_PPS_RECV_JSONDATA:
        return {6, 1, "received json string from zelcore <==: %1"};
    }
    return {2, 0, ""};
}

inline QString logText(const QString& text)
{
    return text;
}
inline QString logText(const QByteArray& utf8)
{
    return QString::fromUtf8(utf8);
}
inline QString logText(QByteArrayView utf8)
{
    return QString::fromUtf8(utf8);
}
inline QString logText(const char* utf8)
{
    return QString::fromUtf8(utf8);
}
QString logText(std::integral auto number)
{
    return QString::number(number);
}

/// Fills the placeholders, all in one pass: a value that looks like a placeholder is not filled in turn.
QString fillLogTemplate(const QString& prefix, const char* text, const QString* values, std::size_t count);

} // namespace detail

/// Text (bytes are read as UTF-8) or a number (written in decimal).
template <typename T>
concept LogArgument = requires(const T& value)
{
    {
        detail::logText(value)
        } -> std::same_as<QString>;
};

/// Writes the line of a code, filled with the code's arguments, behind `prefix`.
template <LogCode code, LogArgument... Arguments>
bool Log(const QString& prefix, const Arguments&... arguments)
{
    constexpr detail::LogTemplate line = detail::logTemplate(code);
    static_assert(sizeof...(Arguments) == line.arguments, "the code's text takes another number of arguments");
    if (!device::isLogged(line.severity))
        return true;
    const std::array<QString, sizeof...(Arguments)> values{detail::logText(arguments)...};
    return LogString(line.severity, detail::fillLogTemplate(prefix, line.text, values.data(), values.size()));
}

} // namespace zelsplib::logging
