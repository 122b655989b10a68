// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraBackend.h"

#include <memory>
#include <QList>
#include <QObject>
#include <vector>

/// Hot-plug detection over all backends. Main thread only; the callbacks arrive there through the event loop, never
/// inside startCamerasDetection().
class BWCameraDetector : public QObject {
    Q_OBJECT

public:
    using DeviceCallback = std::function<void(const BWDetectedCameraPtr &)>;

    /// The supported types.
    static BWCameraDescriptionPtr descriptionForDX20();
    static BWCameraDescriptionPtr descriptionForRegularMicroscope();
    static BWCameraDescriptionPtr descriptionForHighResolutionMicroscope();
    static BWCameraDescriptionPtr descriptionForUltraResolutionMicroscope();
    static BWCameraDescriptionPtr descriptionForReceptorWirelessMicroscope();
    /// All of them, in the order in which they are registered.
    static QList<BWCameraDescriptionPtr> supportedDescriptions();

    /// Watches only for devices that fit one of the descriptions.
    BWCameraDetector(QList<BWCameraDescriptionPtr> descriptions,
                     std::vector<std::unique_ptr<BWCameraBackend>> backends);
    ~BWCameraDetector() override;

    /// Called once for each attached device, including those attached before detection started.
    void setCameraFoundBlock(DeviceCallback callback);
    /// Called once for each found device that goes away.
    void setCameraRemovedBlock(DeviceCallback callback);

    /// Called when pendingDevices() or blockedCameras() may return something else.
    void setDevicesChangedBlock(std::function<void()> callback);

    /// Called once, after all callbacks are set.
    void startCamerasDetection();

    /// True while a supported device is attached and still being prepared.
    bool pendingDevices() const;

    /// Attached devices that would be supported if they could be opened.
    QList<BWBlockedCamera> blockedCameras() const;

protected:
    /// Delivers the next event of the inbox.
    void customEvent(QEvent *) override;

private:
    class Inbox;

    QList<BWCameraDescriptionPtr> m_descriptions;
    std::vector<std::unique_ptr<BWCameraBackend>> m_backends;
    const std::shared_ptr<Inbox> m_inbox;
    DeviceCallback m_found;
    DeviceCallback m_removed;
    std::function<void()> m_devicesChanged;
};
