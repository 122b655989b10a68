// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/picture/BWPictureSource.h"

#include "base/BWDriverLog.h"
#include "media/BWJpeg.h"
#include "media/BWMovieReader.h"
#include "simulated/picture/BWMediaSources.h"
#include "simulated/picture/BWSpecimenSource.h"

#include <algorithm>
#include <cstring>
#include <libyuv.h>
#include <QDir>
#include <QImageReader>

namespace {

constexpr int jpegQuality = 85;

std::unique_ptr<BWPictureSource> fromFolder(const QString &path, QString &error)
{
    const QDir folder(path);
    QStringList photos;
    for (const QString &name : folder.entryList(QDir::Files, QDir::Name)) {
        const QString file = folder.filePath(name);
        QString reason;
        if (QImageReader::imageFormat(file).isEmpty())
            continue; // not a photo
        if (BWPhotoSource::canShow(file, reason))
            photos << file;
        else
            qCWarning(bwMedia) << "The photo" << file << "is left out:" << reason;
    }
    if (photos.isEmpty()) {
        error = QStringLiteral("%1 holds no photos").arg(path);
        return nullptr;
    }
    return std::make_unique<BWPhotoSource>(photos);
}

std::unique_ptr<BWPictureSource> fromFile(const QString &path, QString &error)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool bareMovie = suffix == QLatin1String("mjpeg") || suffix == QLatin1String("mjpg"); // begins like a photo
    QString reason;
    if (!bareMovie && !QImageReader::imageFormat(path).isEmpty()) {
        if (BWPhotoSource::canShow(path, reason))
            return std::make_unique<BWPhotoSource>(QStringList{path});
    } else if (std::unique_ptr<BWMovieReader> reader = BWMovieReader::open(path, reason)) {
        return std::make_unique<BWMovieSource>(std::move(reader));
    }
    error = QStringLiteral("%1 cannot be shown: %2").arg(path, reason);
    return nullptr;
}

} // namespace

void BWPictureSource::setResolution(BWResolution resolution)
{
    m_resolution = resolution;
    m_tunerStale = true;
}

void BWPictureSource::setControls(const BWPictureControls &controls)
{
    if (controls == m_controls)
        return;
    m_controls = controls;
    m_noise.setStrength(std::clamp(controls.gain, 0.0, 1.0));
    m_tunerStale = true;
}

BWPictureSource::KeptBytes BWPictureSource::passOn(uint64_t, BWPixelFormat)
{
    return {};
}

const BWYuvPlanes &BWPictureSource::tunedScene(uint64_t index, BWColorMatrix matrix, BWColorRange range)
{
    const Scene seen = scene(index, matrix);
    const bool sameTuning = !m_tunerStale && range == m_tunedRange;
    if (!sameTuning) {
        m_tuner.set(m_controls, range, m_resolution.height());
        m_tunerStale = false;
        m_tunedRange = range;
    }
    if (m_tuner.isNeutral())
        return *seen.planes;
    if (!sameTuning || seen.revision != m_tunedRevision || m_tuned.isEmpty()) {
        m_tuner.apply(*seen.planes, m_tuned);
        m_tunedRevision = seen.revision;
    }
    return m_tuned;
}

void BWPictureSource::composeRow(const BWYuvPlanes &tuned, BWColorRange, int row, uint8_t *y, uint8_t *u, uint8_t *v)
{
    const auto width = static_cast<std::size_t>(tuned.width());
    const auto chromaWidth = static_cast<std::size_t>(tuned.chromaWidth());
    std::memcpy(y, tuned.y(row), width);
    std::memcpy(u, tuned.u(row), chromaWidth);
    std::memcpy(v, tuned.v(row), chromaWidth);
}

void BWPictureSource::finishRow(const BWYuvPlanes &tuned, BWColorRange range, uint64_t index, int row, uint8_t *y,
                                uint8_t *u, uint8_t *v)
{
    composeRow(tuned, range, row, y, u, v);
    if (m_noise.isSilent())
        return;
    m_noise.add(y, m_frame.stride(), index, row, 0);
    m_noise.add(u, m_frame.chromaStride(), index, row, 1);
    m_noise.add(v, m_frame.chromaStride(), index, row, 2);
}

void BWPictureSource::renderYUYV(uint64_t index, uint8_t *pixels, int stride)
{
    const BWColorRange frameRange = range();
    const BWYuvPlanes &tuned = tunedScene(index, matrix(), frameRange);
    m_frame.resize(m_resolution.width(), 1);
    for (int row = 0; row < m_resolution.height(); ++row) {
        finishRow(tuned, frameRange, index, row, m_frame.y(), m_frame.u(), m_frame.v());
        libyuv::I422ToYUY2(m_frame.y(), m_frame.stride(), m_frame.u(), m_frame.chromaStride(), m_frame.v(),
                           m_frame.chromaStride(), pixels + static_cast<std::ptrdiff_t>(row) * stride, stride,
                           m_resolution.width(), 1);
    }
}

void BWPictureSource::renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg)
{
    const BWYuvPlanes &tuned = tunedScene(index, BWColorMatrix::BT601, BWColorRange::Full);
    m_frame.resize(m_resolution.width(), m_resolution.height());
    for (int row = 0; row < m_resolution.height(); ++row)
        finishRow(tuned, BWColorRange::Full, index, row, m_frame.y(row), m_frame.u(row), m_frame.v(row));
    m_frame.padOddColumn();
    const BWJpeg::Bytes bytes = BWJpeg::compress(m_frame, jpegQuality);
    jpeg.assign(bytes.begin(), bytes.end());
}

std::unique_ptr<BWPictureSource> makePictureSource(const QString &path, QString *error)
{
    if (path.isEmpty())
        return std::make_unique<BWSpecimenSource>();
    QString reason;
    std::unique_ptr<BWPictureSource> source;
    const QFileInfo info(path);
    if (!info.exists())
        reason = QStringLiteral("%1 does not exist").arg(path);
    else if (!info.isFile() && !info.isDir()) // reading a pipe would wait for its writer
        reason = QStringLiteral("%1 is neither a regular file nor a folder").arg(path);
    else
        source = info.isDir() ? fromFolder(path, reason) : fromFile(path, reason);
    if (!source && error)
        *error = reason;
    return source;
}
