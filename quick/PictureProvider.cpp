// SPDX-License-Identifier: Apache-2.0
#include <quick/PictureProvider.h>

#include <quick/PictureStore.h>

#include <QtCore/QBuffer>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <utility>

namespace zelquick {

namespace {

/// The most pixels that are decoded: a picture of some kilobytes may claim to be of any size.
constexpr qint64 maximumPixels = 16 << 20;

QImage nothing()
{
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// Into \a wanted, where 0 is whatever the other length makes it, and never bigger than it is.
QSize scaled(QSize size, QSize wanted)
{
    if (wanted.width() <= 0 && wanted.height() <= 0)
        return size;
    const QSize bounds(wanted.width() > 0 ? wanted.width() : size.width(),
                       wanted.height() > 0 ? wanted.height() : size.height());
    const bool isBoth = wanted.width() > 0 && wanted.height() > 0;
    const QSize fitting = size.scaled(bounds, isBoth ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio);
    return fitting.width() < size.width() ? fitting : size;
}

QImage decoded(QByteArray bytes, QSize wanted)
{
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    if (size.isEmpty() || qint64(size.width()) * size.height() > maximumPixels)
        return nothing();
    reader.setScaledSize(scaled(size, wanted));
    const QImage image = reader.read();
    return image.isNull() ? nothing() : image;
}

/// One image that loads. It lives on the thread that loads images, and ends once: with the picture, or given up.
class PictureResponse : public QQuickImageResponse
{
public:
    PictureResponse(std::shared_ptr<PictureLink> link, QString key, QSize wanted)
        : m_link(std::move(link))
        , m_key(std::move(key))
        , m_wanted(wanted)
    {
        const bool isThere = m_link->with([this](PictureStore* store) {
            // Announced for all pictures, of which few are waited for at a time.
            connect(store, &PictureStore::answered, this, &PictureResponse::take, Qt::QueuedConnection);
            connect(store, &QObject::destroyed, this, &PictureResponse::end, Qt::QueuedConnection);
            QMetaObject::invokeMethod(
                store, [store, asked = m_key] { store->ask(asked); }, Qt::QueuedConnection);
        });
        if (!isThere) // not before whoever asked listens
            QMetaObject::invokeMethod(
                this, [this] { end(); }, Qt::QueuedConnection);
    }

    QQuickTextureFactory* textureFactory() const override
    {
        return QQuickTextureFactory::textureFactoryForImage(m_image);
    }

    void cancel() override
    {
        if (!m_hasEnded)
            m_link->with([this](PictureStore* store) {
                QMetaObject::invokeMethod(
                    store, [store, asked = m_key] { store->giveUp(asked); }, Qt::QueuedConnection);
            });
        end();
    }

private:
    void take(const QString& key, const QByteArray& bytes)
    {
        if (m_hasEnded || key != m_key)
            return;
        m_image = decoded(bytes, m_wanted);
        end();
    }

    void end()
    {
        if (!std::exchange(m_hasEnded, true))
            Q_EMIT finished();
    }

    const std::shared_ptr<PictureLink> m_link;
    const QString m_key;
    const QSize m_wanted;
    QImage m_image = nothing();
    bool m_hasEnded = false;
};

} // namespace

PictureProvider::PictureProvider(std::shared_ptr<PictureLink> link)
    : m_link(std::move(link))
{
}

QQuickImageResponse* PictureProvider::requestImageResponse(const QString& id, const QSize& requestedSize)
{
    return new PictureResponse(m_link, id.section(u'/', 0, 1), requestedSize);
}

} // namespace zelquick
