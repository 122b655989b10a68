// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CameraProbe.h"

#include "BWACUDriver/BWCameraBackend.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"

#include <memory>
#include <optional>
#include <QTest>
#include <QThread>

/// One camera of a backend and the hand that holds it, as the contract suite needs them.
class BackendFixture {
public:
    virtual ~BackendFixture() = default;

    /// Shown in the names of the tests.
    virtual QString name() const = 0;

    /// Its type; a device's own description may differ from that in what it can do.
    virtual BWCameraDescriptionPtr description() const = 0;

    /// A new backend; the camera is attached to it or not.
    virtual std::unique_ptr<BWCameraBackend> makeBackend(bool attached) = 0;

    virtual void plugIn() = 0;
    virtual void unplug() = 0;
    virtual bool hasButton() const { return true; }
    virtual void pressButton() = 0;

    /// As if another program held the camera.
    virtual void setInUse(bool inUse) = 0;

    /// Whether the camera captures a frame only when one is pushed, so that frames can be counted. Otherwise it
    /// captures at its own rate.
    virtual bool isPushed() const { return true; }
    /// The streaming camera captures that many frames.
    virtual void pushFrames(int count) = 0;

    /// More frames than the camera has buffers for.
    virtual int moreThanAllBuffers() const = 0;
};

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
            camera->setStallTime(std::chrono::hours(1)); // silence is no stall while nothing is pushed
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

/// What every backend must do. Each test of the suite finds a new backend with an opened camera.
class Contract : public QObject {
    Q_OBJECT

public:
    explicit Contract(BackendFixture &fixture) : m_fixture(fixture) { }

protected:
    BWCamera &camera() { return *m_bench->camera; }
    CameraProbe &probe() { return *m_bench->probe; }
    const BWCameraDescription &description() { return *camera().detectedCamera()->cameraDescription(); }
    /// A size that the camera has and is not set to.
    BWResolution otherSize()
    {
        const QList<BWResolution> &sizes = description().availableResolutions;
        return camera().defaultResolution() == sizes.at(1) ? sizes.at(0) : sizes.at(1);
    }
    /// A camera that runs at its own rate may have captured more than requested.
    bool isCount(std::size_t found, std::size_t expected) const
    {
        return m_fixture.isPushed() ? found == expected : found >= expected;
    }

    BackendFixture &m_fixture;
    std::optional<Bench> m_bench;

private Q_SLOTS:
    void init()
    {
        m_bench.emplace(m_fixture, true);
        QVERIFY(m_bench->openCamera());
        probe().setResolution({640, 480}); // a device keeps the size that the last test has set
    }
    void cleanup() { m_bench.reset(); }
};

/// Runs all of it, with arguments for Qt Test; the number of failures.
int runContract(BackendFixture &fixture, const QStringList &arguments);

/// Its part about snapshots and recordings.
std::unique_ptr<Contract> makeCaptureContract(BackendFixture &fixture);
