#include "v4l2/device/BWExposureMenu.h"

#include <algorithm>
#include <linux/videodev2.h>

BWExposureMenu::BWExposureMenu(const std::vector<BWVideoMenuEntry> &menu)
{
    const auto has = [&menu](int32_t mode) {
        return std::any_of(menu.begin(), menu.end(),
                           [mode](const BWVideoMenuEntry &entry) { return entry.value == mode; });
    };
    if (has(V4L2_EXPOSURE_MANUAL))
        m_manual = V4L2_EXPOSURE_MANUAL;
    // Few cameras can move an iris; the mode that leaves it alone is what theirs call automatic.
    for (const int32_t mode : {V4L2_EXPOSURE_APERTURE_PRIORITY, V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_SHUTTER_PRIORITY}) {
        if (!m_automatic && has(mode))
            m_automatic = mode;
    }
}
