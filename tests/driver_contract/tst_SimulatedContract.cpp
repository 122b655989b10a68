#include "CaptureContract.h"
#include "SessionContract.h"
#include "SimulatedFixture.h"

#include <array>
#include <QCoreApplication>
#include <QTest>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    using Type = BWSimulatedCameraOptions::Type;
    std::array fixtures{
        SimulatedFixture(Type::Ultra, BWPixelFormat::YUYV),
        SimulatedFixture(Type::Ultra, BWPixelFormat::MJPEG),
        SimulatedFixture(Type::Wireless, BWPixelFormat::YUYV),
    };
    int failures = 0;
    for (SimulatedFixture &fixture : fixtures) {
        qInfo("With %s", qPrintable(fixture.name()));
        SessionContract session(fixture);
        failures += QTest::qExec(&session, argc, argv);
        CaptureContract capture(fixture);
        failures += QTest::qExec(&capture, argc, argv);
    }
    return failures;
}
