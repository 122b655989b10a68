#pragma once

#include "BWACUDriver/BWCameraDetector.h"

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <QList>

/// Carries the events of the backends, which come on any thread, to the detector's thread, in order.
///
/// Keeps the promises about devices: found once, removed only after found and once, and a device that goes away before
/// it was handed over is never mentioned. Any thread; shared by the detector and the backends' callbacks, so that an
/// event which comes after the detector is gone falls on the floor.
class BWCameraDetector::Inbox {
public:
    struct Event {
        enum class Kind { Found, Removed };
        Kind kind;
        BWDetectedCameraPtr device;
    };

    /// `wake` is called, on any thread, once for each event that is to be taken.
    explicit Inbox(std::function<void()> wake);

    void found(const BWDetectedCameraPtr &device);
    void removed(const BWDetectedCameraPtr &device);

    std::optional<Event> takeNext();

    /// Whether a found device waits to be taken.
    bool holdsFound() const;

    /// No call of `wake` is running or will come any more.
    void close();

private:
    void add(Event event);

    mutable std::mutex m_mutex;
    std::function<void()> m_wake;
    std::deque<Event> m_events;
    QList<BWDetectedCameraPtr> m_attached;
};
