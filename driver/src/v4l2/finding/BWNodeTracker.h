// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraBackend.h"
#include "v4l2/finding/BWCameraMaker.h"

#include <chrono>
#include <map>
#include <optional>
#include <QHash>
#include <QSet>

/// Follows the video nodes of this computer while they exist, and reports those that are cameras.
///
/// A node becomes a camera once udev has set it up and it may be opened, which can take a moment longer. The kernel and
/// udev report the same events, in any order and perhaps too late; the kernel's number of an event shows which are old.
/// One thread; the caller supplies the time.
class BWNodeTracker {
public:
    using Time = std::chrono::steady_clock::time_point;
    /// How long a device counts as being set up.
    static constexpr std::chrono::seconds patience{10};

    /// `udevRuns`: without udev nodes are used as they are.
    BWNodeTracker(BWCameraMaker maker, BWCameraBackend::Events events, std::function<bool()> udevRuns);

    /// A USB interface of a camera, which gets its video node when the driver is ready. May be reported again when a
    /// driver has taken it.
    void interfaceAppeared(const BWVideoNode &usb, Time now);
    /// `initialised`: udev has set the node up. `sequence`: the event's number, 0 for a node that was already there.
    void nodeAppeared(const BWVideoNode &node, bool initialised, quint64 sequence, Time now);
    /// The folder of a node or interface in sysfs is gone.
    void gone(const QByteArray &sysPath, quint64 sequence);
    /// Everything that is still there: call this when events were lost.
    void keepOnly(const QSet<QByteArray> &sysPaths);
    /// A device node's permissions may have changed.
    void accessChanged(const QByteArray &path, Time now);

    /// Makes the attempts that are due. Reports cameras.
    void advance(Time now);
    /// When to call advance() next; nothing if there is nothing to wait for.
    std::optional<Time> nextTime() const;

    /// Whether a device is being set up that may become a camera.
    bool pending(Time now) const;
    /// Devices that waiting is unlikely to make usable, because something prevents opening them.
    QList<BWBlockedCamera> blocked() const;

private:
    struct Entry {
        BWVideoNode node;
        bool isInterface = false; ///< there is no node yet
        bool initialised = false;
        bool settled = false; ///< reported, or not a camera of ours
        bool complained = false;
        int error = 0; ///< of the last attempt
        quint64 sequence = 0;
        Time since;
        Time next;
        BWDetectedCameraPtr camera;
    };

    bool isAttempted(const Entry &entry, Time now) const;
    void attempt(Entry &entry);
    void settle(Entry &entry, const BWVideoAbilities &abilities);
    static BWStartProblem problemOf(const Entry &entry);
    void complain(Entry &entry) const;
    QString uniqueIdentifier(const BWVideoNode &node) const;
    void drop(std::map<QByteArray, Entry>::iterator entry);

    BWCameraMaker m_maker;
    BWCameraBackend::Events m_events;
    std::function<bool()> m_udevRuns;
    std::map<QByteArray, Entry> m_entries; ///< by folder in sysfs
    QHash<QByteArray, quint64> m_lastGone; ///< numbers of the events
    QHash<QString, QByteArray> m_known; ///< the last device node of a camera
};
