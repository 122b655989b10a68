// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWVideoModes.h"

#include "v4l2/BWKernelCalls.h"
#include "v4l2/device/BWVideoAbilities.h"
#include "v4l2/device/BWVideoFormat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <linux/videodev2.h>
#include <QStringList>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

// No device may keep us enumerating for ever.
constexpr uint32_t mostEntries = 256;

/// The sizes offered of a device that accepts any within a range.
constexpr std::array commonSizes{
    BWResolution{640, 480},   BWResolution{800, 600},   BWResolution{1024, 768},  BWResolution{1280, 720},
    BWResolution{1280, 960},  BWResolution{1280, 1024}, BWResolution{1600, 1200}, BWResolution{1920, 1080},
    BWResolution{2048, 1536}, BWResolution{2592, 1944},
};
/// A picture of an analog norm is at most this large.
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

std::vector<BWResolution> enumeratedSizes(const BWKernelFile &node, uint32_t fourcc)
{
    std::vector<BWResolution> sizes;
    for (uint32_t index = 0; index < mostEntries; ++index) {
        v4l2_frmsizeenum size{};
        size.index = index;
        size.pixel_format = fourcc;
        if (node.ioctl(VIDIOC_ENUM_FRAMESIZES, size) < 0)
            break;
        if (size.type != V4L2_FRMSIZE_TYPE_DISCRETE)
            return sizesWithin(size.stepwise);
        addOnce(sizes, resolution(size.discrete.width, size.discrete.height));
    }
    return sizes;
}

std::vector<BWResolution> triedSizes(const BWKernelFile &node, uint32_t fourcc)
{
    std::vector<BWResolution> sizes;
    const auto tryOut = [&](BWResolution size) {
        v4l2_format format{};
        format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        format.fmt.pix.width = static_cast<uint32_t>(size.width());
        format.fmt.pix.height = static_cast<uint32_t>(size.height());
        format.fmt.pix.pixelformat = fourcc;
        if (node.ioctl(VIDIOC_TRY_FMT, format) >= 0 && format.fmt.pix.pixelformat == fourcc)
            addOnce(sizes, resolution(format.fmt.pix.width, format.fmt.pix.height));
    };
    tryOut(analogSize);
    for (const BWResolution size : commonSizes)
        tryOut(size);
    return sizes;
}

void readRate(const BWKernelFile &node, BWVideoMode &mode)
{
    for (uint32_t index = 0; index < mostEntries; ++index) {
        v4l2_frmivalenum interval{};
        interval.index = index;
        interval.pixel_format = mode.fourcc;
        interval.width = static_cast<uint32_t>(mode.resolution.width());
        interval.height = static_cast<uint32_t>(mode.resolution.height());
        if (node.ioctl(VIDIOC_ENUM_FRAMEINTERVALS, interval) < 0)
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

void addSizes(const BWKernelFile &node, uint32_t fourcc, std::vector<BWVideoMode> &modes)
{
    std::vector<BWResolution> sizes = enumeratedSizes(node, fourcc);
    if (sizes.empty())
        sizes = triedSizes(node, fourcc);
    for (const BWResolution size : sizes) {
        BWVideoMode mode;
        mode.fourcc = fourcc;
        mode.pixelFormat = BWVideoFormat::pixelFormat(fourcc);
        mode.resolution = size;
        readRate(node, mode);
        modes.push_back(mode);
    }
}

/// The order of formats at equal rates.
constexpr std::array preference{
    BWPixelFormat::YUYV,  BWPixelFormat::UYVY,  BWPixelFormat::NV12,  BWPixelFormat::YU12,
    BWPixelFormat::RGB24, BWPixelFormat::BGR24, BWPixelFormat::MJPEG, BWPixelFormat::GREY,
};

auto rank(const BWVideoMode &mode)
{
    const auto place = std::find(preference.begin(), preference.end(), mode.pixelFormat) - preference.begin();
    // 29.97 and 30 are the same rate.
    return std::tuple(mode.pixelFormat == BWPixelFormat::GREY, -std::lround(mode.framesPerSecond), place);
}

QString rate(const BWVideoMode &mode)
{
    return mode.framesPerSecond > 0 ? u"%1/s"_s.arg(mode.framesPerSecond, 0, 'g', 3) : u"an unknown rate"_s;
}

} // namespace

std::vector<BWVideoMode> BWVideoMode::readAll(const BWKernelFile &node)
{
    std::vector<BWVideoMode> modes;
    for (uint32_t index = 0; index < mostEntries; ++index) {
        v4l2_fmtdesc format{};
        format.index = index;
        format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (node.ioctl(VIDIOC_ENUM_FMT, format) < 0)
            break;
        addSizes(node, format.pixelformat, modes);
    }
    return modes;
}

BWVideoModeChoice::BWVideoModeChoice(const BWVideoAbilities &abilities, BWResolution requested)
{
    const BWResolution size = requested.nearestOf(abilities.resolutions());
    for (const BWVideoMode &mode : abilities.modes) {
        if (mode.pixelFormat != BWPixelFormat::None && mode.resolution == size)
            m_candidates.push_back(mode);
    }
    std::stable_sort(m_candidates.begin(), m_candidates.end(),
                     [](const BWVideoMode &left, const BWVideoMode &right) { return rank(left) < rank(right); });
}

QString BWVideoModeChoice::reason(std::size_t taken) const
{
    const BWVideoMode &mode = m_candidates[taken];
    QStringList others;
    for (const BWVideoMode &other : m_candidates) {
        if (std::lround(other.framesPerSecond) != std::lround(mode.framesPerSecond))
            others += u"%1 gives %2"_s.arg(BWVideoFormat::name(other.fourcc), rate(other));
    }
    const QString choice =
        u"%1 %2 at %3"_s.arg(BWVideoFormat::name(mode.fourcc), mode.resolution.resolutionString(), rate(mode));
    return others.isEmpty() ? choice : choice + u"; "_s + others.join(u", "_s);
}
