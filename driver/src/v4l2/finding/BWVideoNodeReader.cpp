#include "v4l2/finding/BWVideoNodeReader.h"

#include "v4l2/finding/BWSysfs.h"

#include <algorithm>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QString deviceName(const QString &folder)
{
    const QStringList lines = BWSysfs::attribute(folder + "/uevent"_L1).split(u'\n');
    for (const QString &line : lines) {
        if (line.startsWith("DEVNAME="_L1))
            return line.section(u'=', 1);
    }
    return {};
}

void readUsb(BWVideoNode &node, const QString &usbDevice, const QString &interface)
{
    node.usbId = u"%1:%2"_s.arg(BWSysfs::attribute(usbDevice + "/idVendor"_L1).toLower(),
                                BWSysfs::attribute(usbDevice + "/idProduct"_L1).toLower());
    node.serial = BWSysfs::attribute(usbDevice + "/serial"_L1);
    node.port = BWSysfs::usbPort(usbDevice);
    node.usbBus = BWSysfs::attribute(usbDevice + "/busnum"_L1).toInt();
    node.usbDevice = BWSysfs::attribute(usbDevice + "/devnum"_L1).toInt();
    const int number = BWSysfs::attribute(interface + "/bInterfaceNumber"_L1).toInt(nullptr, 16);
    if (number > 0)
        node.part = u"if%1"_s.arg(number);
}

QList<QByteArray> folders(const QString &links, const QString &pattern)
{
    QStringList names = QDir(links).entryList({pattern}, QDir::Dirs | QDir::NoDotAndDotDot);
    // video10 after video9
    std::stable_sort(names.begin(), names.end(),
                     [](const QString &left, const QString &right) { return left.size() < right.size(); });
    QList<QByteArray> resolved;
    for (const QString &name : std::as_const(names))
        resolved.append(QFile::encodeName(QFileInfo(links + u'/' + name).canonicalFilePath()));
    return resolved;
}

} // namespace

std::optional<BWVideoNode> BWVideoNodeReader::read(const QString &folder)
{
    const QString path = QFileInfo(folder).canonicalFilePath();
    const QString name = deviceName(path);
    if (path.isEmpty() || !name.startsWith("video"_L1))
        return std::nullopt;
    BWVideoNode node;
    node.path = "/dev/" + QFile::encodeName(name);
    node.sysPath = QFile::encodeName(path);
    node.name = BWSysfs::attribute(path + "/name"_L1);
    node.index = BWSysfs::attribute(path + "/index"_L1).toInt();
    const QString parent = BWSysfs::parentDevice(path);
    node.driver = BWSysfs::linkedName(parent + "/driver"_L1);
    const QString usbDevice = BWSysfs::usbDevice(path);
    if (!usbDevice.isNull())
        readUsb(node, usbDevice, parent);
    else // one parent may have several cameras
        node.port = u"%1 %2"_s.arg(parent.isNull() ? u"virtual"_s : QFileInfo(parent).fileName(), node.name);
    return node;
}

std::optional<BWVideoNode> BWVideoNodeReader::readInterface(const QString &folder)
{
    if (BWSysfs::attribute(folder + "/bInterfaceClass"_L1) != "0e"_L1
        || BWSysfs::attribute(folder + "/bInterfaceSubClass"_L1) != "01"_L1 || QDir(folder).exists(u"video4linux"_s))
        return std::nullopt;
    const QString path = QFileInfo(folder).canonicalFilePath();
    BWVideoNode node;
    node.sysPath = QFile::encodeName(path);
    node.driver = BWSysfs::linkedName(path + "/driver"_L1);
    const QString usbDevice = BWSysfs::usbDevice(path);
    node.name = BWSysfs::attribute(usbDevice + "/product"_L1);
    readUsb(node, usbDevice, path);
    return node;
}

QList<QByteArray> BWVideoNodeReader::nodeFolders()
{
    return folders(u"/sys/class/video4linux"_s, u"video*"_s);
}

QList<QByteArray> BWVideoNodeReader::interfaceFolders()
{
    return folders(u"/sys/bus/usb/devices"_s, u"*:*"_s);
}
