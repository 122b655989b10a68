// SPDX-License-Identifier: GPL-3.0-or-later
#include "SysfsTree.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

QString SysfsTree::addUsbDevice(const QString &devpath, const QMap<QString, QString> &attributes)
{
    QString folder = root() + "/devices/pci0000:00/0000:00:14.0/usb1"_L1;
    const QStringList ports = devpath.split(u'.');
    for (qsizetype depth = 1; depth <= ports.size(); ++depth)
        folder += "/1-"_L1 + ports.first(depth).join(u'.');
    write(folder + "/devpath"_L1, devpath);
    for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute)
        write(folder + u'/' + attribute.key(), attribute.value());
    return folder;
}

QString SysfsTree::addInterface(const QString &usbDevice, const QString &name, const QString &driver)
{
    const QString folder = usbDevice + u'/' + QDir(usbDevice).dirName() + u':' + name;
    const QString driverFolder = root() + "/bus/usb/drivers/"_L1 + driver;
    write(folder + "/bInterfaceNumber"_L1, name.section(u'.', 1).rightJustified(2, u'0'));
    QDir().mkpath(driverFolder);
    QFile::link(driverFolder, folder + "/driver"_L1);
    return folder;
}

QString SysfsTree::addVideoNode(const QString &parent, int number, int index, const QString &name)
{
    const QString folder = u"%1/video4linux/video%2"_s.arg(parent).arg(number);
    write(folder + "/index"_L1, QString::number(index));
    write(folder + "/name"_L1, name);
    write(folder + "/uevent"_L1, u"MAJOR=81\nMINOR=%1\nDEVNAME=video%1"_s.arg(number));
    QFile::link(u"../../../"_s + QDir(parent).dirName(), folder + "/device"_L1);
    return folder;
}

void SysfsTree::write(const QString &file, const QString &text)
{
    QDir().mkpath(QFileInfo(file).path());
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(text.toUtf8() + '\n') < 0)
        qFatal("cannot write %s", qPrintable(file));
}
