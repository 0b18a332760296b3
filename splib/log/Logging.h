// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <device/Log.h>

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

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

/// Text (bytes are read as UTF-8) or a number (written in decimal).
template <typename T>
concept LogArgument =
    std::integral<T> || std::convertible_to<const T&, QString> || std::convertible_to<const T&, QByteArrayView>;

namespace detail {

struct LogTemplate
{
    LogCode code;
    int severity;
    std::size_t arguments;
    const char* text; ///< label and text, with a placeholder for each argument
};

// By code. The labels stand against their message without a blank, and some texts have "streamId[" beside "userId=[".
// Who filters the system log relies on these lines as they are.
inline constexpr LogTemplate logTemplates[] = {
    {GENERAL_INFO, 5, 1, "%1"},
    {GENERAL_DEBUG_INFO, 7, 1, "%1"},
    {GENERAL_WARNING_INFO, 3, 1, "Warning:%1"},
    {GENERAL_ERROR, 2, 1, "Error:%1"},
    {ZELSP_SVC_INIT_FAILURE, 3, 1, "Failed to initialize ZELSPServices, errno:%1"},
    {ZELSP_AVATAR_REQUEST_SEND, 6, 2, "sending avatar request: userId=[%1], streamId[%2]"},
    {ZELSP_AVATAR_RECEIVED, 6, 3, "received avatar: userId=[%1], streamId[%2], avatarSize[%3]"},
    {ZELSP_CONTACTS_NOT_READY, 6, 1, "platform contact list is not ready, called by function %1"},
    {ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE, 3, 3,
     "failed to add image into user profile box image list: livelistsize=[%1], imgCacheSize=[%2], addedIndex=[%3]"},
    {ZELSP_PROFILE_BOX_REQ_IMG_CALLBACK, 6, 2, "zelcore request user profile box image, imageId:%1, streamId:%2"},
    {ZELSP_PROFILE_BOX_REQ_IMG_FAILURE, 3, 2, "Failed to find pending user profile box image, imageId:%1, streamId:%2"},
    {ZELSP_PROFILE_BOX_IMG_DATA_RECEIVED, 6, 3,
     "received user_profile_box icon: imageId=[%1], streamId[%2], iconSize[%3]"},
    {ZELSP_PPS_INIT_FAILURE, 3, 1, "can't open pps file at: %1, shutting down library"},
    {ZELSP_PPS_SEND_JSONDATA, 6, 1, "sending json string to zelcore ==>: %1"},
    {ZELSP_PPS_RECV_JSONDATA, 6, 1, "received json string from zelcore <==: %1"},
};

template <LogArgument T>
QString logText(const T& value)
{
    if constexpr (std::integral<T>)
        return QString::number(value);
    else if constexpr (std::convertible_to<const T&, QByteArrayView>)
        return QString::fromUtf8(QByteArrayView(value));
    else
        return value;
}

} // namespace detail

/// Writes the line of a code, filled with the code's arguments, behind `prefix`. All placeholders are filled in one
/// pass: a value that looks like one is not filled in turn.
template <LogCode code, LogArgument... Arguments>
bool Log(const QString& prefix, const Arguments&... arguments)
{
    constexpr const detail::LogTemplate& line = detail::logTemplates[code];
    static_assert(line.code == code && sizeof...(Arguments) == line.arguments,
                  "the code's text takes another number of arguments");
    if (!device::isLogged(line.severity))
        return true;
    return LogString(line.severity, prefix + QString::fromUtf8(line.text).arg(detail::logText(arguments)...));
}

} // namespace zelsplib::logging
