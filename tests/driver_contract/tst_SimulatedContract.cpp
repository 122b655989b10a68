#include "Contract.h"
#include "SimulatedFixture.h"

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    using Type = BWSimulatedCameraOptions::Type;
    int failures = 0;
    for (SimulatedFixture fixture :
         {SimulatedFixture(Type::Ultra, BWPixelFormat::YUYV), SimulatedFixture(Type::Ultra, BWPixelFormat::MJPEG),
          SimulatedFixture(Type::Wireless, BWPixelFormat::YUYV)}) {
        qInfo("With %s", qPrintable(fixture.name()));
        for (const auto &contract : {makeSessionContract, makeCaptureContract})
            failures += QTest::qExec(contract(fixture).get(), argc, argv);
    }
    return failures;
}
