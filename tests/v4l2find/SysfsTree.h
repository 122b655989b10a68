// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>
#include <QTemporaryDir>

/// A folder tree laid out as the kernel lays out sysfs.
class SysfsTree {
public:
    /// A USB device at the socket with this devpath, such as "1.2" (children of hubs are nested, as the kernel has them).
    /// Returns its folder.
    QString addUsbDevice(const QString &devpath, const QMap<QString, QString> &attributes);
    /// A video node of a device or interface: returns its folder.
    QString addVideoNode(const QString &parent, int number, int index, const QString &name);
    /// An interface of a USB device, such as "1.0": returns its folder.
    QString addInterface(const QString &usbDevice, const QString &name, const QString &driver);

    void write(const QString &file, const QString &text);
    QString root() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};
