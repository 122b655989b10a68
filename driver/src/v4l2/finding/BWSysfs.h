#pragma once

#include <QString>

/// Reads the kernel's description of devices. `folder` is a device's folder, with or without links in its path.
/// Any thread.
class BWSysfs {
public:
    /// The text of an attribute without space around it; null if there is no such file or it cannot be read.
    static QString attribute(const QString &file);
    /// The name of what a link points to, as the driver's name for DEVICE/driver; null if there is no such link.
    static QString linkedName(const QString &link);
    /// The folder of the device that this class device, such as a video node, belongs to; null if it has none.
    static QString parentDevice(const QString &folder);
    /// The folder of the USB device that the device belongs to; null if it is not on USB.
    static QString usbDevice(const QString &folder);
    /// The socket that a USB device is plugged into, as "usb-0000:00:14.0-1.2": its controller and the ports on the way.
    static QString usbPort(const QString &usbDevice);
};
