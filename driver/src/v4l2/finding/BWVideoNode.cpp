// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/finding/BWVideoNode.h"

#include <algorithm>
#include <linux/input-event-codes.h>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The text of an attribute without space around it; null if the file does not exist or cannot be read.
QString attribute(const QString &file)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(source.readAll()).trimmed();
}

/// The name of a link's target, such as the driver's name for DEVICE/driver; null if there is no such link.
QString linkedName(const QString &link)
{
    const QString target = QFile::symLinkTarget(link);
    return target.isEmpty() ? QString() : QFileInfo(target).fileName();
}

/// The folder of the device that a class device, such as a video node, belongs to; null if there is none.
QString parentDevice(const QString &folder)
{
    const QString parent = QFileInfo(folder + "/device"_L1).canonicalFilePath();
    return parent.isEmpty() ? QString() : parent;
}

/// The folder of the USB device that a device belongs to; null if it is not on USB.
QString usbDeviceFolder(const QString &folder)
{
    QString path = QFileInfo(folder).canonicalFilePath();
    while (path.size() > 1) {
        if (QFileInfo::exists(path + "/idVendor"_L1))
            return path;
        path = QFileInfo(path).path();
    }
    return {};
}

/// The socket a USB device is plugged into, such as "usb-0000:00:14.0-1.2": its controller and the ports to it.
QString usbPort(const QString &usbDevice)
{
    // Device folders are nested, from the root hub (usb1 and so on) down; the root hub's is in that of the controller.
    QString hub = usbDevice;
    while (hub.size() > 1 && !QFileInfo(hub).fileName().startsWith("usb"_L1))
        hub = QFileInfo(hub).path();
    return u"usb-%1-%2"_s.arg(QFileInfo(QFileInfo(hub).path()).fileName(), attribute(usbDevice + "/devpath"_L1));
}

QString deviceName(const QString &folder)
{
    const QStringList lines = attribute(folder + "/uevent"_L1).split(u'\n');
    for (const QString &line : lines) {
        if (line.startsWith("DEVNAME="_L1))
            return line.section(u'=', 1);
    }
    return {};
}

void readUsb(BWVideoNode &node, const QString &usbDevice, const QString &interface)
{
    node.usbId = u"%1:%2"_s.arg(attribute(usbDevice + "/idVendor"_L1).toLower(),
                                attribute(usbDevice + "/idProduct"_L1).toLower());
    node.serial = attribute(usbDevice + "/serial"_L1);
    node.port = usbPort(usbDevice);
    node.usbBus = attribute(usbDevice + "/busnum"_L1).toInt();
    node.usbDevice = attribute(usbDevice + "/devnum"_L1).toInt();
    const int number = attribute(interface + "/bInterfaceNumber"_L1).toInt(nullptr, 16);
    if (number > 0)
        node.part = u"if%1"_s.arg(number);
}

QList<QByteArray> folders(const QString &links, const QString &pattern)
{
    QStringList names = QDir(links).entryList({pattern}, QDir::Dirs | QDir::NoDotAndDotDot);
    // video10 comes after video9
    std::stable_sort(names.begin(), names.end(),
                     [](const QString &left, const QString &right) { return left.size() < right.size(); });
    QList<QByteArray> resolved;
    for (const QString &name : std::as_const(names))
        resolved.append(QFile::encodeName(QFileInfo(links + u'/' + name).canonicalFilePath()));
    return resolved;
}

/// `mask` is a bit field as sysfs prints it: hexadecimal words of the size of a long, the highest first.
bool hasBit(const QByteArray &mask, int bit)
{
    constexpr int bitsInWord = 8 * sizeof(long);
    const QList<QByteArray> words = mask.split(' ');
    const qsizetype word = words.size() - 1 - bit / bitsInWord;
    return word >= 0 && (words[word].toULongLong(nullptr, 16) >> (bit % bitsInWord) & 1) != 0;
}

} // namespace

std::optional<BWVideoNode> BWVideoNode::read(const QString &folder)
{
    const QString path = QFileInfo(folder).canonicalFilePath();
    const QString name = deviceName(path);
    if (path.isEmpty() || !name.startsWith("video"_L1))
        return std::nullopt;
    BWVideoNode node;
    node.path = "/dev/" + QFile::encodeName(name);
    node.sysPath = QFile::encodeName(path);
    node.name = attribute(path + "/name"_L1);
    node.index = attribute(path + "/index"_L1).toInt();
    const QString parent = parentDevice(path);
    node.driver = linkedName(parent + "/driver"_L1);
    const QString usbDevice = usbDeviceFolder(path);
    if (!usbDevice.isNull())
        readUsb(node, usbDevice, parent);
    else // one parent may have several cameras
        node.port = u"%1 %2"_s.arg(parent.isNull() ? u"virtual"_s : QFileInfo(parent).fileName(), node.name);
    return node;
}

std::optional<BWVideoNode> BWVideoNode::readInterface(const QString &folder)
{
    if (attribute(folder + "/bInterfaceClass"_L1) != "0e"_L1 || attribute(folder + "/bInterfaceSubClass"_L1) != "01"_L1
        || QDir(folder).exists(u"video4linux"_s))
        return std::nullopt;
    const QString path = QFileInfo(folder).canonicalFilePath();
    BWVideoNode node;
    node.sysPath = QFile::encodeName(path);
    node.driver = linkedName(path + "/driver"_L1);
    const QString usbDevice = usbDeviceFolder(path);
    node.name = attribute(usbDevice + "/product"_L1);
    readUsb(node, usbDevice, path);
    return node;
}

QList<QByteArray> BWVideoNode::nodeFolders()
{
    return folders(u"/sys/class/video4linux"_s, u"video*"_s);
}

QList<QByteArray> BWVideoNode::interfaceFolders()
{
    return folders(u"/sys/bus/usb/devices"_s, u"*:*"_s);
}

QByteArray BWVideoNode::buttonPath() const
{
    const QString node = QFile::decodeName(sysPath);
    const QString device = usbDeviceFolder(node);
    if (device.isNull())
        return {};
    // The camera's own interface first: a device may contain more than one camera.
    QStringList parents{parentDevice(node), device};
    QDirIterator interfaces(device, {QFileInfo(device).fileName() + ":*"_L1}, QDir::Dirs);
    while (interfaces.hasNext())
        parents.append(interfaces.next());
    for (const QString &parent : std::as_const(parents)) {
        const QDir inputs(parent + "/input"_L1);
        for (const QString &input : inputs.entryList({u"input*"_s}, QDir::Dirs)) {
            const QDir folder(inputs.filePath(input));
            if (!hasBit(attribute(folder.filePath(u"capabilities/key"_s)).toLatin1(), KEY_CAMERA))
                continue;
            const QStringList events = folder.entryList({u"event*"_s}, QDir::Dirs);
            if (!events.isEmpty())
                return "/dev/input/" + QFile::encodeName(events.first());
        }
    }
    return {};
}

bool BWVideoNode::isTakenByProgram() const
{
    return driver == "usbfs"_L1;
}

QString BWVideoNode::whyWithoutNode() const
{
    if (driver.isNull())
        return u"no driver has taken it; load it with \"modprobe uvcvideo\""_s;
    return isTakenByProgram() ? u"a program has taken it from its driver; close that program"_s
                              : u"its driver has made none; plug it in again"_s;
}

QString BWVideoNode::identity() const
{
    const QString kind = usbId.isNull() ? driver : usbId;
    const QString place = serial.isEmpty() ? port : serial;
    return part.isNull() ? u"%1 %2"_s.arg(kind, place) : u"%1 %2 %3"_s.arg(kind, place, part);
}
