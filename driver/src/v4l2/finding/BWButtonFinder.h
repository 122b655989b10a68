#pragma once

#include <QByteArray>

/// Finds the input device of the button on a camera.
class BWButtonFinder {
public:
    /// The event node, such as /dev/input/event7, of the input device that belongs to the same USB device as the video
    /// node and has the camera key. Null if there is none: the camera has no button, or its input device is not there
    /// yet. `videoSysPath` is the video node's folder in sysfs. Any thread.
    static QByteArray eventNode(const QByteArray &videoSysPath);
};
