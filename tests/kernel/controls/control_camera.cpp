// Opens and starts all cameras of the kernel that it finds within a second of the first, tells "ready", and obeys lines:
// "frames" tells how many frames each has delivered so far; the others are for the first camera: "set CODE VALUE", "get CODE", "size WxH" and "sizes",
// each answered by one line. "codes" lists what it can, with ranges. Usage: control_camera TABLE...
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWV4L2Backend.h"

#include <cstdio>
#include <future>
#include <iostream>
#include <QCoreApplication>
#include <QTimer>
#include <string>
#include <thread>

namespace {

/// Returns when the camera has the size, and has done everything that was asked of it before.
void setSize(BWCamera &camera, BWResolution size)
{
    std::promise<void> done;
    camera.setResolution(size, [&done] { done.set_value(); });
    done.get_future().wait();
}

std::string answer(BWCamera &camera, const std::string &verb)
{
    if (verb == "sizes") {
        std::string sizes;
        for (const BWResolution &size : camera.detectedCamera()->cameraDescription()->availableResolutions)
            sizes += size.resolutionString().toStdString() + ' ';
        return sizes;
    }
    if (verb == "size") {
        std::string size;
        std::cin >> size;
        setSize(camera, *BWResolution::fromResolutionString(QString::fromStdString(size)));
        return camera.defaultResolution().resolutionString().toStdString();
    }
    if (verb == "codes") {
        std::string codes;
        for (int code = 0; code <= BWSettingVideoNorm; ++code) {
            if (const auto setting = camera.settingForIdentifier(code))
                codes += std::to_string(code) + ':' + std::to_string(int(setting->min())) + ':'
                    + std::to_string(int(setting->max())) + ' ';
        }
        return codes;
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

bool start(BWCamera &camera)
{
    std::promise<bool> started;
    camera.startWithCompletion([&started](bool success) { started.set_value(success); });
    return started.get_future().get();
}

void obey(const QList<BWCameraPtr> &cameras)
{
    bool ready = true;
    for (const BWCameraPtr &camera : cameras)
        ready = start(*camera) && ready;
    std::cout << (ready ? "ready" : "failed") << std::endl;
    std::string verb;
    while (std::cin >> verb) {
        if (verb == "frames") {
            for (const BWCameraPtr &camera : cameras)
                std::cout << camera->statistics().framesDelivered << ' ';
            std::cout << std::endl;
        } else {
            std::cout << answer(*cameras.constFirst(), verb) << std::endl;
        }
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
    std::thread worker;
    detector.setCameraFoundBlock([&](const BWDetectedCameraPtr &device) {
        manager.addDetectedCamera(device);
        if (manager.cameras().size() == 1)
            QTimer::singleShot(1000, &application, [&] { worker = std::thread(&obey, manager.cameras()); });
    });
    detector.startCamerasDetection();
    const int result = QCoreApplication::exec();
    worker.join();
    return result;
}
