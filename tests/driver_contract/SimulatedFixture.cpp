#include "SimulatedFixture.h"

#include "BWACUDriver/BWCameraDetector.h"

SimulatedFixture::SimulatedFixture(BWSimulatedCameraOptions::Type type, BWPixelFormat format)
{
    m_options.type = type;
    m_options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
    m_options.pixelFormat = format;
}

QString SimulatedFixture::name() const
{
    const QString type = BWSimulatedCameraOptions::typeNames().at(static_cast<int>(m_options.type));
    return QStringLiteral("simulated %1 %2")
        .arg(type, *m_options.pixelFormat == BWPixelFormat::MJPEG ? QStringLiteral("MJPEG") : QStringLiteral("YUYV"));
}

BWCameraDescriptionPtr SimulatedFixture::description() const
{
    return m_options.type == BWSimulatedCameraOptions::Type::Wireless
        ? BWCameraDetector::descriptionForReceptorWirelessMicroscope()
        : BWCameraDetector::descriptionForUltraResolutionMicroscope();
}

std::unique_ptr<BWCameraBackend> SimulatedFixture::makeBackend(bool attached)
{
    m_options.pluggedIn = attached;
    auto backend = BWSimulatedBackend::create({m_options});
    m_camera = backend->cameras().constFirst();
    return backend;
}
