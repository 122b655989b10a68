// SPDX-License-Identifier: GPL-3.0-or-later
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

/// Notes what the session reports, and answers when the test says so.
class RecordingUi : public QObject {
public:
    void watch(BWCameraSession &session)
    {
        using Session = BWCameraSession;
        note(session, &Session::statusChanged, u"statusChanged"_s);
        note(session, &Session::starting, u"starting"_s);
        note(session, &Session::started, u"started"_s);
        note(session, &Session::cameraGone, u"cameraGone"_s);
        note(session, &Session::productUnknown, u"productUnknown"_s);
        connect(&session, &Session::cameraAdded, this, [this] { ++prepared; });
        connect(&session, &Session::camerasChanged, this, [this, &session] { cameras = session.cameras(); });
        connect(&session, &Session::noCamera, this,
                [this](bool hadCamera) { calls << (hadCamera ? u"noCamera any more"_s : u"noCamera"_s); });
        connect(&session, &Session::startFailed, this, [this, &session](const Session::StartQuestion &asked) {
            question = asked;
            answer = [&session](Session::StartAnswer given) { session.answerStartQuestion(given); };
        });
        connect(&session, &Session::questionsWithdrawn, this, [this] { answer = {}; });
        connect(&session, &Session::quitRequested, this, [this] {
            calls << u"quitRequested"_s;
            if (quit)
                quit();
        });
    }

    QStringList calls;
    QList<BWCameraPtr> cameras;
    int prepared = 0;
    BWCameraSession::StartQuestion question;
    std::function<void(BWCameraSession::StartAnswer)> answer; // null while no question is open
    std::function<void()> quit;

private:
    void note(BWCameraSession &session, void (BWCameraSession::*signal)(), const QString &name)
    {
        connect(&session, signal, this, [this, name] { calls << name; });
    }
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
    {
        auto backend = BWSimulatedBackend::create(cameras, clock);
        hands = backend->cameras();
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        backends.push_back(std::move(backend));
        session = std::make_unique<BWCameraSession>(manager, config, product, clock);
        ui.watch(*session);
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
    BWConfigManager config{defaults};
    BWProductInUse product{config};
    BWCameraManager manager;
    std::unique_ptr<BWCameraSession> session;
    std::unique_ptr<BWCameraDetector> detector;
    QList<std::shared_ptr<BWSimulatedCamera>> hands;
    QList<std::shared_ptr<DeviceNotes>> notes;

private:
    std::map<BWDetectedCameraPtr, BWDetectedCameraPtr> m_noting;
};
