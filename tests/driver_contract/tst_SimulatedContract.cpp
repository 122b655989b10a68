// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Contract.h"

namespace {

/// A simulated camera of one type and format.
class SimulatedFixture : public BackendFixture {
    using Options = BWSimulatedCameraOptions;

public:
    explicit SimulatedFixture(Options::Type type, BWPixelFormat format)
        : m_options{.type = type, .pacing = Options::Pacing::Manual, .pixelFormat = format}
    {
    }

    QString name() const override
    {
        return QStringLiteral("simulated %1, pixel format %2")
            .arg(Options::typeNames().at(int(m_options.type)))
            .arg(int(*m_options.pixelFormat));
    }
    BWCameraDescriptionPtr description() const override
    {
        return m_options.type == Options::Type::Wireless ? BWCameraDetector::descriptionForReceptorWirelessMicroscope()
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
    Options m_options;
    std::shared_ptr<BWSimulatedCamera> m_camera;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    using Type = BWSimulatedCameraOptions::Type;
    int failures = 0;
    for (SimulatedFixture fixture :
         {SimulatedFixture(Type::Ultra, BWPixelFormat::YUYV), SimulatedFixture(Type::Ultra, BWPixelFormat::MJPEG),
          SimulatedFixture(Type::Wireless, BWPixelFormat::YUYV)}) {
        qInfo("With %s", qPrintable(fixture.name()));
        failures += runContract(fixture, QCoreApplication::arguments());
    }
    return failures;
}
