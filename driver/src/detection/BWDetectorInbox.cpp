#include "detection/BWDetectorInbox.h"

#include <algorithm>
#include <utility>

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
