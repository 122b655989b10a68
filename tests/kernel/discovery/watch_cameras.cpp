// Prints what the backend for the kernel's cameras reports, a line for each event, until its input ends: "found ID",
// "removed ID", "pending" and "settled". Usage: watch_cameras TABLE...
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWV4L2Backend.h"

#include <cstdio>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <unistd.h>

namespace {

void say(const QByteArray &line)
{
    std::printf("%s\n", line.constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    std::vector<std::unique_ptr<BWCameraBackend>> backends;
    backends.push_back(BWV4L2Backend::create(QCoreApplication::arguments().mid(1)));
    BWCameraDetector detector(BWCameraDetector::supportedDescriptions(), std::move(backends));
    detector.setCameraFoundBlock(
        [](const BWDetectedCameraPtr &camera) { say("found " + camera->uniqueIdentifier().toUtf8()); });
    detector.setCameraRemovedBlock(
        [](const BWDetectedCameraPtr &camera) { say("removed " + camera->uniqueIdentifier().toUtf8()); });
    detector.startCamerasDetection();

    QTimer timer;
    bool pending = false;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        if (pending != detector.pendingDevices()) {
            pending = !pending;
            say(pending ? "pending" : "settled");
        }
    });
    timer.start(5);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
