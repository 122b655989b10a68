#pragma once

#include "v4l2/device/BWVideoAbilities.h"

/// The menu of a device's exposure modes, of which the program knows two: manual (0) and automatic (1).
class BWExposureMenu {
public:
    explicit BWExposureMenu(const std::vector<BWVideoMenuEntry> &menu);

    /// Whether the device has a manual and an automatic mode.
    bool isSwitchable() const { return m_manual && m_automatic; }

    /// Only where it is switchable.
    int32_t toDevice(double value) const { return value > 0 ? *m_automatic : *m_manual; }
    double toProgram(int64_t mode) const { return mode == m_manual ? 0 : 1; }

private:
    std::optional<int32_t> m_manual;
    std::optional<int32_t> m_automatic;
};
