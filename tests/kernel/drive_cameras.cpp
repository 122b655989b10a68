// SPDX-License-Identifier: GPL-3.0-or-later
// Uses the cameras of the kernel as the program does. Prints a line for each event ("found ID", "removed ID", "pending"
// and "settled") and one in answer to each line that it reads:
//   start          starts the first camera that is there: "started" or "failed"
//   frames         how many frames it has delivered so far
//   codes          its controls, each as CODE:MIN:MAX
//   get CODE       the value of a control
//   set CODE VALUE sets a control; the value it then has
//   sizes          its sizes
//   size WxH       sets the size; the size it then has
// Ends with its input. Usage: drive_cameras TABLE...
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWV4L2Backend.h"

#include <future>
#include <iostream>
#include <QCoreApplication>
#include <string>
#include <thread>

namespace {

void say(const std::string &line)
{
    std::cout << line + '\n' << std::flush;
}

/// Returns when the camera has the size, and has done all that was requested before.
void setSize(BWCamera &camera, BWResolution size)
{
    std::promise<void> done;
    camera.setResolution(size, [&done] { done.set_value(); });
    done.get_future().wait();
}

std::string answer(BWCamera &camera, const std::string &verb)
{
    std::string list;
    if (verb == "start") {
        std::promise<bool> started;
        camera.startWithCompletion([&started](bool success) { started.set_value(success); });
        return started.get_future().get() ? "started" : "failed";
    }
    if (verb == "frames")
        return std::to_string(camera.statistics().framesDelivered);
    if (verb == "sizes") {
        for (const BWResolution &size : camera.detectedCamera()->cameraDescription()->availableResolutions)
            list += size.resolutionString().toStdString() + ' ';
        return list;
    }
    if (verb == "codes") {
        for (int code = 0; code <= BWSettingVideoNorm; ++code) {
            if (const auto setting = camera.settingForIdentifier(code))
                list += std::to_string(code) + ':' + std::to_string(int(setting->min())) + ':'
                    + std::to_string(int(setting->max())) + ' ';
        }
        return list;
    }
    if (verb == "size") {
        std::cin >> list;
        setSize(camera, *BWResolution::fromResolutionString(QString::fromStdString(list)));
        return camera.defaultResolution().resolutionString().toStdString();
    }
    int code = 0;
    std::cin >> code;
    if (verb == "set") {
        double value = 0;
        std::cin >> value;
        camera.setSetting(code, value);
        setSize(camera, camera.defaultResolution());
    }
    return std::to_string(int(camera.settingForIdentifier(code)->value()));
}

void obey(const BWCameraManager &manager)
{
    BWCameraPtr camera;
    std::string verb;
    while (std::cin >> verb) {
        if (verb == "start")
            QMetaObject::invokeMethod(
                qApp, [&] { camera = manager.cameras().at(0); }, Qt::BlockingQueuedConnection);
        say(answer(*camera, verb));
    }
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    std::vector<std::unique_ptr<BWCameraBackend>> backends;
    backends.push_back(BWV4L2Backend::create(QCoreApplication::arguments().mid(1)));
    BWCameraDetector detector(BWCameraDetector::supportedDescriptions(), std::move(backends));
    BWCameraManager manager;
    detector.setCameraFoundBlock([&](const BWDetectedCameraPtr &camera) {
        manager.addDetectedCamera(camera);
        say("found " + camera->uniqueIdentifier().toStdString());
    });
    detector.setCameraRemovedBlock([&](const BWDetectedCameraPtr &camera) {
        manager.removeDetectedCamera(camera);
        say("removed " + camera->uniqueIdentifier().toStdString());
    });
    bool pending = false;
    const auto reportPending = [&] {
        if (pending != detector.pendingDevices()) {
            pending = !pending;
            say(pending ? "pending" : "settled");
        }
    };
    detector.setDevicesChangedBlock(reportPending);
    detector.startCamerasDetection();
    reportPending();

    std::thread worker(obey, std::cref(manager));
    const int result = QCoreApplication::exec();
    worker.join();
    return result;
}
