#include "camera/BWFrameInspector.h"

#include "base/BWDriverLog.h"
#include "media/BWJpeg.h"

#include <algorithm>

namespace {

struct PlaneShape {
    std::size_t bytesPerRow;
    std::size_t rows;
};

/// The planes that a frame of that format and size must at least have.
std::array<PlaneShape, 3> shapeOf(const BWFrameInfo &info)
{
    const auto width = static_cast<std::size_t>(info.width);
    const auto height = static_cast<std::size_t>(info.height);
    const std::size_t halfWidth = (width + 1) / 2;
    const std::size_t halfHeight = (height + 1) / 2;
    switch (info.pixelFormat) {
    case BWPixelFormat::YUYV:
    case BWPixelFormat::UYVY:
        return {{{halfWidth * 4, height}}};
    case BWPixelFormat::NV12:
        return {{{width, height}, {halfWidth * 2, halfHeight}}};
    case BWPixelFormat::YU12:
        return {{{width, height}, {halfWidth, halfHeight}, {halfWidth, halfHeight}}};
    case BWPixelFormat::GREY:
        return {{{width, height}}};
    case BWPixelFormat::RGB24:
    case BWPixelFormat::BGR24:
        return {{{width * 3, height}}};
    case BWPixelFormat::None:
    case BWPixelFormat::MJPEG:
        break;
    }
    return {};
}

bool isWhole(const BWFrameInfo &info)
{
    if (info.pixelFormat == BWPixelFormat::MJPEG)
        return BWJpeg::looksComplete(info.planes[0].data, info.planes[0].size);
    if (info.pixelFormat == BWPixelFormat::None || info.width <= 0 || info.height <= 0)
        return false;
    const std::array<PlaneShape, 3> shape = shapeOf(info);
    return std::equal(shape.begin(), shape.end(), info.planes.begin(),
                      [](const PlaneShape &least, const BWPlane &plane) {
                          if (least.rows == 0)
                              return true;
                          // The last row may end with its last pixel.
                          const auto stride = static_cast<std::size_t>(std::max(plane.stride, 0));
                          return plane.data && stride >= least.bytesPerRow
                              && plane.size >= stride * (least.rows - 1) + least.bytesPerRow;
                      });
}

} // namespace

void BWFrameInspector::streamStarted()
{
    m_lastSequence.reset();
    m_unnumbered = 0;
}

void BWFrameInspector::streamRestarted()
{
    ++m_restarts;
}

bool BWFrameInspector::accept(const BWFrame &frame)
{
    countGap(frame.sequence());
    if (!isWhole(frame.info())) {
        if (m_bad++ == 0)
            qCWarning(bwDriver) << "Frame" << frame.sequence() << "arrived incomplete and was skipped";
        return false;
    }
    ++m_delivered;
    return true;
}

void BWFrameInspector::reject(const BWFrame &frame)
{
    if (frame)
        countGap(frame.sequence());
    else
        ++m_unnumbered;
    if (m_bad++ == 0)
        qCWarning(bwDriver) << "The device flagged a frame in error; it was skipped";
}

BWCameraStatistics BWFrameInspector::statistics() const
{
    return {m_delivered, m_bad, m_lost, m_restarts};
}

void BWFrameInspector::countGap(uint64_t sequence)
{
    if (m_lastSequence && sequence > *m_lastSequence) {
        const uint64_t missing = sequence - *m_lastSequence - 1;
        m_lost += missing - std::min(missing, m_unnumbered);
    }
    m_lastSequence = sequence;
    m_unnumbered = 0;
}
