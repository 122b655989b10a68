// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CameraProbe.h"
#include "NotingDevice.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"

#include <memory>
#include <optional>

/// A simulated camera with an opened session on it, without a detector in between.
class OpenedCamera {
    using Options = BWSimulatedCameraOptions;

    std::unique_ptr<BWSimulatedBackend> m_backend;

public:
    /// Its frames are pushed. What it is sent is recorded if notes are given.
    explicit OpenedCamera(Options::Type type, std::optional<BWPixelFormat> format = {},
                          const std::shared_ptr<DeviceNotes> &notes = {})
        : m_backend(
            BWSimulatedBackend::create({{.type = type, .pacing = Options::Pacing::Manual, .pixelFormat = format}})),
          hand(m_backend->cameras().constFirst())
    {
        m_backend->start({BWCameraDetector::descriptionForUltraResolutionMicroscope(),
                          BWCameraDetector::descriptionForRegularMicroscope()},
                         {[this, &notes](const BWDetectedCameraPtr &device) {
                              camera = std::make_shared<BWCamera>(notes ? noting(device, notes) : device);
                          },
                          [](const BWDetectedCameraPtr &) {}});
        probe.emplace(*camera, [this](int count) { hand->pushFrames(count); });
    }

    const std::shared_ptr<BWSimulatedCamera> hand;
    std::shared_ptr<BWCamera> camera;
    std::optional<CameraProbe> probe;
};
