#pragma once

#include "v4l2/BWVideoNode.h"

#include <optional>

/// Reads what sysfs tells of a video node. Opens no device.
class BWVideoNodeReader {
public:
    /// `folder` is the node's folder in sysfs, with or without links in its path. Nothing if it is not there (any
    /// more) or is another kind of node, such as a radio.
    static std::optional<BWVideoNode> read(const QString &folder);
    /// What can be told of a camera by its USB interface alone, before it has a video node.
    static BWVideoNode readInterface(const QString &folder);
};
