#pragma once

#include <QCache>
#include <QImage>
#include <QPixmap>
#include <QSize>

/// Thumbnails in the size in which they are drawn, so that scrolling only copies them. Keeps those used last, up to
/// some megabytes. GUI thread.
class BWThumbnailPixmaps {
public:
    BWThumbnailPixmaps();

    /// The image scaled to that many pixels of the screen.
    QPixmap scaled(const QImage &image, const QSize &pixels);

private:
    struct Key {
        qint64 image;
        QSize size;
        friend bool operator==(const Key &, const Key &) = default;
        friend size_t qHash(const Key &key, size_t seed = 0)
        {
            return qHashMulti(seed, key.image, key.size.width(), key.size.height());
        }
    };
    QCache<Key, QPixmap> m_pixmaps; // costs are kilobytes
};
