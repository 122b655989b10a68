#include "App/Start/BWCameraListing.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTextStream>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

void printCamera(const BWDetectedCamera &camera, QTextStream &out)
{
    const BWCameraDescription &description = *camera.cameraDescription();
    QStringList resolutions;
    for (const BWResolution &resolution : description.availableResolutions)
        resolutions.append(resolution.resolutionString());
    out << description.name << '\n'
        << "  device:      " << camera.uniqueIdentifier() << '\n'
        << "  type:        " << description.identifierForProducts << (description.isBridgeChip ? " (bridge chip)" : "")
        << '\n'
        << "  resolutions: " << resolutions.join(u' ') << '\n'
        << "  controls:\n";
    for (const BWControlInfo &control : camera.open()->controls())
        out << u"    %1 %2 from %3 to %4\n"_s.arg(BWCameraSetting::nameForSettingIdentifier(control.identifier), -24)
                   .arg(control.value, 5)
                   .arg(control.min)
                   .arg(control.max);
}

} // namespace

void BWCameraListing::print(std::vector<std::unique_ptr<BWCameraBackend>> backends, QTextStream &out)
{
    int count = 0;
    BWCameraDetector detector(BWCameraDetector::supportedDescriptions(), std::move(backends));
    detector.setCameraFoundBlock([&](const BWDetectedCameraPtr &camera) {
        ++count;
        printCamera(*camera, out);
    });
    detector.startCamerasDetection();

    // Found cameras come through the event loop; those being prepared get a little time.
    constexpr int patience = 3000; // milliseconds
    QElapsedTimer elapsed;
    elapsed.start();
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!detector.pendingDevices() || elapsed.elapsed() > patience)
            loop.quit();
    });
    poll.start(100);
    loop.exec();
    if (count == 0)
        out << "No camera detected\n";
}
