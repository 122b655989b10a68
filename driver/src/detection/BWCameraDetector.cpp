// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"

#include "base/BWDriverLog.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <optional>
#include <QCoreApplication>
#include <QEvent>
#include <utility>

/// Passes the events of the backends, which arrive on any thread, to the detector's thread, in order.
///
/// Guarantees that a device is reported found once, removed once and only after it was found, and not at all if it goes
/// away before it was delivered. Any thread; shared by the detector and the backends' callbacks, so that an event which
/// arrives after the detector is gone is dropped.
class BWCameraDetector::Inbox {
public:
    struct Event {
        enum class Kind { Found, Removed };
        Kind kind;
        BWDetectedCameraPtr device;
    };

    /// `wake` is called, on any thread, at least once for each event to be taken.
    explicit Inbox(std::function<void()> wake);

    void found(const BWDetectedCameraPtr &device);
    void removed(const BWDetectedCameraPtr &device);
    void changed();

    std::optional<Event> takeNext();

    /// Whether a found device waits to be taken.
    bool holdsFound() const;

    /// Afterwards no call of `wake` runs or starts.
    void close();

private:
    void add(Event event);

    mutable std::mutex m_mutex;
    std::function<void()> m_wake;
    std::deque<Event> m_events;
    QList<BWDetectedCameraPtr> m_attached;
};

BWCameraDetector::Inbox::Inbox(std::function<void()> wake) : m_wake(std::move(wake)) { }

void BWCameraDetector::Inbox::found(const BWDetectedCameraPtr &device)
{
    const std::lock_guard lock(m_mutex);
    if (m_attached.contains(device))
        return;
    m_attached.append(device);
    add({Event::Kind::Found, device});
}

void BWCameraDetector::Inbox::removed(const BWDetectedCameraPtr &device)
{
    const std::lock_guard lock(m_mutex);
    if (!m_attached.removeOne(device))
        return;
    const auto waiting = std::find_if(m_events.begin(), m_events.end(), [&device](const Event &event) {
        return event.kind == Event::Kind::Found && event.device == device;
    });
    if (waiting != m_events.end())
        m_events.erase(waiting);
    else
        add({Event::Kind::Removed, device});
}

void BWCameraDetector::Inbox::changed()
{
    const std::lock_guard lock(m_mutex);
    if (m_wake)
        m_wake();
}

std::optional<BWCameraDetector::Inbox::Event> BWCameraDetector::Inbox::takeNext()
{
    const std::lock_guard lock(m_mutex);
    if (m_events.empty())
        return std::nullopt;
    Event event = std::move(m_events.front());
    m_events.pop_front();
    return event;
}

bool BWCameraDetector::Inbox::holdsFound() const
{
    const std::lock_guard lock(m_mutex);
    return std::any_of(m_events.begin(), m_events.end(),
                       [](const Event &event) { return event.kind == Event::Kind::Found; });
}

void BWCameraDetector::Inbox::close()
{
    const std::lock_guard lock(m_mutex);
    m_wake = nullptr;
    m_events.clear();
}

void BWCameraDetector::Inbox::add(Event event)
{
    if (!m_wake)
        return;
    m_events.push_back(std::move(event));
    m_wake();
}

BWCameraDetector::BWCameraDetector(QList<BWCameraDescriptionPtr> descriptions,
                                   std::vector<std::unique_ptr<BWCameraBackend>> backends)
    : m_descriptions(std::move(descriptions)), m_backends(std::move(backends)), m_inbox(std::make_shared<Inbox>([this] {
          QCoreApplication::postEvent(this, new QEvent(QEvent::User)); // the device itself waits in the inbox
      }))
{
}

BWCameraDetector::~BWCameraDetector()
{
    // Closed first, so that no backend reaches a half destroyed detector.
    m_inbox->close();
    m_backends.clear();
}

void BWCameraDetector::setCameraFoundBlock(DeviceCallback callback)
{
    m_found = std::move(callback);
}

void BWCameraDetector::setCameraRemovedBlock(DeviceCallback callback)
{
    m_removed = std::move(callback);
}

void BWCameraDetector::setDevicesChangedBlock(std::function<void()> callback)
{
    m_devicesChanged = std::move(callback);
}

void BWCameraDetector::startCamerasDetection()
{
    for (const auto &backend : m_backends) {
        backend->start(m_descriptions,
                       {[inbox = m_inbox](const BWDetectedCameraPtr &device) { inbox->found(device); },
                        [inbox = m_inbox](const BWDetectedCameraPtr &device) { inbox->removed(device); },
                        [inbox = m_inbox] { inbox->changed(); }});
    }
}

bool BWCameraDetector::pendingDevices() const
{
    // The backends first: a device reported in between is then found in the inbox.
    return std::any_of(m_backends.begin(), m_backends.end(),
                       [](const auto &backend) { return backend->pendingDevices(); })
        || m_inbox->holdsFound();
}

QList<BWBlockedCamera> BWCameraDetector::blockedCameras() const
{
    QList<BWBlockedCamera> blocked;
    for (const auto &backend : m_backends)
        blocked += backend->blockedCameras();
    return blocked;
}

void BWCameraDetector::customEvent(QEvent *)
{
    if (const std::optional<Inbox::Event> event = m_inbox->takeNext()) {
        const bool found = event->kind == Inbox::Event::Kind::Found;
        qCInfo(bwDriver).noquote() << (found ? "Camera attached:" : "Camera gone:") << event->device->description();
        const DeviceCallback callback = found ? m_found : m_removed;
        if (callback)
            callback(event->device);
    }
    if (m_devicesChanged)
        m_devicesChanged();
}
