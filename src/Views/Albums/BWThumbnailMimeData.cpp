#include "Views/Albums/BWThumbnailMimeData.h"

#include <QBuffer>
#include <QImageWriter>

using namespace Qt::StringLiterals;

namespace {

const QString qtImage = u"application/x-qt-image"_s; // Qt offers it as whatever it can write

/// TIFF where Qt can write it: its plugin is not everywhere.
QString imageFormat()
{
    static const QString format =
        QImageWriter::supportedImageFormats().contains("tiff") ? u"image/tiff"_s : u"image/png"_s;
    return format;
}

} // namespace

BWThumbnailMimeData::BWThumbnailMimeData(const QList<BWThumbnailDragItem> &items)
    : m_image(items.isEmpty() ? QImage() : items.first().image)
{
    QList<QUrl> files;
    for (const BWThumbnailDragItem &item : items)
        files.append(item.file);
    setUrls(files);
    if (!items.isEmpty())
        setData(u"com.apple.pasteboard.promised-file-content-type"_s, items.first().type.toUtf8());
}

QStringList BWThumbnailMimeData::formats() const
{
    QStringList formats = QMimeData::formats();
    if (!m_image.isNull())
        formats += {imageFormat(), qtImage};
    return formats;
}

QVariant BWThumbnailMimeData::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (m_image.isNull() || (mimeType != imageFormat() && mimeType != qtImage))
        return QMimeData::retrieveData(mimeType, type);
    if (mimeType == qtImage)
        return m_image;
    QByteArray encoded;
    QBuffer buffer(&encoded);
    buffer.open(QIODevice::WriteOnly);
    m_image.save(&buffer, mimeType == u"image/tiff"_s ? "tiff" : "png");
    return encoded;
}
