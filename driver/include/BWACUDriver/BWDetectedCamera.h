// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraStatus.h"
#include "BWACUDriver/BWCaptureDevice.h"
#include "BWACUDriver/BWResolution.h"

#include <functional>
#include <memory>
#include <QList>
#include <QString>
#include <utility>

/// What is known about a type of camera, or about one device of that type. Immutable, shared by pointer.
struct BWCameraDescription {
    QString name; ///< English display name of the type
    QString identifierForCameraType; ///< key of the translated name
    QString identifierForProducts; ///< "wired_ultra", "wired_high", "wired_regular" or "wireless"
    QList<BWResolution> availableResolutions; ///< in the order in which they are offered
    QList<int> acceptedSettings; ///< control codes (BWSettingCode)
    bool isBridgeChip = false; ///< sessions are BWEmpiaCamera objects
    bool hasOwnName = false; ///< a person named this device; the name is not translated

    bool acceptsSetting(int identifier) const { return acceptedSettings.contains(identifier); }
};

using BWCameraDescriptionPtr = std::shared_ptr<const BWCameraDescription>;

/// One attached device, as the detector reports it. Compared by identity: a device that is unplugged and plugged in
/// again is a new object. Immutable; safe on any thread.
class BWDetectedCamera {
public:
    using OpenFunction = std::function<std::unique_ptr<BWCaptureDevice>()>;

    /// `uniqueIdentifier` distinguishes this device from others for as long as it is attached (a device node, say);
    /// `open` makes the backend's side of a session, without touching the hardware yet.
    BWDetectedCamera(BWCameraDescriptionPtr description, QString uniqueIdentifier, OpenFunction open)
        : m_description(std::move(description)),
          m_uniqueIdentifier(std::move(uniqueIdentifier)),
          m_open(std::move(open))
    {
    }

    const BWCameraDescriptionPtr &cameraDescription() const { return m_description; }
    const QString &uniqueIdentifier() const { return m_uniqueIdentifier; }

    std::unique_ptr<BWCaptureDevice> open() const { return m_open(); }

    /// For the log: name and unique identifier.
    QString description() const { return QStringLiteral("%1 (%2)").arg(m_description->name, m_uniqueIdentifier); }

private:
    BWCameraDescriptionPtr m_description;
    QString m_uniqueIdentifier;
    OpenFunction m_open;
};

using BWDetectedCameraPtr = std::shared_ptr<BWDetectedCamera>;

/// An attached device that might be one of the supported cameras, but has been inaccessible since it was attached.
struct BWBlockedCamera {
    QString name; ///< of its entry in the table, or as the device calls itself, or at least its USB numbers
    BWStartProblem problem; ///< never Kind::None

    friend bool operator==(const BWBlockedCamera &, const BWBlockedCamera &) = default;
};
