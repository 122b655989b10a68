#include "BWACUDriver/BWFrame.h"

#include <algorithm>
#include <utility>

struct BWFrame::Buffer {
    Buffer(const BWFrameInfo &frameInfo, std::function<void()> releaseFunction)
        : info(frameInfo), release(std::move(releaseFunction))
    {
    }
    ~Buffer()
    {
        if (release)
            release();
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;

    BWFrameInfo info;
    std::function<void()> release;
};

std::array<BWPlaneSize, 3> BWFrameInfo::planeSizes() const
{
    const int halfWidth = (width + 1) / 2;
    const int halfHeight = (height + 1) / 2;
    switch (pixelFormat) {
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

bool BWFrameInfo::isWholeRawPicture() const
{
    const std::array<BWPlaneSize, 3> sizes = planeSizes();
    if (width <= 0 || height <= 0 || sizes[0].rows == 0)
        return false;
    return std::equal(sizes.begin(), sizes.end(), planes.begin(), [](const BWPlaneSize &least, const BWPlane &plane) {
        if (least.rows == 0)
            return true;
        // The last row may end with its last pixel.
        return plane.data && plane.stride >= least.rowBytes
            && plane.size >= std::size_t(plane.stride) * std::size_t(least.rows - 1) + std::size_t(least.rowBytes);
    });
}

BWFrame::BWFrame(const BWFrameInfo &info, std::function<void()> release)
    : m_buffer(std::make_shared<const Buffer>(info, std::move(release)))
{
}

const BWFrameInfo &BWFrame::info() const
{
    static const BWFrameInfo none;
    return m_buffer ? m_buffer->info : none;
}
