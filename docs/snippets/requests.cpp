// SPDX-License-Identifier: Apache-2.0
// As docs/requests.md has it.
// clang-format off
#include <vx/platform/zel/Requests.h>

#include <vx/platform/zel/Context.h>

using namespace Qt::StringLiterals;
using namespace vx::platform::zel;

// In the place of Qt Widgets, and of the application.
class QWidget : public QObject
{
protected:
    void show(const QString& text);
    void tell(const QString& error);
};
Context& theContext();

class Card : public QWidget
{
    Requests m_requests{&theContext()};                                   // a member: what is asked for ends with it

    void congratulate(const QByteArray& icon)
    {
        m_requests.addItemWithIcon(tr("Reached level 7"), 7, ImageType::Png, icon, u"level-7"_s)
            .then([this](const ProfileBoxItem& item) { show(item.text()); })
            .onFailed([this](const RequestError& error) { tell(error.errorString()); });
    }
};
