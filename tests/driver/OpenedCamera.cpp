#include "OpenedCamera.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWCameraSession.h"

class OpenedCamera::Session : public BWCamera {
public:
    using BWCamera::BWCamera;
    void setStallTime(std::chrono::milliseconds time) { m_session->setStallTime(time); }
};

OpenedCamera::OpenedCamera(Options::Type type, std::optional<BWPixelFormat> format, Options::Pacing pacing)
{
    Options options;
    options.type = type;
    options.pixelFormat = format;
    options.pacing = pacing;
    m_backend = BWSimulatedBackend::create({options});
    hand = m_backend->cameras().constFirst();
    m_backend->start({BWCameraDetector::descriptionForUltraResolutionMicroscope(),
                      BWCameraDetector::descriptionForRegularMicroscope()},
                     {[this](const BWDetectedCameraPtr &device) { camera = std::make_shared<Session>(device); },
                      [](const BWDetectedCameraPtr &) {}});
    probe.emplace(*camera);
}

bool OpenedCamera::stream(int count)
{
    for (int i = 0; i < count; ++i) {
        const std::size_t before = probe->frames().size();
        hand->pushFrames(1);
        if (!probe->waitForFrames(before + 1))
            return false;
    }
    return true;
}

void OpenedCamera::setStallTime(std::chrono::milliseconds time)
{
    static_cast<Session &>(*camera).setStallTime(time);
}
