#include "simulated/picture/BWPhotoSource.h"

#include "media/BWMediaLogging.h"

#include <libyuv.h>
#include <QImageReader>

namespace {

constexpr uint64_t picturesPerPhoto = 60;

/// The photo, turned upright, just large enough to fill the size; null, with the reason in `error`, on failure.
QImage readToFill(const QString &file, QSize size, QString &error)
{
    QImageReader reader(file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
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
