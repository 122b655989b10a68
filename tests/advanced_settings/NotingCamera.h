// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "NotingDevice.h"

#include <future>
#include <QTemporaryDir>

/// An opened camera, simulated, that notes what it is sent.
class NotingCamera {
    std::unique_ptr<BWSimulatedBackend> m_backend;
    BWCameraManager m_manager;

public:
    using Type = BWSimulatedCameraOptions::Type;

    explicit NotingCamera(Type type, bool withBridge = true)
        : m_backend(BWSimulatedBackend::create({{.type = type, .pacing = BWSimulatedCameraOptions::Pacing::Manual}}))
    {
        m_backend->start(
            BWCameraDetector::supportedDescriptions(),
            {[&](const BWDetectedCameraPtr &found) {
                 BWCameraDescription description = *found->cameraDescription();
                 description.isBridgeChip = description.isBridgeChip && withBridge;
                 camera = m_manager.addDetectedCamera(noting(
                     std::make_shared<BWDetectedCamera>(std::make_shared<BWCameraDescription>(description),
                                                        QStringLiteral("noting"), [found] { return found->open(); }),
                     notes));
             },
             [](const BWDetectedCameraPtr &) {}});
    }

    /// Both wait until the camera has carried out all requests.
    void start() const
    {
        std::promise<void> done;
        camera->startWithCompletion([&done](bool) { done.set_value(); });
        done.get_future().wait();
    }
    void stop() const
    {
        std::promise<void> done;
        camera->stopWithCompletion([&done] { done.set_value(); });
        done.get_future().wait();
    }
    /// What it was sent since the last call, once it has carried that out.
    QString received() const
    {
        stop();
        return notes->take();
    }

    const std::shared_ptr<DeviceNotes> notes = std::make_shared<DeviceNotes>();
    BWCameraPtr camera;
};

/// The product in use, with settings of its own.
struct ProductBench {
    QTemporaryDir folder;
    BWSettingsFile defaults{folder.filePath(QStringLiteral("settings.conf"))};
    BWConfigManager config{defaults};
    BWProductInUse product{config};
};
