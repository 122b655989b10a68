#pragma once

#include "v4l2/finding/BWVideoNode.h"

#include <optional>
#include <QList>

/// Reads what sysfs tells of a video node. Opens no device.
class BWVideoNodeReader {
public:
    /// `folder` is the node's folder in sysfs, with or without links in its path. Nothing if it is not there (any
    /// more) or is another kind of node, such as a radio.
    static std::optional<BWVideoNode> read(const QString &folder);
    /// What can be told of a USB video class camera by the folder of its control interface alone. Nothing for another
    /// interface, and for one that has its video node already.
    static std::optional<BWVideoNode> readInterface(const QString &folder);

    /// The folders of all video nodes, by number, and of all USB interfaces; links resolved, as udev names them.
    static QList<QByteArray> nodeFolders();
    static QList<QByteArray> interfaceFolders();
};
