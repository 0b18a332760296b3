// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// One message of the traffic as a line for people: the time, the direction, who, what, and the body with everything
/// long shortened.
QString traceLine(bool fromApplication, int client, const QString& type, const QByteArray& json);
