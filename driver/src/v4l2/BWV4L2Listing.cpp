// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWV4L2Backend.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"
#include "v4l2/device/BWVideoFormat.h"
#include "v4l2/finding/BWCameraMaker.h"
#include "v4l2/finding/BWNodeAccess.h"

#include <cerrno>
#include <QFile>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Node = BWV4L2Listing::Node;

Node basics(const BWVideoNode &node)
{
    Node listed;
    listed.path = node.path.isNull() ? QString() : QFile::decodeName(node.path);
    listed.name = node.name;
    listed.driver = node.driver;
    listed.usbId = node.usbId;
    listed.serial = node.serial;
    listed.port = node.port;
    return listed;
}

BWV4L2Listing::Control listControl(const BWVideoControl &control)
{
    BWV4L2Listing::Control listed;
    const BWControlInfo &info = control.info;
    listed.name = BWCameraSetting::nameForSettingIdentifier(info.identifier);
    listed.id = control.id;
    listed.min = info.min;
    listed.max = info.max;
    listed.step = info.step;
    listed.defaultValue = info.defaultValue;
    listed.value = info.value;
    for (const BWVideoMenuEntry &entry : control.menu)
        listed.menu.append(u"%1 %2"_s.arg(entry.value).arg(entry.name));
    return listed;
}

void addAbilities(Node &listed, const BWVideoAbilities &abilities)
{
    if (listed.driver.isNull())
        listed.driver = abilities.driver;
    for (const BWVideoMode &mode : abilities.modes)
        listed.modes.append({BWVideoFormat::name(mode.fourcc), mode.pixelFormat != BWPixelFormat::None, mode.resolution,
                             mode.framesPerSecond});
    for (const BWVideoControl &control : abilities.controls)
        listed.controls.append(listControl(control));
    constexpr std::array names{"NTSC"_L1, "PAL"_L1, "SECAM"_L1};
    for (std::size_t norm = 0; norm < names.size(); ++norm) {
        if (abilities.norms[norm])
            listed.norms.append(names[norm]);
    }
}

void addButton(Node &listed, const BWVideoNode &node)
{
    const QByteArray button = node.buttonPath();
    if (button.isNull())
        return;
    listed.button = QFile::decodeName(button);
    if (access(button.constData(), R_OK) != 0)
        listed.problems.append(u"the button is heard only while the program's window has the keyboard: %1"_s.arg(
            BWNodeAccess::problem(button, errno)));
}

Node listNode(const BWVideoNode &node, const BWCameraMaker &maker)
{
    Node listed = basics(node);
    if (node.index != 0) {
        listed.why = u"it is a further node of its camera, for metadata and the like"_s;
        return listed;
    }
    listed.heldBy = BWNodeAccess::programHolding(node.path);
    int error = 0;
    const std::optional<BWVideoAbilities> abilities = maker.read(node, error);
    if (!abilities) {
        listed.problems.append(BWNodeAccess::problem(node.path, error));
        return listed;
    }
    addAbilities(listed, *abilities);
    const BWCameraKind kind = maker.kindOf(node, *abilities);
    listed.why = kind.why;
    if (const auto description = kind.describe(*abilities, BWCameraDetector::supportedDescriptions())) {
        listed.type = description->name;
        listed.isBridgeChip = description->isBridgeChip;
        addButton(listed, node);
    }
    return listed;
}

} // namespace

QList<Node> BWV4L2Listing::list(const QStringList &tables)
{
    const BWCameraMaker maker(BWCameraTable::read(tables), BWCameraDetector::supportedDescriptions());
    QList<Node> nodes;
    const QList<QByteArray> folders = BWVideoNode::nodeFolders();
    for (const QByteArray &folder : folders) {
        if (const auto node = BWVideoNode::read(QFile::decodeName(folder)))
            nodes.append(listNode(*node, maker));
    }
    const QList<QByteArray> interfaces = BWVideoNode::interfaceFolders();
    for (const QByteArray &folder : interfaces) {
        if (const auto interface = BWVideoNode::readInterface(QFile::decodeName(folder))) {
            nodes.append(basics(*interface));
            nodes.last().name = maker.nameOf(*interface);
            nodes.last().problems.append(interface->whyWithoutNode());
        }
    }
    return nodes;
}
