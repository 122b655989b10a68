// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "simulated/picture/BWPictureTuner.h"

#include <chrono>
#include <functional>
#include <map>
#include <vector>

/// The controls of one simulated camera, including its automatic modes. One thread.
///
/// An automatic mode keeps the picture as it should be: while it is on, its control moves slowly, as if the light were
/// changing, and the picture stays the same.
class BWSimulatedControls {
public:
    explicit BWSimulatedControls(const std::vector<BWControlInfo> &controls);

    /// Sets a control to the nearest possible value and returns that. A control held by an automatic mode keeps its
    /// value; one that the camera does not have is 0.
    double set(int identifier, double value);
    double value(int identifier) const;

    /// As the picture sees them: the defaults are neutral.
    BWPictureControls picture() const;

    /// Lets stream time pass; `moved` is called for every control that an automatic mode has moved.
    void advance(std::chrono::duration<double> time, const std::function<void(int identifier, double value)> &moved);

private:
    bool isAutomatic(int identifier) const;
    double relative(int identifier) const;

    std::map<int, BWControlInfo> m_controls;
    std::chrono::duration<double> m_time{0};
};
