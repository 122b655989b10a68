#pragma once

#include "BWACUDriver/BWBlockedCamera.h"
#include "BWACUDriver/BWClock.h"
#include "Model/Session/BWCameraSessionUi.h"

#include <functional>
#include <memory>
#include <QList>
#include <QObject>
#include <QPointer>

class BWAuxiliaryWindows;
class BWStartProblemAlert;
class BWCameraProduct;
class BWCameraSession;
class BWGridController;
class BWLiveViewController;
class BWMainWindow;
class BWNoCameraProductSheetWindowController;
class BWNoCameraSheetWindowController;
class BWNoCameraWindowController;
class BWProductInUse;
class BWRepository;

/// Shows what the camera session wants the user to see: the live picture and its menus, the windows that stand in
/// when there is no camera, and its questions. GUI thread.
class BWSessionWindows : public QObject, public BWCameraSessionUi {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<void()> updateStateLabel;
        std::function<void()> terminate;
        std::function<bool()> pendingDevices;
        std::function<QList<BWBlockedCamera>()> blockedCameras;
    };

    BWSessionWindows(BWMainWindow &window, BWLiveViewController &liveView, BWGridController &grid,
                     BWAuxiliaryWindows &auxiliary, BWProductInUse &productInUse, BWRepository &repository,
                     Callbacks callbacks, BWClock &clock);
    ~BWSessionWindows() override;

    /// Called once, when the session exists: the menus act on it from now on.
    void setSession(BWCameraSession &session);

    /// The settings store changed.
    void settingsChanged();
    QString localizeProductName(const BWCameraProduct &product) const;
    /// As the menu lists the camera; null if it does not.
    QString titleOf(const BWCameraPtr &camera) const;

    void enableCameraMenus() override;
    void updateStateLabel() override;
    void updateCameraList(const QList<BWCameraPtr> &cameras, const BWCameraPtr &current) override;
    void cameraStarted() override;
    void showResolutions(const QList<BWResolution> &resolutions, BWResolution current) override;
    void enableGrid(bool available) override;
    void updateImageDisplay() override;
    void bringMainWindowToFront() override;
    void resetUIToInitial() override;
    void askForProduct(const BWCameraPtr &camera, std::function<void(const QString &chosen)> answer) override;
    void showCameraInUse(const StartQuestion &question, std::function<void(StartAnswer)> answer) override;
    void endQuestions() override;
    void showNoCameraWindow() override;
    void hideNoCameraWindow() override;
    void openNoCameraSheet(std::function<void()> terminate) override;
    void endNoCameraSheet() override;
    void hideAuxiliaryWindows() override;
    void terminate() override;

private:
    void showProducts();
    void endCameraInUse();
    /// As the menu and the settings list them.
    QStringList cameraTitles() const;

    BWMainWindow &m_window;
    BWLiveViewController &m_liveView;
    BWGridController &m_grid;
    BWAuxiliaryWindows &m_auxiliary;
    BWProductInUse &m_productInUse;
    BWRepository &m_repository;
    Callbacks m_callbacks;
    BWCameraSession *m_session = nullptr;
    QList<BWCameraPtr> m_cameras; // as the menu lists them
    std::unique_ptr<BWNoCameraWindowController> m_noCameraWindow;
    std::unique_ptr<BWNoCameraProductSheetWindowController> m_productSheet;
    std::unique_ptr<BWNoCameraSheetWindowController> m_noCameraSheet;
    QPointer<BWStartProblemAlert> m_cameraInUse;
};
