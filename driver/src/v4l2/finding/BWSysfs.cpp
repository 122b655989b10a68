#include "v4l2/finding/BWSysfs.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QString BWSysfs::attribute(const QString &file)
{
    QFile attribute(file);
    if (!attribute.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(attribute.readAll()).trimmed();
}

QString BWSysfs::linkedName(const QString &link)
{
    const QString target = QFile::symLinkTarget(link);
    return target.isEmpty() ? QString() : QFileInfo(target).fileName();
}

QString BWSysfs::parentDevice(const QString &folder)
{
    const QString parent = QFileInfo(folder + "/device"_L1).canonicalFilePath();
    return parent.isEmpty() ? QString() : parent;
}

QString BWSysfs::usbDevice(const QString &folder)
{
    QString path = QFileInfo(folder).canonicalFilePath();
    while (path.size() > 1) {
        if (QFileInfo::exists(path + "/idVendor"_L1))
            return path;
        path = QFileInfo(path).path();
    }
    return {};
}

QString BWSysfs::usbPort(const QString &usbDevice)
{
    // Device folders are nested along the way from the root hub, usb1 and so on, whose own folder lies in that of the
    // controller.
    QString hub = usbDevice;
    while (hub.size() > 1 && !QFileInfo(hub).fileName().startsWith("usb"_L1))
        hub = QFileInfo(hub).path();
    return u"usb-%1-%2"_s.arg(QFileInfo(QFileInfo(hub).path()).fileName(), attribute(usbDevice + "/devpath"_L1));
}
