#pragma once

#include <QByteArray>
#include <QString>

/// Tells who uses a device.
class BWDeviceHolder {
public:
    /// Name of the program that has the device node open, as "guvcview"; one that streams from it before one that only
    /// keeps it open. Null if there is none, or none that this user may see. Our own process does not count.
    /// Reads /proc: some milliseconds on a busy machine. Any thread.
    static QString programHolding(const QByteArray &path);
};
