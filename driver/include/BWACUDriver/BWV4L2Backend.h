// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraBackend.h"

#include <memory>
#include <QStringList>

/// Cameras of the Linux kernel's V4L2 interface, found and watched through udev.
class BWV4L2Backend {
public:
    /// `tables` are files (resources included) that map devices to types of camera; the first entry that fits counts,
    /// those of earlier files first. Files that do not exist are left out; damaged ones are logged.
    static std::unique_ptr<BWCameraBackend> create(const QStringList &tables);
};

/// Everything worth knowing about the video nodes of this computer, for people.
class BWV4L2Listing {
public:
    /// A picture format at a size.
    struct Mode {
        QString format; ///< V4L2's four letters
        bool isShown = false; ///< the program can show it
        BWResolution resolution;
        double framesPerSecond = 0; ///< the highest; 0 if the device does not say
    };

    struct Control {
        QString name; ///< English
        quint32 id = 0; ///< V4L2 control id; 0 if it has none
        double min = 0;
        double max = 0;
        double step = 1;
        double defaultValue = 0;
        double value = 0;
        QStringList menu; ///< the choices of a menu control, as "1 Manual Mode"
    };

    /// Texts that do not apply are null.
    struct Node {
        QString path; ///< device node; null for a USB camera without one
        QString name;
        QString driver;
        QString usbId;
        QString serial;
        QString port;
        QString type; ///< English name of the type it is used as; null if it is not used
        bool isBridgeChip = false;
        QString why; ///< it has this type, or is not used
        QList<Mode> modes; ///< in the device's order
        QList<Control> controls;
        QString button; ///< event node of the button on the camera
        QStringList norms;
        QString heldBy; ///< program that has the node open
        QStringList problems; ///< in plain words, with what helps
    };

    /// `tables` as for BWV4L2Backend. Opens each node for a moment, which does not disturb programs that stream from
    /// it. Any thread; takes as long as the devices take to answer.
    static QList<Node> list(const QStringList &tables);
};
