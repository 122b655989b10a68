#pragma once

#include "Bench.h"

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
    /// A camera that runs at its own rate may have captured more than was asked for.
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

/// Detection, start and stop, size and controls, frames, unplugging.
std::unique_ptr<Contract> makeSessionContract(BackendFixture &fixture);
/// Snapshots and recordings.
std::unique_ptr<Contract> makeCaptureContract(BackendFixture &fixture);
