#include "v4l2/device/BWVideoNorms.h"

#include "BWACUDriver/BWCameraSetting.h"

#include <linux/videodev2.h>

namespace {

constexpr uint32_t mostStandards = 64;
constexpr std::array<v4l2_std_id, 3> families{V4L2_STD_NTSC, V4L2_STD_PAL, V4L2_STD_SECAM};

} // namespace

std::array<std::optional<uint64_t>, 3> BWVideoNorms::read(const BWKernelFile &node)
{
    std::array<std::optional<uint64_t>, 3> norms{};
    for (uint32_t index = 0; index < mostStandards; ++index) {
        v4l2_standard standard{};
        standard.index = index;
        if (node.ioctl(VIDIOC_ENUMSTD, standard) < 0)
            break;
        for (std::size_t norm = 0; norm < families.size(); ++norm) {
            // The whole family comes before its members.
            if (!norms[norm] && (standard.id & families[norm]))
                norms[norm] = standard.id & families[norm];
        }
    }
    return norms;
}

BWVideoControl BWVideoNorms::control(const BWKernelFile &node, const std::array<std::optional<uint64_t>, 3> &norms)
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
