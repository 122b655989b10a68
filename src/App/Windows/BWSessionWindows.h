// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"
#include "BWACUDriver/BWDetectedCamera.h"
#include "Model/Session/BWCameraSession.h"

#include <functional>
#include <memory>
#include <QList>
#include <QObject>
#include <QPointer>

class BWAuxiliaryWindows;
class BWStartProblemAlert;
class BWConfigManager;
class BWGridController;
class BWLiveViewController;
class BWLocalizationManager;
class BWMainWindow;
class BWNoCameraProductSheetWindowController;
class BWNoCameraSheetWindowController;
class BWNoCameraWindowController;
class BWProductInUse;
class BWRepository;
class BWSceneController;

/// Shows the camera session: the live picture and its menus, the windows that stand in for a missing camera, and the
/// session's questions. GUI thread.
class BWSessionWindows : public QObject {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<bool()> pendingDevices;
        std::function<QList<BWBlockedCamera>()> blockedCameras;
    };

    /// All must outlive this object.
    BWSessionWindows(BWMainWindow &window, BWLiveViewController &liveView, BWSceneController &scene,
                     BWGridController &grid, BWAuxiliaryWindows &auxiliary, BWCameraSession &session,
                     BWProductInUse &productInUse, BWRepository &repository, Callbacks callbacks, BWClock &clock);
    ~BWSessionWindows() override;

    /// The settings store changed.
    void settingsChanged();
    /// A camera is being prepared, or no longer, or something keeps it from appearing.
    void watchPendingDevices();
    /// As the menu lists the camera; null if it does not.
    QString titleOf(const BWCameraPtr &camera) const;
    void bringMainWindowToFront();

Q_SIGNALS:
    /// The user closed the window that stands in for the camera.
    void terminateRequested();

private:
    void makeQuestions(BWLocalizationManager &texts, const Callbacks &callbacks, BWClock &clock);
    void connectSession();
    void connectMenus();
    void showCameras();
    void showProducts();
    void cameraStarted();
    void showResolutions();
    void updateImageDisplay();
    void resetUIToInitial();
    void enableControls();
    void followScene();
    void askForProduct();
    void showStartProblem(const BWCameraSession::StartQuestion &question);
    void endStartProblem();
    void endQuestions();
    void showNoCamera(bool hadCamera);
    void endNoCamera();

    BWMainWindow &m_window;
    BWLiveViewController &m_liveView;
    BWSceneController &m_scene;
    BWGridController &m_grid;
    BWAuxiliaryWindows &m_auxiliary;
    BWCameraSession &m_session;
    BWProductInUse &m_productInUse;
    BWConfigManager &m_config;
    BWLocalizationManager &m_texts;
    std::unique_ptr<BWNoCameraWindowController> m_noCameraWindow;
    std::unique_ptr<BWNoCameraProductSheetWindowController> m_productSheet;
    std::unique_ptr<BWNoCameraSheetWindowController> m_noCameraSheet;
    QPointer<BWStartProblemAlert> m_startProblem;
    bool m_streams = false;
    bool m_sheetWaits = false; // for the live image
};
