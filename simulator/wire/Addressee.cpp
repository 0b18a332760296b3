// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/Addressee.h>

#include <QtCore/QUuid>

using namespace Qt::StringLiterals;

namespace zelcore {

std::optional<Addressee> Addressee::of(const QString& application, QString* problem)
{
    return application.isEmpty() ? Addressee() : one(application, problem);
}

std::optional<Addressee> Addressee::one(const QString& application, QString* problem)
{
    const int number = application.toInt();
    if (number > 0)
        return Addressee{number, QString()};
    if (!QUuid::fromString(application).isNull())
        return Addressee{0, application.toLower()};
    if (problem)
        *problem = u"\"%1\" is neither the number of an application nor a UUID"_s.arg(application.left(60));
    return std::nullopt;
}

} // namespace zelcore
