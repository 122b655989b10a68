#pragma once

#include "BackendFixture.h"

#include "BWACUDriver/BWSimulatedCameras.h"

/// A simulated camera of one type and format.
class SimulatedFixture : public BackendFixture {
public:
    explicit SimulatedFixture(BWSimulatedCameraOptions::Type type, BWPixelFormat format);

    QString name() const override;
    BWCameraDescriptionPtr description() const override;
    std::unique_ptr<BWCameraBackend> makeBackend(bool attached) override;
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
