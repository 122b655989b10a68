#include "v4l2/device/BWVideoControlReader.h"

#include "BWACUDriver/BWCameraSetting.h"
#include "v4l2/device/BWExposureMenu.h"

#include <algorithm>
#include <array>
#include <linux/videodev2.h>

namespace {

struct KnownControl {
    int identifier;
    uint32_t id;
};

constexpr std::array knownControls{
    KnownControl{BWSettingHue, V4L2_CID_HUE},
    KnownControl{BWSettingContrast, V4L2_CID_CONTRAST},
    KnownControl{BWSettingSaturation, V4L2_CID_SATURATION},
    KnownControl{BWSettingBrightness, V4L2_CID_BRIGHTNESS},
    KnownControl{BWSettingSharpness, V4L2_CID_SHARPNESS},
    KnownControl{BWSettingGamma, V4L2_CID_GAMMA},
    KnownControl{BWSettingWhiteBalance, V4L2_CID_WHITE_BALANCE_TEMPERATURE},
    KnownControl{BWSettingAutoWhite, V4L2_CID_AUTO_WHITE_BALANCE},
    KnownControl{BWSettingGain, V4L2_CID_GAIN},
    KnownControl{BWSettingBacklight, V4L2_CID_BACKLIGHT_COMPENSATION},
    KnownControl{BWSettingAutoExposure, V4L2_CID_EXPOSURE_AUTO},
    KnownControl{BWSettingExposureAbsolute, V4L2_CID_EXPOSURE_ABSOLUTE},
};

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

} // namespace

std::vector<BWVideoControl> BWVideoControlReader::controls() const
{
    std::vector<BWVideoControl> controls;
    for (const KnownControl &known : knownControls) {
        if (auto found = control(known.identifier, known.id))
            controls.push_back(std::move(*found));
    }
    return controls;
}

std::optional<int32_t> BWVideoControlReader::value(const BWKernelFile &node, uint32_t id)
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

std::optional<BWVideoControl> BWVideoControlReader::control(int identifier, uint32_t id) const
{
    v4l2_query_ext_ctrl query{};
    query.id = id;
    if (m_node.ioctl(VIDIOC_QUERY_EXT_CTRL, query) < 0 || (query.flags & unusable) || !isNumber(query.type)
        || query.minimum >= query.maximum)
        return std::nullopt;
    BWVideoControl control;
    control.id = id;
    if (isMenu(query.type))
        control.menu = menu(id, query.minimum, query.maximum);
    const int64_t current = value(m_node, id).value_or(static_cast<int32_t>(query.default_value));
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

std::vector<BWVideoMenuEntry> BWVideoControlReader::menu(uint32_t id, int64_t min, int64_t max) const
{
    std::vector<BWVideoMenuEntry> entries;
    // What a device leaves out of a menu is a hole in the numbers.
    for (int64_t index = min; index <= max && index < min + mostMenuEntries; ++index) {
        v4l2_querymenu entry{};
        entry.id = id;
        entry.index = static_cast<uint32_t>(index);
        if (m_node.ioctl(VIDIOC_QUERYMENU, entry) < 0)
            continue;
        const auto *name = reinterpret_cast<const char *>(entry.name);
        entries.push_back({index, QString::fromUtf8(name, qsizetype(qstrnlen(name, sizeof entry.name)))});
    }
    return entries;
}
