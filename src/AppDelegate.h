// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/Start/BWAppTexts.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/BWApplicationDelegate.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Session/BWCameraSession.h"
#include "Model/Session/BWQuitting.h"
#include "Model/Session/BWSleepInhibitor.h"
#include "Model/Settings/BWConfigManager.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"
#include "Views/Utils/BWFilePanels.h"

#include <functional>
#include <memory>
#include <QObject>
#include <vector>

class BWAlbumContents;
class BWAuxiliaryWindows;
class BWCameraAuthorization;
class BWCaptureFeedback;
class BWCaptureFiles;
class BWCaptureRecovery;
class BWComparison;
class BWFlashActionViewController;
class BWFreezeController;
class BWGridController;
class BWImportMenu;
class BWLastCaptureController;
class BWLiveViewController;
class BWLookBackController;
class BWMainWindow;
class BWMeasurementsInFile;
class BWMeasuringController;
class BWRepository;
class BWSceneController;
class BWSeriesController;
class BWSessionWindows;
class BWSimulatedCamerasWindowController;
class BWSnapshotSound;
class BWStatusLine;

/// Entry and coordinator: launches, makes the windows and the parts that do the work, wires them together, quits.
class AppDelegate : public QObject, public BWApplicationDelegate, public BWConfigManagerListener {
    Q_OBJECT

public:
    struct Options {
        std::vector<std::unique_ptr<BWCameraBackend>> backends;
        QList<std::shared_ptr<BWSimulatedCamera>> simulatedCameras; ///< offered to the person at the screen
        std::unique_ptr<BWCameraAuthorization> authorization;
        std::function<bool(const QUrl &)> openUrl; ///< opens a file or page with the desktop's program for it
        std::function<void()> quit; ///< ends the event loop
        bool technician = false; ///< the menu of the technician's tools is there from the start
        BWClock *clock = nullptr; ///< the real one if null
    };

    explicit AppDelegate(Options options);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    /// The user wants to quit.
    void applicationShouldTerminate() { m_quitting.quit(); }
    /// The same without a question, as when the session ends.
    void terminate() { m_quitting.quitWithoutQuestion(); }
    /// Brings the window that waits for the user to the front; false if the program is about to end.
    bool bringForward();

    BWCameraPtr currentCamera() const override;
    bool pendingDevices() const override;
    QList<BWBlockedCamera> blockedCameras() const;
    /// The main window; null until it has been made.
    BWMainWindow *cameraWindow() const { return m_window.get(); }
    const BWLiveRenderer &renderer() const { return *m_renderer; }
    /// From the start of the process to the first live picture on the screen; -1 while there is none.
    double firstFrameMilliseconds() const { return m_firstFrameMilliseconds; }

    void configManagerUpdatedSettings(BWConfigManager &config) override;

    void onSettingsAlbums();
    void updateStateLabel();

private:
    void checkCameraAccess();
    void cameraAccessMissing(const QString &title, const QString &message);
    void doFinishApplicationLaunch();
    void prepareUI();
    void completeLaunch();
    void prepareCapture();
    void prepareStills();
    void connectSession();
    void connectActions();
    void prepareCamera(const BWCameraPtr &camera);
    void tagSnapshots();
    void reportUnstoredSettings();
    void resetLayout();
    void openAlbumFolder();
    void forceSnapshot();
    void onRecord();
    void otherKeyPressed(int key, bool autoRepeat);
    void windowDidChangeOcclusionState();
    Options m_options;
    BWClock &m_clock;
    BWRepository &m_repository;
    std::shared_ptr<BWLiveRenderer> m_renderer = std::make_shared<BWLiveRenderer>();
    BWCameraManager m_cameraManager;
    BWProductInUse m_productInUse;
    BWCameraSession m_session;
    std::unique_ptr<BWMainWindow> m_window;
    std::unique_ptr<BWStatusLine> m_statusLine;
    std::unique_ptr<BWLiveViewController> m_liveView;
    std::unique_ptr<BWSceneController> m_scene;
    std::unique_ptr<BWGridController> m_grid;
    std::unique_ptr<BWMeasuringController> m_measuring;
    std::unique_ptr<BWFlashActionViewController> m_flashActionViewController;
    std::unique_ptr<BWSnapshotSound> m_snapshotSound;
    std::unique_ptr<BWAlbumContents> m_albumContents;
    std::unique_ptr<BWLastCaptureController> m_lastCapture;
    std::unique_ptr<BWCaptureFeedback> m_captureFeedback;
    std::unique_ptr<BWCaptureController> m_capture;
    std::unique_ptr<BWFreezeController> m_freeze;
    std::unique_ptr<BWSeriesController> m_series;
    std::unique_ptr<BWCaptureRecovery> m_captureRecovery;
    std::unique_ptr<BWLookBackController> m_lookBack;
    std::unique_ptr<BWComparison> m_comparison;
    std::unique_ptr<BWMeasurementsInFile> m_measurementsInFile;
    std::unique_ptr<BWCaptureFiles> m_captureFiles;
    std::unique_ptr<BWAuxiliaryWindows> m_auxiliaryWindows;
    std::unique_ptr<BWSessionWindows> m_sessionWindows;
    BWDialogFilePanels m_panels;
    std::unique_ptr<BWImportMenu> m_importMenu;
    std::unique_ptr<BWCameraDetector> m_cameraDetector;
    std::unique_ptr<BWSimulatedCamerasWindowController> m_simulatedCameras;
    BWAliveToken m_alive;
    BWAppTexts m_texts;
    double m_firstFrameMilliseconds = -1;
    DispatchAfterStrict::Handle m_completion; ///< of the launch, without a picture
    bool m_launched = false; ///< completely
    BWWorkerPool m_worker;
    bool m_unstoredReported = false;
    BWSleepInhibitor m_sleepInhibitor;
    BWQuitting m_quitting;
};
