// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/Addressee.h>

#include <QtCore/QUuid>

namespace zelcore {

std::optional<Addressee> Addressee::of(const QString& application)
{
    bool isNumber = false;
    const int number = application.toInt(&isNumber);
    if (application.isEmpty())
        return Addressee();
    if (isNumber && number > 0)
        return Addressee{number, QString()};
    return QUuid::fromString(application).isNull() ? std::nullopt : std::optional(Addressee{0, application.toLower()});
}

} // namespace zelcore
