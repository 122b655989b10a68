// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"

#include <memory>
#include <optional>

/// Simulated cameras that are opened, and pulled out by unplug().
class AttachedCameras {
public:
    using Type = BWSimulatedCameraOptions::Type;

    explicit AttachedCameras(const QList<Type> &types, std::optional<BWPixelFormat> format = {})
    {
        QList<BWSimulatedCameraOptions> options;
        for (const Type type : types)
            options.append({.type = type, .pacing = BWSimulatedCameraOptions::Pacing::Manual, .pixelFormat = format});
        m_backend = BWSimulatedBackend::create(options);
        m_backend->start(BWCameraDetector::supportedDescriptions(),
                         {[this](const BWDetectedCameraPtr &device) { m_manager.addDetectedCamera(device); },
                          [this](const BWDetectedCameraPtr &device) { m_manager.removeDetectedCamera(device); }});
    }

    const QList<BWCameraPtr> &list() const { return m_manager.cameras(); }
    const BWCameraPtr &operator[](qsizetype index) const { return list()[index]; }
    BWSimulatedCamera &hand(qsizetype index) const { return *m_backend->cameras()[index]; }

    void unplug(qsizetype index) const { hand(index).unplug(); }

private:
    BWCameraManager m_manager;
    std::unique_ptr<BWSimulatedBackend> m_backend;
};
