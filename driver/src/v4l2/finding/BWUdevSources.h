// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "v4l2/finding/BWNodeTracker.h"

#include <array>
#include <libudev.h>
#include <memory>
#include <poll.h>

/// Reports cameras to a node tracker: those that are attached, the kernel's and udev's events, and changes of
/// permissions in /dev. Listens from its construction on, so nothing is missed between enumerate() and the first event.
/// One thread.
class BWUdevSources {
public:
    BWUdevSources();
    ~BWUdevSources();
    BWUdevSources(const BWUdevSources &) = delete;
    BWUdevSources &operator=(const BWUdevSources &) = delete;

    /// Poll these before readEvents().
    std::array<pollfd, 3> descriptors() const;

    /// Reports everything that is attached, and that the rest is gone.
    void enumerate(BWNodeTracker &tracker) const;
    /// Reports everything that has happened. Does not wait.
    void readEvents(BWNodeTracker &tracker);

private:
    struct Unref {
        void operator()(udev *context) const { udev_unref(context); }
        void operator()(udev_device *device) const { udev_device_unref(device); }
        void operator()(udev_monitor *monitor) const { udev_monitor_unref(monitor); }
    };
    using Device = std::unique_ptr<udev_device, Unref>;
    using Monitor = std::unique_ptr<udev_monitor, Unref>;

    Monitor listen(const char *source) const;
    /// False if events were lost.
    static bool readMonitor(udev_monitor *monitor, bool initialised, BWNodeTracker &tracker);
    void readAccess(BWNodeTracker &tracker) const;

    std::unique_ptr<udev, Unref> m_udev;
    Monitor m_kernelEvents; ///< come first
    Monitor m_udevEvents; ///< the same events, once udev has set the device up
    int m_access; ///< inotify
};
