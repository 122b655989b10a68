// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWDetectedCamera.h"

#include <functional>
#include <QList>

/// A way to reach cameras: a kernel interface, or simulation. Plugged into BWCameraDetector, which owns it.
class BWCameraBackend {
public:
    /// Where a backend reports devices; may be called on any thread, in the order of the events.
    struct Events {
        std::function<void(BWDetectedCameraPtr)> found;
        std::function<void(BWDetectedCameraPtr)> removed;
        std::function<void()> changed{}; ///< pendingDevices() or blockedCameras() may return something else now
    };

    virtual ~BWCameraBackend() = default;

    /// Starts watching for devices that match one of the descriptions, and reports those already attached. Called once,
    /// on the main thread. The events may be called until the backend is destroyed.
    virtual void start(const QList<BWCameraDescriptionPtr> &descriptions, Events events) = 0;

    /// True while a matching device is attached that has not yet been reported as found. Main thread.
    virtual bool pendingDevices() const = 0;

    /// Matching devices that are attached, cannot be used, and are unlikely to become usable by themselves. They are
    /// reported as found as soon as they can be used after all. Main thread.
    virtual QList<BWBlockedCamera> blockedCameras() const { return {}; }
};
