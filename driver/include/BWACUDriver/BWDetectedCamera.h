#pragma once

#include "BWACUDriver/BWCameraDescription.h"
#include "BWACUDriver/BWCaptureDevice.h"

#include <functional>
#include <memory>

/// One attached device, as the detector reports it. Compared by identity: a device that is unplugged and plugged in
/// again is a new object. Immutable; safe on any thread.
class BWDetectedCamera {
public:
    using OpenFunction = std::function<std::unique_ptr<BWCaptureDevice>()>;

    /// `uniqueIdentifier` tells this device from others for as long as it is attached (a device node, say);
    /// `open` makes the backend's side of a session, without touching the hardware yet.
    BWDetectedCamera(BWCameraDescriptionPtr description, QString uniqueIdentifier, OpenFunction open);

    const BWCameraDescriptionPtr &cameraDescription() const { return m_description; }
    const QString &uniqueIdentifier() const { return m_uniqueIdentifier; }

    std::unique_ptr<BWCaptureDevice> open() const { return m_open(); }

    /// For the log: name and unique identifier.
    QString description() const;

private:
    BWCameraDescriptionPtr m_description;
    QString m_uniqueIdentifier;
    OpenFunction m_open;
};

using BWDetectedCameraPtr = std::shared_ptr<BWDetectedCamera>;
