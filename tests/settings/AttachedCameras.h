#pragma once

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"

#include <QTest>

/// Simulated cameras that are opened, and pulled out by unplug().
class AttachedCameras {
public:
    using Type = BWSimulatedCameraOptions::Type;

    explicit AttachedCameras(const QList<Type> &types)
    {
        QList<BWSimulatedCameraOptions> options;
        for (const Type type : types) {
            options.append(BWSimulatedCameraOptions());
            options.last().type = type;
            options.last().pacing = BWSimulatedCameraOptions::Pacing::Manual;
        }
        auto backend = BWSimulatedBackend::create(options);
        m_simulated = backend->cameras();
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(std::move(backend));
        m_detector = std::make_unique<BWCameraDetector>(BWCameraDetector::supportedDescriptions(), std::move(backends));
        m_detector->setCameraFoundBlock(
            [this](const BWDetectedCameraPtr &device) { m_manager.addDetectedCamera(device); });
        m_detector->setCameraRemovedBlock(
            [this](const BWDetectedCameraPtr &device) { m_manager.removeDetectedCamera(device); });
        m_detector->startCamerasDetection();
        wait(types.size());
    }

    const QList<BWCameraPtr> &list() const { return m_manager.cameras(); }
    const BWCameraPtr &operator[](qsizetype index) const { return list()[index]; }

    void unplug(qsizetype index)
    {
        const auto count = list().size() - 1;
        m_simulated[index]->unplug();
        wait(count);
    }

private:
    void wait(qsizetype count)
    {
        if (!QTest::qWaitFor([&] { return list().size() == count; }))
            qFatal("%d cameras are attached, not %d", int(list().size()), int(count));
    }

    QList<std::shared_ptr<BWSimulatedCamera>> m_simulated;
    BWCameraManager m_manager;
    std::unique_ptr<BWCameraDetector> m_detector;
};
