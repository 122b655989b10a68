// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWVideoAbilities.h"

#include "camera/BWControlTable.h"
#include "v4l2/BWKernelCalls.h"

#include <algorithm>
#include <linux/videodev2.h>

namespace {

constexpr uint32_t mostStandards = 64;
constexpr std::array<v4l2_std_id, 3> families{V4L2_STD_NTSC, V4L2_STD_PAL, V4L2_STD_SECAM};

constexpr uint32_t unusable = V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY | V4L2_CTRL_FLAG_WRITE_ONLY;
constexpr int64_t mostMenuEntries = 256;

bool isMenu(uint32_t type)
{
    return type == V4L2_CTRL_TYPE_MENU || type == V4L2_CTRL_TYPE_INTEGER_MENU;
}

bool isNumber(uint32_t type)
{
    return type == V4L2_CTRL_TYPE_INTEGER || type == V4L2_CTRL_TYPE_BOOLEAN || isMenu(type);
}

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

std::vector<BWVideoMenuEntry> readMenu(const BWKernelFile &node, uint32_t id, int64_t min, int64_t max)
{
    std::vector<BWVideoMenuEntry> entries;
    // The numbers have holes where the device lacks an entry.
    for (int64_t index = min; index <= max && index < min + mostMenuEntries; ++index) {
        v4l2_querymenu entry{};
        entry.id = id;
        entry.index = static_cast<uint32_t>(index);
        if (node.ioctl(VIDIOC_QUERYMENU, entry) < 0)
            continue;
        entries.push_back({index, text(entry.name)});
    }
    return entries;
}

std::optional<BWVideoControl> readControl(const BWKernelFile &node, int identifier, uint32_t id)
{
    v4l2_query_ext_ctrl query{};
    query.id = id;
    if (node.ioctl(VIDIOC_QUERY_EXT_CTRL, query) < 0 || (query.flags & unusable) || !isNumber(query.type)
        || query.minimum >= query.maximum)
        return std::nullopt;
    BWVideoControl control;
    control.id = id;
    if (isMenu(query.type))
        control.menu = readMenu(node, id, query.minimum, query.maximum);
    const int64_t current = control.readValue(node).value_or(static_cast<int32_t>(query.default_value));
    if (id == V4L2_CID_EXPOSURE_AUTO) {
        const BWExposureMenu modes(control.menu);
        if (!modes.isSwitchable())
            return std::nullopt;
        control.info = {identifier, 0, 1, 1, modes.toProgram(query.default_value), modes.toProgram(current)};
        return control;
    }
    control.info = {identifier,
                    static_cast<double>(query.minimum),
                    static_cast<double>(query.maximum),
                    static_cast<double>(std::max<uint64_t>(query.step, 1)),
                    static_cast<double>(query.default_value),
                    static_cast<double>(current)};
    return control;
}

/// The controls of ours that the device has, found by their V4L2 ids: names differ from driver to driver.
std::vector<BWVideoControl> readControls(const BWKernelFile &node)
{
    std::vector<BWVideoControl> controls;
    for (const BWKnownControl &known : BWControlTable) {
        auto found = known.v4l2Id ? readControl(node, known.code, known.v4l2Id) : std::nullopt;
        if (found)
            controls.push_back(std::move(*found));
    }
    return controls;
}

/// The V4L2 standards of the input that is set now, for the norms 0 NTSC, 1 PAL and 2 SECAM.
std::array<std::optional<uint64_t>, 3> readNorms(const BWKernelFile &node)
{
    std::array<std::optional<uint64_t>, 3> norms{};
    for (uint32_t index = 0; index < mostStandards; ++index) {
        v4l2_standard standard{};
        standard.index = index;
        if (node.ioctl(VIDIOC_ENUMSTD, standard) < 0)
            break;
        for (std::size_t norm = 0; norm < families.size(); ++norm) {
            // The whole family is listed before its members.
            if (!norms[norm] && (standard.id & families[norm]))
                norms[norm] = standard.id & families[norm];
        }
    }
    return norms;
}

/// The control that stands for the choice among the norms.
BWVideoControl normControl(const BWKernelFile &node, const std::array<std::optional<uint64_t>, 3> &norms)
{
    v4l2_std_id current = 0;
    if (node.ioctl(VIDIOC_G_STD, current) < 0)
        current = 0;
    BWVideoControl control;
    control.info.identifier = BWSettingVideoNorm;
    std::optional<int> first;
    for (std::size_t norm = 0; norm < norms.size(); ++norm) {
        if (!norms[norm])
            continue;
        const int index = static_cast<int>(norm);
        control.info.max = index;
        if (!first)
            control.info.min = control.info.value = *(first = index);
        if (*norms[norm] & current)
            control.info.value = index;
    }
    control.info.defaultValue = control.info.value;
    return control;
}

} // namespace

BWExposureMenu::BWExposureMenu(const std::vector<BWVideoMenuEntry> &menu)
{
    const auto has = [&menu](int32_t mode) {
        return std::any_of(menu.begin(), menu.end(),
                           [mode](const BWVideoMenuEntry &entry) { return entry.value == mode; });
    };
    if (has(V4L2_EXPOSURE_MANUAL))
        m_manual = V4L2_EXPOSURE_MANUAL;
    // Few cameras can move an iris, so "automatic" is first of all the mode that leaves it alone.
    for (const int32_t mode : {V4L2_EXPOSURE_APERTURE_PRIORITY, V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_SHUTTER_PRIORITY}) {
        if (!m_automatic && has(mode))
            m_automatic = mode;
    }
}

std::optional<int32_t> BWVideoControl::readValue(const BWKernelFile &node) const
{
    v4l2_ext_control control{};
    control.id = id;
    v4l2_ext_controls request{};
    request.which = V4L2_CTRL_WHICH_CUR_VAL;
    request.count = 1;
    request.controls = &control;
    if (node.ioctl(VIDIOC_G_EXT_CTRLS, request) < 0)
        return std::nullopt;
    return int32_t{control.value};
}

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
    // A driver with several nodes says what all of them do, and separately what this one does.
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
    abilities.modes = BWVideoMode::readAll(node);
    abilities.controls = readControls(node);
    abilities.norms = readNorms(node);
    if (abilities.hasNorms())
        abilities.controls.push_back(normControl(node, abilities.norms));
    abilities.current = currentSize(node);
    return abilities;
}
