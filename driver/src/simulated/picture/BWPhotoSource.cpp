#include "simulated/picture/BWPhotoSource.h"

#include "media/BWJpegHeader.h"
#include "media/BWMediaLogging.h"

#include <libyuv.h>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace {

constexpr uint64_t picturesPerPhoto = 60;

/// A JPEG image that is not baseline is decoded as a whole, in up to six bytes a pixel, however small it is to become.
bool isTooLarge(QImageReader &reader)
{
    constexpr qint64 mostPixels = 64'000'000;
    const QSize size = reader.size();
    if (qint64(size.width()) * size.height() <= mostPixels || reader.format() != "jpeg")
        return false;
    constexpr qint64 headerBytes = 512 * 1024;
    const QByteArray bytes = reader.device()->peek(headerBytes);
    const BWJpegHeader header(reinterpret_cast<const uint8_t *>(bytes.constData()), std::size_t(bytes.size()));
    return !header.isWhole() || !header.isBaseline();
}

/// The photo, turned upright, just large enough to fill the size; null, with the reason in `error`, on failure.
QImage readToFill(const QString &file, QSize size, QString &error)
{
    if (!QFileInfo(file).isFile()) {
        error = QStringLiteral("it is no regular file");
        return {};
    }
    QFile device(file);
    device.open(QIODevice::ReadOnly);
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (isTooLarge(reader)) {
        error = QStringLiteral("%1x%2 pixels are too many for a progressive image")
                    .arg(reader.size().width())
                    .arg(reader.size().height());
        return {};
    }
    const bool lying = reader.transformation() & QImageIOHandler::TransformationRotate90;
    if (const QSize stored = reader.size(); stored.isValid()) {
        const QSize wanted = lying ? size.transposed() : size;
        reader.setScaledSize(stored.scaled(wanted, Qt::KeepAspectRatioByExpanding).expandedTo(wanted));
    }
    QImage image = reader.read();
    error = image.isNull() ? reader.errorString() : QString();
    if (!image.isNull() && (image.width() < size.width() || image.height() < size.height()))
        image = image.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    return image.convertToFormat(QImage::Format_RGB32);
}

} // namespace

BWPhotoSource::BWPhotoSource(QStringList files) : m_files(std::move(files)) { }

bool BWPhotoSource::canShow(const QString &file, QString &error)
{
    constexpr QSize thumbnail(64, 48);
    return !readToFill(file, thumbnail, error).isNull();
}

void BWPhotoSource::setResolution(BWResolution resolution)
{
    BWPlanesSource::setResolution(resolution);
    m_current = -1;
}

BWPlanesSource::Scene BWPhotoSource::scene(uint64_t index, BWColorMatrix)
{
    const auto wanted = static_cast<qsizetype>(index / picturesPerPhoto % static_cast<uint64_t>(m_files.size()));
    if (wanted != m_current) {
        if (m_current < 0) {
            m_planes.resize(resolution().width(), resolution().height());
            m_planes.fill(0); // to be seen only if the file is gone by now
        }
        m_current = wanted;
        load(m_files[wanted]);
    }
    return {&m_planes, m_revision};
}

void BWPhotoSource::load(const QString &file)
{
    ++m_revision;
    const QSize size = resolution().dimensions();
    QString error;
    const QImage image = readToFill(file, size, error);
    if (image.isNull()) {
        qCWarning(bwMedia) << "The photo" << file << "cannot be read any more:" << error;
        return;
    }
    const int left = (image.width() - size.width()) / 2;
    const int top = (image.height() - size.height()) / 2;
    libyuv::ARGBToJ422(image.constScanLine(top) + left * 4, static_cast<int>(image.bytesPerLine()), m_planes.y(),
                       m_planes.stride(), m_planes.u(), m_planes.chromaStride(), m_planes.v(), m_planes.chromaStride(),
                       size.width(), size.height());
    m_planes.padOddColumn();
}
