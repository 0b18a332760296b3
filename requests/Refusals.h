// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

/// Why a request cannot be done, in words; empty when nothing speaks against it. The rules are those of the other
/// classes, which refuse with false, without words, or without a sign.
namespace vx::platform::zel::refusals {

/// What the library may refuse for no other reason than \a why.
QString unless(bool isTaken, const QString& why = QStringLiteral("the library did not take the request"));

QString ofItem(const QString& text, const std::optional<int>& iconId, const QString& cookie);
QString ofIcon(int iconId, const QByteArray& icon);
QString ofPicture(const QByteArray& picture);

} // namespace vx::platform::zel::refusals
