#pragma once

#include "BWACUDriver/BWCameraBackend.h"
#include "v4l2/finding/BWCameraMaker.h"

#include <chrono>
#include <map>
#include <optional>
#include <QHash>
#include <QSet>

/// Follows the video nodes of this computer from their appearing to their going, and reports those that are cameras.
///
/// A node becomes a camera once udev has set it up and it may be opened, which can come a moment later. Hears of the
/// same event from the kernel and from udev, in any order and perhaps too late; the kernel's number of the event
/// tells what is old. One thread; the caller brings the time.
class BWNodeTracker {
public:
    using Time = std::chrono::steady_clock::time_point;
    /// How long a device counts as being prepared.
    static constexpr std::chrono::seconds patience{10};

    /// `udevRuns`: without it nobody sets nodes up, and they are taken as they are.
    BWNodeTracker(BWCameraMaker maker, BWCameraBackend::Events events, std::function<bool()> udevRuns);

    /// A USB interface of a camera, which will get its video node when the driver is ready. May be told again when a
    /// driver has taken it.
    void interfaceAppeared(const BWVideoNode &usb, Time now);
    /// `initialised`: udev has set the node up. `sequence`: the event's number, 0 for a node that was found there.
    void nodeAppeared(const BWVideoNode &node, bool initialised, quint64 sequence, Time now);
    /// A node's or interface's folder in sysfs is gone.
    void gone(const QByteArray &sysPath, quint64 sequence);
    /// Everything that is there: for when events were lost.
    void keepOnly(const QSet<QByteArray> &sysPaths);
    /// A device node's permissions may have changed.
    void accessChanged(const QByteArray &path, Time now);

    /// Tries what is due. Reports found cameras.
    void advance(Time now);
    /// When to call advance() next; nothing while there is nothing to wait for.
    std::optional<Time> nextTime() const;

    /// Whether a device is being prepared that may become a camera.
    bool pending(Time now) const;
    /// Devices for which nobody waits any more, because something keeps us from opening them.
    QList<BWBlockedCamera> blocked() const;

private:
    struct Entry {
        BWVideoNode node;
        bool isInterface = false; ///< there is no node yet
        bool initialised = false;
        bool settled = false; ///< found, or not wanted
        bool complained = false;
        int error = 0; ///< of the last try
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
    QHash<QByteArray, quint64> m_lastGone; ///< numbers of events
    QHash<QString, QByteArray> m_known; ///< device node that a camera had last
};
