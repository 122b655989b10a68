// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/picture/BWMediaSources.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWJpegHeader.h"

#include <algorithm>
#include <libyuv.h>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace {

constexpr uint64_t picturesPerPhoto = 60;

/// A JPEG image that is not baseline is decoded as a whole, in up to six bytes per pixel, however small the result.
bool isTooLarge(QImageReader &reader)
{
    constexpr qint64 mostPixels = 64'000'000;
    const QSize size = reader.size();
    if (qint64(size.width()) * size.height() <= mostPixels || reader.format() != "jpeg")
        return false;
    constexpr qint64 headerBytes = 512 << 10;
    const QByteArray bytes = reader.device()->peek(headerBytes);
    const BWJpegHeader header(reinterpret_cast<const uint8_t *>(bytes.constData()), std::size_t(bytes.size()));
    return !header.isWhole() || !header.isBaseline();
}

/// The photo, turned upright, just large enough to fill the size; null, with the reason in `error`, on failure.
QImage readToFill(const QString &file, QSize size, QString &error)
{
    if (!QFileInfo(file).isFile()) {
        error = QStringLiteral("it is not a regular file");
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

constexpr uint64_t longestGap = 250; // pictures; after a longer one the movie simply continues

} // namespace

BWPhotoSource::BWPhotoSource(QStringList files) : m_files(std::move(files)) { }

bool BWPhotoSource::canShow(const QString &file, QString &error)
{
    constexpr QSize thumbnail(64, 48);
    return !readToFill(file, thumbnail, error).isNull();
}

void BWPhotoSource::setResolution(BWResolution resolution)
{
    BWPictureSource::setResolution(resolution);
    m_current = -1;
}

BWPictureSource::Scene BWPhotoSource::scene(uint64_t index, BWColorMatrix)
{
    const auto wanted = static_cast<qsizetype>(index / picturesPerPhoto % static_cast<uint64_t>(m_files.size()));
    if (wanted != m_current) {
        if (m_current < 0) {
            m_planes.resize(resolution().width(), resolution().height());
            m_planes.fill(0); // visible only if the file is gone by now
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
        qCWarning(bwMedia) << "The photo" << file << "can no longer be read:" << error;
        return;
    }
    const int left = (image.width() - size.width()) / 2;
    const int top = (image.height() - size.height()) / 2;
    libyuv::ARGBToJ422(image.constScanLine(top) + qsizetype{left} * 4, static_cast<int>(image.bytesPerLine()),
                       m_planes.y(), m_planes.stride(), m_planes.u(), m_planes.chromaStride(), m_planes.v(),
                       m_planes.chromaStride(), size.width(), size.height());
    m_planes.padOddColumn();
}

BWMovieSource::BWMovieSource(std::unique_ptr<BWMovieReader> reader) : m_reader(std::move(reader)) { }

void BWMovieSource::setResolution(BWResolution resolution)
{
    BWPictureSource::setResolution(resolution);
    m_planesStale = true;
}

std::optional<BWPixelFormat> BWMovieSource::nativeFormat() const
{
    return m_reader->size() == resolution() ? m_reader->nativeFormat() : std::nullopt;
}

BWColorMatrix BWMovieSource::matrix() const
{
    return nativeFormat() == BWPixelFormat::YUYV ? m_reader->matrix() : BWColorMatrix::BT601;
}

BWColorRange BWMovieSource::range() const
{
    return nativeFormat() == BWPixelFormat::YUYV ? m_reader->range() : BWColorRange::Limited;
}

void BWMovieSource::stepTo(uint64_t index)
{
    if (!m_index) {
        m_index = index; // the reader is at its first picture
        return;
    }
    const uint64_t before = *std::exchange(m_index, index);
    if (index == before)
        return;
    m_planesStale = true;
    if (index < before) {
        m_reader->rewind(); // the camera has started anew
        return;
    }
    for (uint64_t step = std::min(index - before, longestGap); step > 0; --step) {
        if (!m_reader->advance())
            break;
    }
}

BWPictureSource::KeptBytes BWMovieSource::passOn(uint64_t index, BWPixelFormat format)
{
    if (nativeFormat() != format || !controls().isNeutral())
        return {};
    stepTo(index);
    auto keeper = m_reader->packetKeeper();
    return keeper ? KeptBytes{m_reader->packet(), std::move(keeper)} : KeptBytes();
}

BWPictureSource::Scene BWMovieSource::scene(uint64_t index, BWColorMatrix matrix)
{
    stepTo(index);
    if (m_planesStale || matrix != m_planesMatrix) {
        m_planesStale = false;
        m_planesMatrix = matrix;
        ++m_revision;
        const bool decoded = m_reader->decode(resolution(), matrix, m_fresh);
        if (decoded) {
            std::swap(m_planes, m_fresh);
        } else if (m_planes.width() != resolution().width() || m_planes.height() != resolution().height()) {
            m_planes.resize(resolution().width(), resolution().height());
            m_planes.fill(0);
        }
    }
    return {&m_planes, m_revision};
}
