// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/globals/Avatar.h>
#include <vx/platform/zel/EcoIdStatus.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QString>

/// The service's words and the public enumerations. Comparison is exact and case-sensitive; any other word is Unknown
/// or Unsupported. Reentrant, no state.
namespace vx::platform::zel::HelperUtils {

RegistrationState::Type registrationStateFromString(const QString& code);
ImageType::Type imageTypeFromString(const QString& mimeType);
/// Unsupported gives "image/jpeg", like Jpg; a value beyond the enumeration gives an empty text.
QString imageTypeToString(ImageType::Type type);
EcoIdStatus::Type ecoIdStatusFromString(const QString& status);

/// These two keep the number, although the enumerations count from different formats. Pictures and icons go through
/// avatarTypeForPicture() and pictureTypeForAvatar(), which keep the format.
zelsplib::Avatar::ImageType convertImageType(ImageType::Type type);
ImageType::Type convertImageType(zelsplib::Avatar::ImageType type);

/// The format under which a picture or icon travels: whatever is not PNG, GIF or BMP goes as JPEG.
zelsplib::Avatar::ImageType avatarTypeForPicture(ImageType::Type type);
/// The way back; Unsupported for what is none of the four.
ImageType::Type pictureTypeForAvatar(zelsplib::Avatar::ImageType type);

} // namespace vx::platform::zel::HelperUtils
