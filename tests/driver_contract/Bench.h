#pragma once

#include "BackendFixture.h"
#include "CameraProbe.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"

#include <optional>
#include <QList>

/// A detector on the fixture's backend, what it has reported, and the opened camera. Main thread.
class Bench {
public:
    /// Starts detection.
    Bench(BackendFixture &fixture, bool attached);

    /// Waits until the attached camera is found, and opens it.
    bool openCamera();

    /// Pushes frames one after the other, waiting for each to be delivered.
    bool stream(int count);

    BackendFixture &fixture;
    BWCameraDetector detector;
    QList<BWDetectedCameraPtr> found;
    QList<BWDetectedCameraPtr> removed;
    bool calledOnOtherThread = false;
    BWCameraManager manager;
    BWCameraPtr camera;
    std::optional<CameraProbe> probe;
};
