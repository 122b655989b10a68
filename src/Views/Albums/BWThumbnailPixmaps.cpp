#include "Views/Albums/BWThumbnailPixmaps.h"

namespace {

constexpr qsizetype keptKilobytes = 24 * 1024;

} // namespace

BWThumbnailPixmaps::BWThumbnailPixmaps() : m_pixmaps(keptKilobytes) { }

QPixmap BWThumbnailPixmaps::scaled(const QImage &image, const QSize &pixels)
{
    const Key key{image.cacheKey(), pixels};
    if (const QPixmap *known = m_pixmaps.object(key))
        return *known;
    const QImage fitting =
        image.size() == pixels ? image : image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QPixmap pixmap = QPixmap::fromImage(fitting);
    m_pixmaps.insert(key, new QPixmap(pixmap), 1 + qsizetype(pixels.width()) * pixels.height() * 4 / 1024);
    return pixmap;
}
