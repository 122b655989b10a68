#include "v4l2/device/BWVideoModeReader.h"

#include "v4l2/device/BWVideoFormat.h"

#include <algorithm>
#include <array>
#include <linux/videodev2.h>

namespace {

// Nothing that a device says may keep us counting for ever.
constexpr uint32_t mostEntries = 256;

/// What is offered of a device that takes any size within a range.
constexpr std::array commonSizes{
    BWResolution{640, 480},   BWResolution{800, 600},   BWResolution{1024, 768},  BWResolution{1280, 720},
    BWResolution{1280, 960},  BWResolution{1280, 1024}, BWResolution{1600, 1200}, BWResolution{1920, 1080},
    BWResolution{2048, 1536}, BWResolution{2592, 1944},
};
/// A picture by an analog norm has one of these sizes at most.
constexpr BWResolution analogSize{720, 480};
constexpr uint32_t mostAnalogLines = 576;

void addOnce(std::vector<BWResolution> &sizes, BWResolution size)
{
    if (size.isValid() && std::find(sizes.begin(), sizes.end(), size) == sizes.end())
        sizes.push_back(size);
}

BWResolution resolution(uint32_t width, uint32_t height)
{
    constexpr uint32_t most = 32768;
    if (width > most || height > most)
        return {};
    return {static_cast<int>(width), static_cast<int>(height)};
}

bool onGrid(int value, uint32_t min, uint32_t max, uint32_t step)
{
    const auto wanted = static_cast<uint32_t>(value);
    return wanted >= min && wanted <= max && (wanted - min) % std::max(step, 1u) == 0;
}

std::vector<BWResolution> sizesWithin(const v4l2_frmsize_stepwise &range)
{
    std::vector<BWResolution> sizes;
    const auto add = [&](BWResolution size) {
        if (onGrid(size.width(), range.min_width, range.max_width, range.step_width)
            && onGrid(size.height(), range.min_height, range.max_height, range.step_height))
            addOnce(sizes, size);
    };
    for (const BWResolution size : commonSizes)
        add(size);
    if (range.max_height <= mostAnalogLines)
        add(analogSize);
    addOnce(sizes, resolution(range.max_width, range.max_height));
    return sizes;
}

} // namespace

std::vector<BWVideoMode> BWVideoModeReader::modes() const
{
    std::vector<BWVideoMode> modes;
    for (uint32_t index = 0; index < mostEntries; ++index) {
        v4l2_fmtdesc format{};
        format.index = index;
        format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (m_node.ioctl(VIDIOC_ENUM_FMT, format) < 0)
            break;
        addSizes(format.pixelformat, modes);
    }
    return modes;
}

void BWVideoModeReader::addSizes(uint32_t fourcc, std::vector<BWVideoMode> &modes) const
{
    std::vector<BWResolution> sizes = enumeratedSizes(fourcc);
    if (sizes.empty())
        sizes = triedSizes(fourcc);
    for (const BWResolution size : sizes) {
        BWVideoMode mode;
        mode.fourcc = fourcc;
        mode.pixelFormat = BWVideoFormat::pixelFormat(fourcc);
        mode.resolution = size;
        readRate(mode);
        modes.push_back(mode);
    }
}

std::vector<BWResolution> BWVideoModeReader::enumeratedSizes(uint32_t fourcc) const
{
    std::vector<BWResolution> sizes;
    for (uint32_t index = 0; index < mostEntries; ++index) {
        v4l2_frmsizeenum size{};
        size.index = index;
        size.pixel_format = fourcc;
        if (m_node.ioctl(VIDIOC_ENUM_FRAMESIZES, size) < 0)
            break;
        if (size.type != V4L2_FRMSIZE_TYPE_DISCRETE)
            return sizesWithin(size.stepwise);
        addOnce(sizes, resolution(size.discrete.width, size.discrete.height));
    }
    return sizes;
}

std::vector<BWResolution> BWVideoModeReader::triedSizes(uint32_t fourcc) const
{
    std::vector<BWResolution> sizes;
    const auto tryOut = [&](BWResolution size) {
        v4l2_format format{};
        format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        format.fmt.pix.width = static_cast<uint32_t>(size.width());
        format.fmt.pix.height = static_cast<uint32_t>(size.height());
        format.fmt.pix.pixelformat = fourcc;
        if (m_node.ioctl(VIDIOC_TRY_FMT, format) >= 0 && format.fmt.pix.pixelformat == fourcc)
            addOnce(sizes, resolution(format.fmt.pix.width, format.fmt.pix.height));
    };
    tryOut(analogSize);
    for (const BWResolution size : commonSizes)
        tryOut(size);
    return sizes;
}

void BWVideoModeReader::readRate(BWVideoMode &mode) const
{
    for (uint32_t index = 0; index < mostEntries; ++index) {
        v4l2_frmivalenum interval{};
        interval.index = index;
        interval.pixel_format = mode.fourcc;
        interval.width = static_cast<uint32_t>(mode.resolution.width());
        interval.height = static_cast<uint32_t>(mode.resolution.height());
        if (m_node.ioctl(VIDIOC_ENUM_FRAMEINTERVALS, interval) < 0)
            return;
        const bool discrete = interval.type == V4L2_FRMIVAL_TYPE_DISCRETE;
        const v4l2_fract &shortest = discrete ? interval.discrete : interval.stepwise.min;
        const double rate = shortest.numerator > 0 ? double(shortest.denominator) / shortest.numerator : 0;
        if (rate > mode.framesPerSecond) {
            mode.framesPerSecond = rate;
            mode.interval = {shortest.numerator, shortest.denominator};
        }
        if (!discrete)
            return;
    }
}
