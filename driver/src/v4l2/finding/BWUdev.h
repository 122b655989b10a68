#pragma once

#include <libudev.h>
#include <memory>

/// libudev's counted objects, let go when they go out of scope. One thread each.
struct BWUdevUnref {
    void operator()(udev *context) const { udev_unref(context); }
    void operator()(udev_device *device) const { udev_device_unref(device); }
    void operator()(udev_monitor *monitor) const { udev_monitor_unref(monitor); }
};

using BWUdevContext = std::unique_ptr<udev, BWUdevUnref>;
using BWUdevDevice = std::unique_ptr<udev_device, BWUdevUnref>;
using BWUdevMonitor = std::unique_ptr<udev_monitor, BWUdevUnref>;
