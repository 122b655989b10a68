// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFrameReader.h"

#include <algorithm>
#include <array>
#include <libyuv.h>
#include <utility>

namespace {

bool isPacked(const BWFrame &frame)
{
    return frame.pixelFormat() == BWPixelFormat::YUYV || frame.pixelFormat() == BWPixelFormat::UYVY;
}

/// How far the picture may be reduced and is still at least as large as it is shown.
int divisorFor(const BWFrame &frame, QSize size, QSize whole)
{
    const auto isEnough = [&](int divisor) {
        return whole.width() * divisor < size.width() + divisor && whole.height() * divisor < size.height() + divisor;
    };
    if (frame.pixelFormat() == BWPixelFormat::MJPEG)
        return isEnough(4) ? 4 : isEnough(2) ? 2 : 1;
    // Of the raw formats only packed 4:2:2 is worth it: it is what raw cameras deliver.
    const bool canHalve = isPacked(frame) && size.width() % 2 == 0 && size.height() % 2 == 0;
    return canHalve && isEnough(2) ? 2 : 1;
}

/// The pixels of a picture that a part of it is made from when the whole is scaled.
QRect sourceOf(const QRect &part, QSize whole, QSize size)
{
    if (whole == size)
        return part;
    const double scaleX = static_cast<double>(size.width()) / whole.width();
    const double scaleY = static_cast<double>(size.height()) / whole.height();
    constexpr int filter = 3; // it looks at a few more around them
    const QRect source(
        QPoint(static_cast<int>(part.left() * scaleX) - filter, static_cast<int>(part.top() * scaleY) - filter),
        QPoint(static_cast<int>((part.right() + 1) * scaleX) + filter,
               static_cast<int>((part.bottom() + 1) * scaleY) + filter));
    return source.intersected(QRect(QPoint(0, 0), size));
}

/// Left and upper edges moved outwards to even numbers: colour is stored for pairs of pixels.
QRect aligned(QRect part)
{
    part.setLeft(part.left() & ~1);
    part.setTop(part.top() & ~1);
    return part;
}

/// The pixels of a frame that has them as they are drawn. They live as long as the last copy of the image.
QImage viewOf(const BWFrame &frame)
{
    const BWPlane &plane = frame.plane(0);
    return {plane.data,        frame.width(),        frame.height(),
            plane.stride,      QImage::Format_RGB32, [](void *owner) { delete static_cast<BWFrame *>(owner); },
            new BWFrame(frame)};
}

const libyuv::YuvConstants *constantsFor(const BWFrameInfo &info)
{
    const bool full = info.range == BWColorRange::Full;
    if (info.matrix == BWColorMatrix::BT709)
        return full ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    return full ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
}

} // namespace

bool BWFrameReader::setFrame(const BWFrame &frame, QSize whole, const QRect &part)
{
    constexpr int everySoOften = 16;
    constexpr int someSeconds = 200;
    Picture next;
    next.frame = frame;
    if (!part.isEmpty()) {
        const bool toTheEnd = m_suspicion > 0 || m_unchecked == 0;
        m_unchecked = (m_unchecked + 1) % everySoOften;
        if (!read(next, whole, part, toTheEnd)) {
            m_suspicion = someSeconds;
            return false;
        }
        m_suspicion = std::max(0, m_suspicion - 1);
    }
    m_picture = std::move(next);
    return true;
}

void BWFrameReader::require(QSize whole, const QRect &part)
{
    if (m_picture.whole == whole && m_picture.area.contains(sourceOf(part, whole, m_picture.size)))
        return;
    Picture next;
    next.frame = m_picture.frame;
    read(next, whole, part, false);
    m_picture = std::move(next);
}

void BWFrameReader::clear()
{
    m_picture = {};
}

bool BWFrameReader::read(Picture &picture, QSize whole, const QRect &part, bool toTheEnd)
{
    const BWFrameInfo &info = picture.frame.info();
    const bool isJpeg = info.pixelFormat == BWPixelFormat::MJPEG;
    if (isJpeg ? !m_jpeg.open(info.planes[0].data, info.planes[0].size) : !info.isWholeRawPicture())
        return false;
    if (info.pixelFormat == BWPixelFormat::XBGR32) {
        picture.whole = whole;
        picture.size = picture.frame.size();
        picture.area = QRect({}, picture.size);
        picture.pixels = viewOf(picture.frame);
        return true;
    }
    const QSize full = isJpeg ? m_jpeg.size(1) : picture.frame.size();
    const int divisor = divisorFor(picture.frame, full, whole);
    picture.whole = whole;
    picture.size = isJpeg ? m_jpeg.size(divisor) : full / divisor;

    // While the view moves, more is read than is seen, so that its next steps find it done.
    const int margin = std::exchange(m_lastPart, part) == part ? 0 : 64;
    const QRect needed = sourceOf(part, whole, picture.size);
    const QRect area = needed.adjusted(-margin, -margin, margin, margin).intersected(QRect(QPoint(0, 0), picture.size));
    picture.area = isJpeg ? m_jpeg.decodable(area, divisor) : aligned(area);
    QImage &image = m_images.take(picture.area.size());
    if (image.isNull()) // no memory
        return false;
    const int stride = static_cast<int>(image.bytesPerLine());
    int goodRows = picture.area.height();
    if (isJpeg)
        goodRows = m_jpeg.read(picture.area, divisor, image.bits(), stride, toTheEnd);
    else
        convert(info, picture.area, divisor == 2, image.bits(), stride);
    picture.pixels = image;
    return needed.bottom() < picture.area.top() + goodRows;
}

