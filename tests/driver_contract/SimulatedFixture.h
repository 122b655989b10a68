#pragma once

#include "BackendFixture.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"

/// A simulated camera of one type and format.
class SimulatedFixture : public BackendFixture {
public:
    explicit SimulatedFixture(BWSimulatedCameraOptions::Type type, BWPixelFormat format)
    {
        m_options.type = type;
        m_options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
        m_options.pixelFormat = format;
    }

    QString name() const override
    {
        return QStringLiteral("simulated %1, pixel format %2")
            .arg(BWSimulatedCameraOptions::typeNames().at(int(m_options.type)))
            .arg(int(*m_options.pixelFormat));
    }
    BWCameraDescriptionPtr description() const override
    {
        return m_options.type == BWSimulatedCameraOptions::Type::Wireless
            ? BWCameraDetector::descriptionForReceptorWirelessMicroscope()
            : BWCameraDetector::descriptionForUltraResolutionMicroscope();
    }
    std::unique_ptr<BWCameraBackend> makeBackend(bool attached) override
    {
        m_options.pluggedIn = attached;
        auto backend = BWSimulatedBackend::create({m_options});
        m_camera = backend->cameras().constFirst();
        return backend;
    }
    void plugIn() override { m_camera->plugIn(); }
    void unplug() override { m_camera->unplug(); }
    void pressButton() override { m_camera->pressButton(); }
    void setInUse(bool inUse) override { m_camera->setInUse(inUse); }
    void pushFrames(int count) override { m_camera->pushFrames(count); }
    int moreThanAllBuffers() const override { return 20; }

private:
    BWSimulatedCameraOptions m_options;
    std::shared_ptr<BWSimulatedCamera> m_camera;
};
