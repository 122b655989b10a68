// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QByteArray>
#include <QList>
#include <QString>

/// A video capture node as sysfs describes it, without opening it.
struct BWVideoNode {
    QByteArray path; ///< device node, such as /dev/video0; changes when the camera is plugged in again
    QByteArray sysPath; ///< its folder in sysfs
    QString name; ///< the driver's name for the camera; without a node the camera's own, null if it has none
    QString driver; ///< kernel driver, such as uvcvideo or em28xx
    QString usbId; ///< vendor:product in lower-case hexadecimal, such as eb1a:2761; null if not on USB
    QString serial; ///< serial number of the USB device; null if it has none
    QString port; ///< the socket it is plugged into: the same after every replugging into that socket
    QString part; ///< tells cameras in one device apart: the USB interface, such as "if2"; null for the first
    int index = 0; ///< among the nodes of one camera: 0 captures, others carry metadata and the like
    int usbBus = 0; ///< bus and device number as in /dev/bus/usb/BUS/DEVICE; 0 if not on USB
    int usbDevice = 0;

    /// `folder` is the node's folder in sysfs, with or without links in its path. Nothing if it is not there (any more)
    /// or is another kind of node, such as a radio.
    static std::optional<BWVideoNode> read(const QString &folder);
    /// What the folder of its control interface alone says of a USB video class camera. Nothing for another interface,
    /// and for one that already has its video node.
    static std::optional<BWVideoNode> readInterface(const QString &folder);

    /// The folders of all video nodes, by number, and of all USB interfaces; links resolved, as udev names them.
    static QList<QByteArray> nodeFolders();
    static QList<QByteArray> interfaceFolders();

    /// The event node, such as /dev/input/event7, of the button on the camera: the input device of the same USB device
    /// that has the camera key. Null if the camera has no button, or its input device is not there yet. Reads sysfs.
    QByteArray buttonPath() const;

    /// A USB camera without a node: a program of its own, such as one in a virtual machine, has taken the device.
    bool isTakenByProgram() const;
    /// Why a USB camera has no node, and what helps.
    QString whyWithoutNode() const;

    /// Tells this camera from others and stays the same when it is plugged in again: its serial number, else its port.
    QString identity() const;
};
