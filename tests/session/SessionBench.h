#pragma once

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWManualClock.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Session/BWCameraSession.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "NotingDevice.h"

#include <map>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using State = BWCameraSession::State;
using Type = BWSimulatedCameraOptions::Type;

/// Notes what it is asked, and answers when the test says so.
class RecordingUi : public BWCameraSessionUi {
public:
    void enableCameraMenus() override { calls << u"enableCameraMenus"_s; }
    void updateStateLabel() override { calls << u"updateStateLabel"_s; }
    void updateCameraList(const QList<BWCameraPtr> &list, const BWCameraPtr &current) override
    {
        cameras = list;
        listedCurrent = current;
    }
    void cameraStarted() override { calls << u"cameraStarted"_s; }
    void showResolutions(const QList<BWResolution> &list, BWResolution current) override
    {
        calls << u"showResolutions %1 %2"_s.arg(list.size()).arg(current.resolutionString());
    }
    void enableGrid(bool available) override { calls << (available ? u"enableGrid yes"_s : u"enableGrid no"_s); }
    void updateImageDisplay() override { calls << u"updateImageDisplay"_s; }
    void bringMainWindowToFront() override { calls << u"bringMainWindowToFront"_s; }
    void resetUIToInitial() override { calls << u"resetUIToInitial"_s; }
    void askForProduct(const BWCameraPtr &, std::function<void(const QString &)> chosen) override
    {
        calls << u"askForProduct"_s;
        productAnswer = std::move(chosen);
    }
    void showCameraInUse(const StartQuestion &asked, std::function<void(StartAnswer)> answered) override
    {
        question = asked;
        answer = std::move(answered);
    }
    void endQuestions() override
    {
        productAnswer = {};
        answer = {};
    }
    void showNoCameraWindow() override { calls << u"showNoCameraWindow"_s; }
    void hideNoCameraWindow() override { }
    void openNoCameraSheet(std::function<void()> end) override
    {
        calls << u"openNoCameraSheet"_s;
        sheetTerminate = std::move(end);
    }
    void endNoCameraSheet() override { }
    void hideAuxiliaryWindows() override { calls << u"hideAuxiliaryWindows"_s; }
    void terminate() override
    {
        calls << u"terminate"_s;
        if (quit)
            quit();
    }

    QStringList calls;
    QList<BWCameraPtr> cameras;
    BWCameraPtr listedCurrent;
    std::function<void(const QString &)> productAnswer;
    StartQuestion question;
    std::function<void(StartAnswer)> answer; // null while no question is open
    std::function<void()> sheetTerminate;
    std::function<void()> quit;
};

inline BWSimulatedCameraOptions cameraOf(Type type, bool pluggedIn = true)
{
    BWSimulatedCameraOptions options;
    options.type = type;
    options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
    options.pluggedIn = pluggedIn;
    return options;
}

/// The session on simulated cameras that note what they are sent, with a clock moved by hand.
struct Bench {
    explicit Bench(const QList<BWSimulatedCameraOptions> &cameras)
        : config(defaults, [this] {
              const BWCameraPtr camera = session ? session->currentCamera() : nullptr;
              return camera ? camera->identifierForProducts() : QString();
          })
    {
        auto backend = BWSimulatedBackend::create(cameras, clock);
        hands = backend->cameras();
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(std::move(backend));
        session = std::make_unique<BWCameraSession>(
            manager, config, product, ui, [this](BWCamera &) { ++prepared; }, clock);
        detector = std::make_unique<BWCameraDetector>(BWCameraDetector::supportedDescriptions(), std::move(backends));
        for (int i = 0; i < cameras.size(); ++i) {
            notes << std::make_shared<DeviceNotes>();
            notes.last()->allCalls = true;
        }
        detector->setCameraFoundBlock([this](const BWDetectedCameraPtr &camera) {
            const int number = camera->uniqueIdentifier().section(u':', 1).toInt();
            session->cameraFound(m_noting[camera] = noting(camera, notes[number - 1]));
        });
        detector->setCameraRemovedBlock(
            [this](const BWDetectedCameraPtr &camera) { session->cameraRemoved(m_noting[camera]); });
        detector->startCamerasDetection();
        session->waitForCamera();
    }

    ~Bench()
    {
        for (const auto &each : notes)
            each->letGo();
    }

    QString currentType() const
    {
        return session->currentCamera() ? session->currentCamera()->identifierForProducts() : QString();
    }

    QTemporaryDir folder;
    BWSettingsFile defaults{folder.filePath(u"settings.conf"_s)};
    BWManualClock clock;
    RecordingUi ui;
    BWConfigManager config;
    BWProductInUse product{config};
    BWCameraManager manager;
    std::unique_ptr<BWCameraSession> session;
    std::unique_ptr<BWCameraDetector> detector;
    QList<std::shared_ptr<BWSimulatedCamera>> hands;
    QList<std::shared_ptr<DeviceNotes>> notes;
    int prepared = 0;

private:
    std::map<BWDetectedCameraPtr, BWDetectedCameraPtr> m_noting;
};
