// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"

/// What the parts of the program may ask of the application. There is at most one at a time. GUI thread only.
class BWApplicationDelegate {
public:
    BWApplicationDelegate();
    virtual ~BWApplicationDelegate();
    BWApplicationDelegate(const BWApplicationDelegate &) = delete;
    BWApplicationDelegate &operator=(const BWApplicationDelegate &) = delete;

    /// The one that exists, or null.
    static BWApplicationDelegate *shared();

    /// The camera that runs or is being started, or null.
    virtual BWCameraPtr currentCamera() const = 0;
    /// True while an attached camera is still being prepared.
    virtual bool pendingDevices() const = 0;
};
