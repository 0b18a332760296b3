// SPDX-License-Identifier: Apache-2.0
#include <quick/PictureStore.h>

#include <quick/Context.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>

#include <algorithm>
#include <atomic>

using namespace Qt::StringLiterals;

namespace zelquick {

namespace {

QString nextProvider()
{
    static std::atomic<int> last = 0;
    return u"zelplatform%1"_s.arg(++last);
}

/// In letters that no part of an address has to escape: a handle may be any text.
QString keyOf(PictureStore::Kind kind, const QString& name)
{
    static constexpr const char* kinds[] = {"own", "contact", "icon"};
    return QLatin1StringView(kinds[int(kind)]) + u'/' +
           QString::fromLatin1(name.toUtf8().toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QString nameOf(const QString& key)
{
    return QString::fromUtf8(QByteArray::fromBase64(key.section(u'/', 1).toLatin1(), QByteArray::Base64UrlEncoding));
}

} // namespace

bool PictureLink::with(const std::function<void(PictureStore*)>& function)
{
    const QMutexLocker lock(&m_mutex);
    if (m_store)
        function(m_store);
    return m_store;
}

void PictureLink::cut()
{
    const QMutexLocker lock(&m_mutex);
    m_store = nullptr;
}

PictureStore::PictureStore(QObject* parent)
    : QObject(parent)
    , m_provider(nextProvider())
    , m_link(std::make_shared<PictureLink>(this))
{
}

PictureStore::~PictureStore()
{
    m_link->cut();
}

void PictureStore::setContext(Context* context)
{
    m_context = context;
    zel::whenReady(context->publicContext(), this, &PictureStore::start);
}

void PictureStore::start()
{
    m_profile = new zel::UserProfile(m_context->publicContext(), this);
    m_box = new zel::ProfileBox(m_context->publicContext(), this);
    connect(m_profile, &zel::UserProfile::profileChanged, this,
            [this] { came(Kind::Own, {}, m_profile->displayPicture()); });
    connect(m_context->contacts(), &zel::ContactService::displayPictureUpdated, this,
            [this](const QString& handle, zel::ImageType::Type, const QByteArray& bytes) {
                came(Kind::Contact, handle, bytes);
            });
    connect(m_box, &zel::ProfileBox::iconRetrieved, this,
            [this](int iconId, zel::ImageType::Type, const QByteArray& bytes) {
                came(Kind::Icon, QString::number(iconId), bytes);
            });
    // An id that was free again may have another icon.
    connect(m_box, &zel::ProfileBox::iconRegistered, this, [this](int iconId) {
        const QString key = keyOf(Kind::Icon, QString::number(iconId));
        if (m_kept.remove(key) && m_renewals.contains(key)) {
            ++m_renewals[key];
            Q_EMIT renewed(Kind::Icon, QString::number(iconId));
        }
    });
    const auto askAll = [this] {
        const QStringList keys = m_waiting.keys();
        if (m_context->isReady())
            std::for_each(keys.cbegin(), keys.cend(), [this](const QString& key) { request(key); });
    };
    connect(m_context, &Context::readyChanged, this, askAll);
    askAll();
}

QUrl PictureStore::urlOf(Kind kind, const QString& name) const
{
    const QString key = keyOf(kind, name);
    return QUrl(u"image://%1/%2/%3"_s.arg(m_provider, key).arg(m_renewals.value(key)));
}

void PictureStore::ask(const QString& key)
{
    if (!m_renewals.contains(key))
        m_renewals.insert(key, 0);
    if (const QByteArray* const bytes = m_kept.object(key)) {
        Q_EMIT answered(key, QByteArray(*bytes));
    } else if (m_waiting[key]++ == 0 && m_profile && m_context->isReady()) {
        request(key);
    }
}

void PictureStore::giveUp(const QString& key)
{
    if (const auto waiting = m_waiting.find(key); waiting != m_waiting.end() && --*waiting == 0)
        m_waiting.erase(waiting);
}

/// Who has left meanwhile has no picture: an image that is about to go asks for one all the same.
void PictureStore::request(const QString& key)
{
    const QString name = nameOf(key);
    if (key == keyOf(Kind::Own, {})) {
        answer(key, m_profile->displayPicture());
    } else if (key == keyOf(Kind::Contact, name)) {
        const zel::ContactService& contacts = *m_context->contacts();
        if (!contacts.hasApplication(name) || !contacts.requestDisplayPicture(name))
            answer(key, {});
    } else if (!m_box->registeredIcons().contains(name.toInt()) || !m_box->requestRetrieveIcon(name.toInt())) {
        answer(key, {});
    }
}

void PictureStore::answer(const QString& key, const QByteArray& bytes)
{
    m_waiting.remove(key);
    keep(key, bytes);
    Q_EMIT answered(key, bytes);
}

void PictureStore::came(Kind kind, const QString& name, const QByteArray& bytes)
{
    const QString key = keyOf(kind, name);
    if (m_waiting.contains(key)) {
        answer(key, bytes);
        return;
    }
    const QByteArray* const before = m_kept.object(key);
    if (!m_renewals.contains(key) || (before && *before == bytes))
        return;
    keep(key, bytes);
    ++m_renewals[key];
    Q_EMIT renewed(kind, name);
}

void PictureStore::keep(const QString& key, const QByteArray& bytes)
{
    m_kept.insert(key, new QByteArray(bytes), std::max<qsizetype>(bytes.size(), 64));
}

} // namespace zelquick
