// SPDX-License-Identifier: Apache-2.0
#include <platform/context/HelperUtils.h>

#include <QtCore/QLatin1String>

#include <algorithm>
#include <iterator>

namespace vx::platform::zel::HelperUtils {

namespace {

using Avatar = zelsplib::Avatar;

template <typename Type>
struct Word
{
    QLatin1String text;
    Type value;
};

// Four of these are not spelled like their enumerators: "Success", "BlockedByTov", "MaximumUsersReached" and
// "MaximumAppsReached". That is how the service says them.
constexpr Word<RegistrationState::Type> registrationStates[] = {
    {QLatin1String("Success"), RegistrationState::Allowed},
    {QLatin1String("Unknown"), RegistrationState::Unknown},
    {QLatin1String("Unregistered"), RegistrationState::Unregistered},
    {QLatin1String("Pending"), RegistrationState::Pending},
    {QLatin1String("BlockedByUser"), RegistrationState::BlockedByUser},
    {QLatin1String("BlockedByTov"), RegistrationState::BlockedByTOV},
    {QLatin1String("NoDataConnection"), RegistrationState::NoDataConnection},
    {QLatin1String("UnexpectedError"), RegistrationState::UnexpectedError},
    {QLatin1String("InvalidUuid"), RegistrationState::InvalidUuid},
    {QLatin1String("TemporaryError"), RegistrationState::TemporaryError},
    {QLatin1String("MaximumUsersReached"), RegistrationState::MaxDownloadsReached},
    {QLatin1String("Expired"), RegistrationState::Expired},
    {QLatin1String("CancelledByUser"), RegistrationState::CancelledByUser},
    {QLatin1String("MaximumAppsReached"), RegistrationState::MaxAppsReached},
    {QLatin1String("ZelDisabled"), RegistrationState::ZelDisabled},
    {QLatin1String("BlockedEnterprisePerimeter"), RegistrationState::BlockedEnterprisePerimeter},
};

constexpr Word<ImageType::Type> imageTypes[] = {
    {QLatin1String("image/jpeg"), ImageType::Jpg},
    {QLatin1String("image/png"), ImageType::Png},
    {QLatin1String("image/gif"), ImageType::Gif},
    {QLatin1String("image/bmp"), ImageType::Bmp},
};

constexpr Word<EcoIdStatus::Type> ecoIdStates[] = {
    {QLatin1String("Unknown"), EcoIdStatus::Unknown},
    {QLatin1String("ContactExists"), EcoIdStatus::ContactExists},
    {QLatin1String("PendingContactExists"), EcoIdStatus::PendingContactInviteExists},
};

template <typename Type, std::size_t size>
Type valueOf(const Word<Type> (&words)[size], const QString& text, Type otherwise)
{
    const auto word = std::find_if(std::begin(words), std::end(words),
                                   [&](const Word<Type>& candidate) { return text == candidate.text; });
    return word == std::end(words) ? otherwise : word->value;
}

} // namespace

RegistrationState::Type registrationStateFromString(const QString& code)
{
    return valueOf(registrationStates, code, RegistrationState::Unknown);
}

ImageType::Type imageTypeFromString(const QString& mimeType)
{
    return valueOf(imageTypes, mimeType, ImageType::Unsupported);
}

QString imageTypeToString(ImageType::Type type)
{
    if (type == ImageType::Unsupported)
        return QStringLiteral("image/jpeg");
    const auto word = std::find_if(std::begin(imageTypes), std::end(imageTypes),
                                   [type](const auto& candidate) { return candidate.value == type; });
    return word == std::end(imageTypes) ? QString() : QString(word->text);
}

EcoIdStatus::Type ecoIdStatusFromString(const QString& status)
{
    return valueOf(ecoIdStates, status, EcoIdStatus::Unknown);
}

zelsplib::Avatar::ImageType convertImageType(ImageType::Type type)
{
    return static_cast<Avatar::ImageType>(type);
}

ImageType::Type convertImageType(zelsplib::Avatar::ImageType type)
{
    return static_cast<ImageType::Type>(type);
}

zelsplib::Avatar::ImageType avatarTypeForPicture(ImageType::Type type)
{
    const bool travelsAsItself = type == ImageType::Png || type == ImageType::Gif || type == ImageType::Bmp;
    return static_cast<Avatar::ImageType>(travelsAsItself ? type - 1 : 0);
}

ImageType::Type pictureTypeForAvatar(zelsplib::Avatar::ImageType type)
{
    const int number = static_cast<int>(type);
    return number >= 0 && number <= 3 ? static_cast<ImageType::Type>(number + 1) : ImageType::Unsupported;
}

} // namespace vx::platform::zel::HelperUtils
