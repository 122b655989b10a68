// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/finding/BWUdevSources.h"

#include "base/BWDriverLog.h"
#include "v4l2/finding/BWVideoNode.h"

#include <cerrno>
#include <cstring>
#include <QFile>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto video = "video4linux";

BWNodeTracker::Time now()
{
    return std::chrono::steady_clock::now();
}

bool isVideo(udev_device *device)
{
    const char *subsystem = udev_device_get_subsystem(device);
    return subsystem && std::strcmp(subsystem, video) == 0;
}

void reportInterface(const QByteArray &sysPath, BWNodeTracker &tracker)
{
    if (const auto interface = BWVideoNode::readInterface(QFile::decodeName(sysPath)))
        tracker.interfaceAppeared(*interface, now());
}

void reportNode(const QByteArray &sysPath, bool initialised, quint64 sequence, BWNodeTracker &tracker)
{
    if (const auto node = BWVideoNode::read(QFile::decodeName(sysPath)))
        tracker.nodeAppeared(*node, initialised, sequence, now());
}

} // namespace

BWUdevSources::BWUdevSources()
    : m_udev(udev_new()),
      m_kernelEvents(listen("kernel")),
      m_udevEvents(listen("udev")),
      m_access(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    // Without inotify, the next attempt to open a node finds its changed permissions, a little later.
    if (m_access >= 0)
        inotify_add_watch(m_access, "/dev", IN_ATTRIB | IN_CREATE);
}

BWUdevSources::~BWUdevSources()
{
    if (m_access >= 0)
        close(m_access);
}

BWUdevSources::Monitor BWUdevSources::listen(const char *source) const
{
    Monitor monitor(udev_monitor_new_from_netlink(m_udev.get(), source));
    if (!monitor || udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), video, nullptr) < 0
        || udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "usb", "usb_interface") < 0
        || udev_monitor_enable_receiving(monitor.get()) < 0) {
        qCWarning(bwDriver) << "Cameras that are plugged in later are not seen: no events from" << source;
        return nullptr;
    }
    return monitor;
}

std::array<pollfd, 3> BWUdevSources::descriptors() const
{
    const auto ofMonitor = [](const Monitor &monitor) {
        return pollfd{monitor ? udev_monitor_get_fd(monitor.get()) : -1, POLLIN, 0};
    };
    return {ofMonitor(m_kernelEvents), ofMonitor(m_udevEvents), pollfd{m_access, POLLIN, 0}};
}

void BWUdevSources::enumerate(BWNodeTracker &tracker) const
{
    const QList<QByteArray> interfaces = BWVideoNode::interfaceFolders();
    const QList<QByteArray> nodes = BWVideoNode::nodeFolders();
    const QList<QByteArray> all = interfaces + nodes;
    tracker.keepOnly({all.begin(), all.end()});
    for (const QByteArray &interface : interfaces)
        reportInterface(interface, tracker);
    for (const QByteArray &node : nodes) {
        const Device device(udev_device_new_from_syspath(m_udev.get(), node.constData()));
        reportNode(node, device && udev_device_get_is_initialized(device.get()) > 0, 0, tracker);
    }
}

void BWUdevSources::readEvents(BWNodeTracker &tracker)
{
    const bool kernelLost = !readMonitor(m_kernelEvents.get(), false, tracker);
    const bool udevLost = !readMonitor(m_udevEvents.get(), true, tracker);
    if (kernelLost || udevLost) {
        qCInfo(bwDriver) << "Events were lost, as too many waited; looking at all cameras again";
        enumerate(tracker);
    }
    readAccess(tracker);
}

bool BWUdevSources::readMonitor(udev_monitor *monitor, bool initialised, BWNodeTracker &tracker)
{
    if (!monitor)
        return true;
    bool complete = true;
    while (true) {
        errno = 0;
        const Device device(udev_monitor_receive_device(monitor));
        if (!device && errno == ENOBUFS) {
            complete = false; // what still waits is older than what was lost, and than what is there now
            continue;
        }
        if (!device)
            return complete;
        const QByteArray sysPath = udev_device_get_syspath(device.get());
        const std::string_view action = udev_device_get_action(device.get());
        const quint64 sequence = udev_device_get_seqnum(device.get());
        if (action == "remove")
            tracker.gone(sysPath, sequence);
        else if (!isVideo(device.get())) {
            if (action == "add" || action == "bind") // by a driver or a program
                reportInterface(sysPath, tracker);
        } else if (action == "add" || initialised)
            reportNode(sysPath, initialised, sequence, tracker);
    }
}

void BWUdevSources::readAccess(BWNodeTracker &tracker) const
{
    alignas(inotify_event) std::array<char, 4096> bytes;
    ssize_t size = 0;
    while (m_access >= 0 && (size = read(m_access, bytes.data(), bytes.size())) > 0) {
        for (const char *at = bytes.data(); at < bytes.data() + size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(at);
            if (event->len > 0 && QByteArray(event->name).startsWith("video"))
                tracker.accessChanged(QByteArray("/dev/") + event->name, now());
            at += sizeof(inotify_event) + event->len;
        }
    }
}
