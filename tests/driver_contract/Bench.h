#pragma once

#include "BackendFixture.h"
#include "CameraProbe.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"

#include <optional>
#include <QTest>
#include <QThread>

/// A detector on the fixture's backend, what it has reported, and the opened camera. Main thread.
class Bench {
public:
    /// Starts detection.
    Bench(BackendFixture &fixture, bool attached)
        : detector({fixture.description()}, only(fixture.makeBackend(attached))), m_fixture(fixture)
    {
        const auto noteIn = [this, thread = QThread::currentThread()](QList<BWDetectedCameraPtr> &list) {
            return [this, thread, &list](const BWDetectedCameraPtr &device) {
                calledOnOtherThread |= QThread::currentThread() != thread;
                list.append(device);
            };
        };
        detector.setCameraFoundBlock(noteIn(found));
        detector.setCameraRemovedBlock(noteIn(removed));
        detector.startCamerasDetection();
    }

    /// Waits until the camera is found for the `count`th time, and opens it.
    bool openCamera(int count = 1)
    {
        if (!QTest::qWaitFor([&] { return found.size() >= count; }, 20000))
            return false;
        probe.reset();
        camera = manager.addDetectedCamera(found.at(count - 1));
        if (m_fixture.isPushed())
            camera->setStallTime(std::chrono::hours(1)); // it is right that it says nothing until it is pushed
        probe.emplace(*camera, [this](int frames) { m_fixture.pushFrames(frames); });
        return true;
    }

    BWCameraDetector detector;
    QList<BWDetectedCameraPtr> found;
    QList<BWDetectedCameraPtr> removed;
    bool calledOnOtherThread = false;
    BWCameraManager manager;
    BWCameraPtr camera;
    std::optional<CameraProbe> probe;

private:
    static std::vector<std::unique_ptr<BWCameraBackend>> only(std::unique_ptr<BWCameraBackend> backend)
    {
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(std::move(backend));
        return backends;
    }

    BackendFixture &m_fixture;
};
