#pragma once

#include "CameraProbe.h"

#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/BWSimulatedCameras.h"

#include <memory>
#include <optional>

/// A simulated camera with an opened session on it, without a detector in between.
class OpenedCamera {
public:
    using Options = BWSimulatedCameraOptions;

    /// Its frames are pushed, unless the pacing says otherwise.
    explicit OpenedCamera(Options::Type type, std::optional<BWPixelFormat> format = {},
                          Options::Pacing pacing = Options::Pacing::Manual);

    /// Pushes frames one after the other, waiting for each to be delivered.
    bool stream(int count);

    /// Restarts a silent stream after that time already.
    void setStallTime(std::chrono::milliseconds time);

private:
    class Session;

    std::unique_ptr<BWSimulatedBackend> m_backend;

public:
    std::shared_ptr<BWSimulatedCamera> hand;
    std::shared_ptr<BWCamera> camera;
    std::optional<CameraProbe> probe;
};
