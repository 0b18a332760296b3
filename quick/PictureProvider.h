// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtQuick/QQuickAsyncImageProvider>

#include <memory>

namespace zelquick {

class PictureLink;

/// Gives images the pictures of a PictureStore, decoded off the thread of the application. Where there is none, or none
/// that can be read, it is an empty one: what stands behind the image shows through.
class PictureProvider : public QQuickAsyncImageProvider
{
public:
    explicit PictureProvider(std::shared_ptr<PictureLink> link);

    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

private:
    const std::shared_ptr<PictureLink> m_link;
};

} // namespace zelquick
