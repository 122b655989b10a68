#include "v4l2/device/BWVideoAbilities.h"

#include "v4l2/device/BWVideoControlReader.h"
#include "v4l2/device/BWVideoModeReader.h"
#include "v4l2/device/BWVideoNorms.h"

#include <algorithm>
#include <linux/videodev2.h>

namespace {

template <std::size_t size>
QString text(const __u8 (&bytes)[size])
{
    const auto *characters = reinterpret_cast<const char *>(bytes);
    return QString::fromUtf8(characters, qsizetype(qstrnlen(characters, size)));
}

BWResolution currentSize(const BWKernelFile &node)
{
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (node.ioctl(VIDIOC_G_FMT, format) < 0)
        return {};
    return {static_cast<int>(format.fmt.pix.width), static_cast<int>(format.fmt.pix.height)};
}

} // namespace

std::vector<BWResolution> BWVideoAbilities::resolutions() const
{
    std::vector<BWResolution> sizes;
    for (const BWVideoMode &mode : modes) {
        if (mode.pixelFormat != BWPixelFormat::None
            && std::find(sizes.begin(), sizes.end(), mode.resolution) == sizes.end())
            sizes.push_back(mode.resolution);
    }
    const auto area = [](BWResolution size) { return int64_t(size.width()) * size.height(); };
    std::sort(sizes.begin(), sizes.end(), [area](BWResolution left, BWResolution right) {
        return area(left) != area(right) ? area(left) < area(right) : left.width() < right.width();
    });
    return sizes;
}

int BWVideoAbilities::identify(const BWKernelFile &node)
{
    v4l2_capability capability{};
    if (const int result = node.ioctl(VIDIOC_QUERYCAP, capability); result < 0)
        return result;
    driver = text(capability.driver);
    card = text(capability.card);
    bus = text(capability.bus_info);
    // A driver with several nodes tells what all of them do, and apart from that what this one does.
    const bool own = capability.capabilities & V4L2_CAP_DEVICE_CAPS;
    const uint32_t does = own ? capability.device_caps : capability.capabilities;
    captures = (does & V4L2_CAP_VIDEO_CAPTURE) && (does & V4L2_CAP_STREAMING);
    return 0;
}

std::optional<BWVideoAbilities> BWVideoAbilities::read(BWKernelCalls &kernel, const char *path, int &error)
{
    const BWKernelFile node(kernel, path);
    if (!node.isOpen()) {
        error = -node.openError();
        return std::nullopt;
    }
    BWVideoAbilities abilities;
    if (const int result = abilities.identify(node); result < 0) {
        error = -result;
        return std::nullopt;
    }
    if (!abilities.captures)
        return abilities;
    abilities.modes = BWVideoModeReader(node).modes();
    abilities.controls = BWVideoControlReader(node).controls();
    abilities.norms = BWVideoNorms::read(node);
    if (abilities.hasNorms())
        abilities.controls.push_back(BWVideoNorms::control(node, abilities.norms));
    abilities.current = currentSize(node);
    return abilities;
}
