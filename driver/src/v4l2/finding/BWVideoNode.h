#pragma once

#include <QByteArray>
#include <QString>

/// A video capture node as sysfs and udev describe it, without opening it.
struct BWVideoNode {
    QByteArray path; ///< device node, such as /dev/video0; changes when the camera is plugged in again
    QByteArray sysPath; ///< its folder in sysfs
    QString name; ///< what the driver calls the camera; without a node what it calls itself, null if it does not
    QString driver; ///< kernel driver, such as uvcvideo or em28xx
    QString usbId; ///< vendor:product in lower-case hexadecimal, such as eb1a:2761; null if not on USB
    QString serial; ///< serial number of the USB device; null if it has none
    QString port; ///< the socket it is plugged into: the same after every replugging into that socket
    QString part; ///< tells cameras in one device apart: the USB interface, such as "if2"; null for the first
    int index = 0; ///< among the nodes of one camera: 0 captures, others carry metadata and the like
    int usbBus = 0; ///< bus and device number as in /dev/bus/usb/BUS/DEVICE; 0 if not on USB
    int usbDevice = 0;

    /// Of a USB camera without a node: a program of its own, such as one in a virtual machine, has taken the device.
    bool isTakenByProgram() const { return driver == QLatin1String("usbfs"); }
    /// Why a USB camera has no node, and what helps.
    QString whyWithoutNode() const
    {
        if (driver.isNull())
            return QStringLiteral("no driver has taken it; load it with \"modprobe uvcvideo\"");
        return isTakenByProgram() ? QStringLiteral("a program has taken it from its driver; close that program")
                                  : QStringLiteral("its driver has made none; plug it in again");
    }

    /// Tells this camera from others and stays the same when it is plugged in again: by its serial number, else by its
    /// port.
    QString identity() const
    {
        const QString kind = usbId.isNull() ? driver : usbId;
        const QString place = serial.isEmpty() ? port : serial;
        return part.isNull() ? QStringLiteral("%1 %2").arg(kind, place)
                             : QStringLiteral("%1 %2 %3").arg(kind, place, part);
    }
};