void BWFrameReader::convert(const BWFrameInfo &info, const QRect &part, bool half, uint8_t *argb, int stride)
{
    const int x = part.x();
    const int y = part.y();
    const int width = part.width();
    const int height = part.height();
    const libyuv::YuvConstants *constants = constantsFor(info);
    const auto row = [&](std::size_t plane, int vertical, int bytesIn) {
        return info.planes[plane].data + (y / vertical) * static_cast<std::ptrdiff_t>(info.planes[plane].stride)
            + bytesIn;
    };

    switch (info.pixelFormat) {
    case BWPixelFormat::YUYV:
    case BWPixelFormat::UYVY:
        convertPacked(info, part, half, argb, stride);
        break;
    case BWPixelFormat::NV12:
        libyuv::NV12ToARGBMatrix(row(0, 1, x), info.planes[0].stride, row(1, 2, x), info.planes[1].stride, argb, stride,
                                 constants, width, height);
        break;
    case BWPixelFormat::YU12:
        libyuv::I420ToARGBMatrix(row(0, 1, x), info.planes[0].stride, row(1, 2, x / 2), info.planes[1].stride,
                                 row(2, 2, x / 2), info.planes[2].stride, argb, stride, constants, width, height);
        break;
    case BWPixelFormat::GREY:
        libyuv::I400ToARGBMatrix(row(0, 1, x), info.planes[0].stride, argb, stride, constants, width, height);
        break;
    case BWPixelFormat::RGB24: // libyuv names formats by the order in a little-endian word
        libyuv::RAWToARGB(row(0, 1, x * 3), info.planes[0].stride, argb, stride, width, height);
        break;
    case BWPixelFormat::BGR24:
        libyuv::RGB24ToARGB(row(0, 1, x * 3), info.planes[0].stride, argb, stride, width, height);
        break;
    case BWPixelFormat::None:
    case BWPixelFormat::MJPEG:
    case BWPixelFormat::XBGR32: // needs none
        break;
    }
}

void BWFrameReader::convertPacked(const BWFrameInfo &info, const QRect &part, bool half, uint8_t *argb, int stride)
{
    const int factor = half ? 2 : 1;
    const bool isYuyv = info.pixelFormat == BWPixelFormat::YUYV;
    const int width = part.width();
    const int sourceStride = info.planes[0].stride;
    const std::ptrdiff_t sourceStep = static_cast<std::ptrdiff_t>(sourceStride) * factor;
    const uint8_t *source = info.planes[0].data + part.y() * sourceStep + part.x() * (std::ptrdiff_t{2} * factor);
    if (!half && info.matrix == BWColorMatrix::BT601 && info.range == BWColorRange::Limited) {
        const auto direct = isYuyv ? libyuv::YUY2ToARGB : libyuv::UYVYToARGB;
        direct(source, sourceStride, argb, stride, width, part.height());
        return;
    }

    // By way of planes: only those can be converted with any matrix and range. Halved, the luma is as large as the chroma
    // that belongs to it. A few rows at a time, so that what lies between stays in the cache.
    constexpr int band = 8;
    const int wide = width * factor;
    const int chroma = (wide + 1) / 2;
    const std::ptrdiff_t lumaSize = std::ptrdiff_t{band} * wide * factor;
    const std::ptrdiff_t chromaSize = std::ptrdiff_t{band} * chroma;
    m_scratch.resize(static_cast<std::size_t>(lumaSize + 2 * chromaSize + std::ptrdiff_t{band} * width));
    uint8_t *luma = m_scratch.data();
    uint8_t *u = luma + lumaSize;
    uint8_t *v = u + chromaSize;
    uint8_t *small = v + chromaSize;
    const auto *constants = constantsFor(info);
    for (int y = 0; y < part.height(); y += band) {
        const int rows = std::min(band, part.height() - y);
        const uint8_t *from = source + y * sourceStep;
        uint8_t *to = argb + y * static_cast<std::ptrdiff_t>(stride);
        if (half) {
            const auto split = isYuyv ? libyuv::YUY2ToI420 : libyuv::UYVYToI420;
            split(from, sourceStride, luma, wide, u, chroma, v, chroma, wide, rows * 2);
            libyuv::ScalePlane(luma, wide, wide, rows * 2, small, width, width, rows, libyuv::kFilterBox);
            libyuv::I444ToARGBMatrix(small, width, u, chroma, v, chroma, to, stride, constants, width, rows);
        } else {
            const auto split = isYuyv ? libyuv::YUY2ToI422 : libyuv::UYVYToI422;
            split(from, sourceStride, luma, wide, u, chroma, v, chroma, wide, rows);
            libyuv::I422ToARGBMatrix(luma, wide, u, chroma, v, chroma, to, stride, constants, width, rows);
        }
    }
}
