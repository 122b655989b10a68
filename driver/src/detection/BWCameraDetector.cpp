#include "BWACUDriver/BWCameraDetector.h"

#include "base/BWDriverLog.h"
#include "detection/BWDetectorInbox.h"

#include <algorithm>
#include <QCoreApplication>
#include <QEvent>
#include <utility>

BWCameraDetector::BWCameraDetector(QList<BWCameraDescriptionPtr> descriptions,
                                   std::vector<std::unique_ptr<BWCameraBackend>> backends)
    : m_descriptions(std::move(descriptions)), m_backends(std::move(backends)), m_inbox(std::make_shared<Inbox>([this] {
          QCoreApplication::postEvent(this, new QEvent(QEvent::User)); // the device itself waits in the inbox
      }))
{
}

BWCameraDetector::~BWCameraDetector()
{
    // Closed first, so that no backend finds a half destroyed detector.
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

void BWCameraDetector::startCamerasDetection()
{
    for (const auto &backend : m_backends) {
        backend->start(m_descriptions,
                       {[inbox = m_inbox](const BWDetectedCameraPtr &device) { inbox->found(device); },
                        [inbox = m_inbox](const BWDetectedCameraPtr &device) { inbox->removed(device); }});
    }
}

bool BWCameraDetector::pendingDevices() const
{
    // The backends first: a device that is handed over in between is then seen in the inbox.
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
    const std::optional<Inbox::Event> event = m_inbox->takeNext();
    if (!event)
        return;
    const bool found = event->kind == Inbox::Event::Kind::Found;
    qCInfo(bwDriver).noquote() << (found ? "Camera attached:" : "Camera gone:") << event->device->description();
    const DeviceCallback callback = found ? m_found : m_removed;
    if (callback)
        callback(event->device);
}
