// SPDX-License-Identifier: Apache-2.0
#include <platform/context/HelperUtils.h>

#include <QtCore/QLatin1String>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

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
    {"Success"_L1, RegistrationState::Allowed},
    {"Unknown"_L1, RegistrationState::Unknown},
    {"Unregistered"_L1, RegistrationState::Unregistered},
    {"Pending"_L1, RegistrationState::Pending},
    {"BlockedByUser"_L1, RegistrationState::BlockedByUser},
    {"BlockedByTov"_L1, RegistrationState::BlockedByTOV},
    {"NoDataConnection"_L1, RegistrationState::NoDataConnection},
    {"UnexpectedError"_L1, RegistrationState::UnexpectedError},
    {"InvalidUuid"_L1, RegistrationState::InvalidUuid},
    {"TemporaryError"_L1, RegistrationState::TemporaryError},
    {"MaximumUsersReached"_L1, RegistrationState::MaxDownloadsReached},
    {"Expired"_L1, RegistrationState::Expired},
    {"CancelledByUser"_L1, RegistrationState::CancelledByUser},
    {"MaximumAppsReached"_L1, RegistrationState::MaxAppsReached},
    {"ZelDisabled"_L1, RegistrationState::ZelDisabled},
    {"BlockedEnterprisePerimeter"_L1, RegistrationState::BlockedEnterprisePerimeter},
};

constexpr Word<EcoIdStatus::Type> ecoIdStates[] = {
    {"Unknown"_L1, EcoIdStatus::Unknown},
    {"ContactExists"_L1, EcoIdStatus::ContactExists},
    {"PendingContactExists"_L1, EcoIdStatus::PendingContactInviteExists},
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

// An image type is one more than the type of the services core, by whose number its word is found.
static_assert(ImageType::Jpg == Avatar::Jpeg + 1 && ImageType::Png == Avatar::Png + 1 &&
              ImageType::Gif == Avatar::Gif + 1 && ImageType::Bmp == Avatar::Bmp + 1);

ImageType::Type imageTypeFromString(const QString& mimeType)
{
    return static_cast<ImageType::Type>(Avatar::mimeTypes().indexOf(mimeType) + 1);
}

QString imageTypeToString(ImageType::Type type)
{
    return Avatar::mimeTypes().value(type == ImageType::Unsupported ? Avatar::Jpeg : type - 1);
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
