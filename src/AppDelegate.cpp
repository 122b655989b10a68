// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"

#include "App/Capture/BWCaptureFeedback.h"
#include "App/Capture/BWCaptureFiles.h"
#include "App/Capture/BWLastCaptureController.h"
#include "App/Capture/BWSeriesController.h"
#include "App/Capture/BWSnapshotSound.h"
#include "App/LiveView/BWComparison.h"
#include "App/LiveView/BWFreezeController.h"
#include "App/LiveView/BWGridController.h"
#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWLookBackController.h"
#include "App/LiveView/BWMeasurementsInFile.h"
#include "App/LiveView/BWMeasuringController.h"
#include "App/LiveView/BWSceneController.h"
#include "App/Start/BWQuittingParts.h"
#include "App/Start/BWStatisticsReport.h"
#include "App/Windows/BWAuxiliaryWindows.h"
#include "App/Windows/BWImportMenu.h"
#include "App/Windows/BWSessionWindows.h"
#include "BWACUDriver/BWMovie.h"
#include "Model/Albums/BWAlbumContents.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Capture/BWCaptureRecovery.h"
#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Model/Session/BWStartProblemText.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWUIUtils.h"
#include "Utils/BWVersion.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Technician/BWSimulatedCamerasWindowController.h"
#include "Views/Utils/BWFlashActionViewController.h"
#include "Views/Utils/BWIcons.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QPointer>
#include <QTranslator>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Shows the texts of Qt itself (names of keys, the menu of a text field, the file dialog) in that language, such as
/// "de". They stay English if Qt has no translation, or it is not installed, which is logged.
void showQtTextsIn(const QString &language)
{
    static QPointer<QTranslator> translator;
    delete translator; // which removes it from the application
    if (language.isEmpty() || language == "en"_L1)
        return;
    translator = new QTranslator(QCoreApplication::instance());
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (translator->load(u"qtbase_"_s + language, folder))
        QCoreApplication::installTranslator(translator);
    else
        qCInfo(bwViews).noquote() << u"Qt's own texts stay English: %1 has none in \"%2\""_s.arg(folder, language);
}

} // namespace

AppDelegate::AppDelegate(Options options)
    : m_options(std::move(options)),
      m_clock(m_options.clock ? *m_options.clock : BWClock::system()),
      m_repository(BWRepository::singleton()),
      m_productInUse(m_repository.configManager()),
      m_session(m_cameraManager, m_repository.configManager(), m_productInUse, m_clock),
      m_quitting(BWQuittingParts{m_texts, m_session, m_repository.albumManager(), m_statusLine, m_capture, m_series,
                                 m_comparison, m_measurementsInFile, m_auxiliaryWindows, m_options.quit}
                     .callbacks(),
                 m_clock)
{
    connect(&m_session, &BWCameraSession::cameraAdded, this, &AppDelegate::prepareCamera);
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    BWLocalizationManager &texts = m_repository.localizationManager();
    const QString language = texts.preferredLanguage();
    showQtTextsIn(BWLocalizationManager::languages().contains(language) ? language
                                                                        : QString()); // rather than a mixture
    m_texts.localizeWithManager(texts);
    m_sleepInhibitor.setExplanation(m_texts.staysAwake);
    checkCameraAccess();
}

void AppDelegate::checkCameraAccess()
{
    using Status = BWCameraAuthorization::Status;
    switch (m_options.authorization->authorizationStatus()) {
    case Status::Authorized:
        doFinishApplicationLaunch();
        return;
    case Status::NotDetermined:
        m_options.authorization->requestAccess([this, alive = m_alive.watch()](bool granted) {
            BWMainQueue::post(alive, [this, granted] {
                if (granted)
                    doFinishApplicationLaunch();
                else
                    cameraAccessMissing(m_texts.cameraAccessDeniedTitle, m_texts.cameraAccessDeniedMessage);
            });
        });
        return;
    case Status::Restricted:
        cameraAccessMissing(m_texts.cameraAccessRestrictedTitle, m_texts.cameraAccessRestrictedMessage);
        return;
    case Status::Denied:
        cameraAccessMissing(m_texts.cameraAccessDeniedTitle, m_texts.cameraAccessDeniedMessage);
        return;
    }
    qFatal("Camera access: unknown status");
}

void AppDelegate::cameraAccessMissing(const QString &title, const QString &message)
{
    BWUIUtils::displayOKAlert(title, message);
    m_options.quit();
}

/// Cameras come first: one that is there already starts on its own thread while the windows are made.
void AppDelegate::doFinishApplicationLaunch()
{
    m_cameraDetector =
        std::make_unique<BWCameraDetector>(BWCameraDetector::supportedDescriptions(), std::move(m_options.backends));
    m_cameraDetector->setCameraFoundBlock([this](const BWDetectedCameraPtr &device) { m_session.cameraFound(device); });
    m_cameraDetector->setCameraRemovedBlock(
        [this](const BWDetectedCameraPtr &device) { m_session.cameraRemoved(device); });
    m_cameraDetector->setDevicesChangedBlock([this] {
        if (m_sessionWindows) // not made before the first camera is found
            m_sessionWindows->watchPendingDevices();
    });
    m_cameraDetector->startCamerasDetection();
    BWMainQueue::post(m_alive, [this] {
        prepareUI();
        m_session.waitForCamera();
    });
}

void AppDelegate::prepareUI()
{
    BWConfigManager &config = m_repository.configManager();
    BWLocalizationManager &texts = m_repository.localizationManager();

    m_window = std::make_unique<BWMainWindow>(*m_renderer);
    m_window->localizeWithManager(texts);
    m_window->setShouldClose([this] {
        applicationShouldTerminate();
        return false; // closes when the camera has stopped
    });
    m_statusLine = std::make_unique<BWStatusLine>(m_window->currentCameraLabel(), m_clock);
    m_liveView = std::make_unique<BWLiveViewController>(*m_window, *m_renderer, m_productInUse);
    m_scene = std::make_unique<BWSceneController>(*m_window, *m_liveView, *m_renderer);
    m_grid = std::make_unique<BWGridController>(*m_window, *m_liveView, m_productInUse, texts);
    m_measuring = std::make_unique<BWMeasuringController>(
        BWMeasuringController::Parts{*m_window, *m_liveView, *m_scene, m_productInUse, *m_statusLine, config, texts,
                                     m_panels, m_repository.userDefaults()});
    m_window->menu().showTools(m_options.technician);
    m_window->showStatistics(config.showStatistics());
    prepareCapture();
    prepareStills();
    m_auxiliaryWindows = std::make_unique<BWAuxiliaryWindows>(*m_window, m_repository, m_session, m_productInUse,
                                                              m_options.openUrl, m_clock);
    m_sessionWindows = std::make_unique<BWSessionWindows>(
        *m_window, *m_liveView, *m_scene, *m_grid, *m_auxiliaryWindows, m_session, m_productInUse, m_repository,
        BWSessionWindows::Callbacks{[this] { return pendingDevices(); }, [this] { return blockedCameras(); }}, m_clock);
    connectSession();
    for (const BWCameraPtr &camera : m_session.cameras())
        m_capture->prepareCamera(camera);
    m_importMenu =
        std::make_unique<BWImportMenu>(*m_window, m_repository, m_panels, [this] { m_productInUse.reloadImported(); });
    connectActions();
    updateStateLabel();

    config.addListener(this);
    m_window->rememberFrame(m_repository.userDefaults());
    if (!config.rememberLayout() || config.firstTime())
        resetLayout();
    m_capture->setButtonRecords(config.saveVideoOnHardwareButton(), [this] { onRecord(); });
    // At once: a camera that has started meanwhile may have a question, and a window that comes after that takes the
    // keyboard from it on Wayland.
    m_window->show();
    if (!m_options.simulatedCameras.isEmpty()) {
        m_simulatedCameras = std::make_unique<BWSimulatedCamerasWindowController>(m_options.simulatedCameras);
        m_simulatedCameras->localizeWithManager(m_repository.localizationManager());
        m_simulatedCameras->showBelow(*m_window);
    }
    constexpr double longestWait = 0.3; // seconds, for a first picture
    m_completion = DispatchAfterStrict::dispatchForQueue(
        this, [this] { completeLaunch(); }, longestWait, m_clock);
}

/// What the first picture does not need: once, after it, or a moment after the window came up without one.
void AppDelegate::completeLaunch()
{
    if (std::exchange(m_launched, true))
        return;
    if (m_completion)
        m_completion->cancel();
    QGuiApplication::setWindowIcon(BWIcons::applicationIcon());
    m_snapshotSound->prepare();
    m_worker.run([] { BWMoviePicture::prepare(); });
    m_albumContents->follow();
    m_repository.albumManager().whenPrepared([this, alive = m_alive.watch()] {
        if (alive.expired())
            return;
        m_captureRecovery->start(BWUIUtils::temporaryFolders());
        m_series->offerToResume();
    });
    if (m_repository.configManager().firstTime())
        m_repository.configManager().setFirstTime(false);
}

void AppDelegate::prepareCapture()
{
    BWLocalizationManager &texts = m_repository.localizationManager();
    m_flashActionViewController =
        std::make_unique<BWFlashActionViewController>(*m_window->centralWidget(), m_window->topInset(), texts, m_clock);
    connect(m_window.get(), &BWMainWindow::topInsetChanged, m_flashActionViewController.get(),
            &BWFlashActionViewController::setInset);
    QFile sound(u":/sounds/snapshot.mp3"_s);
    sound.open(QIODevice::ReadOnly);
    m_snapshotSound = std::make_unique<BWSnapshotSound>(sound.readAll());
    m_albumContents = std::make_unique<BWAlbumContents>(m_repository.albumManager(), m_clock);
    m_lastCapture = std::make_unique<BWLastCaptureController>(m_repository.albumManager(), *m_albumContents,
                                                              m_window->controlBar());
    m_captureFeedback = std::make_unique<BWCaptureFeedback>(
        m_window->controlBar(), *m_flashActionViewController, *m_statusLine, texts,
        BWCaptureFeedback::Callbacks{[this] { return currentCamera(); },
                                     [this] {
                                         m_lookBack->end(); // also when the camera's own button took it
                                         m_snapshotSound->play();
                                     },
                                     [this](const QUrl &file) { m_captureFiles->captureAdded(file); }},
        m_clock);
    BWCaptureController::Callbacks told = m_captureFeedback->callbacks();
    told.recording = [this, show = told.recording](bool recording) {
        m_sleepInhibitor.setActive(BWSleepInhibitor::Reason::Recording, recording);
        show(recording);
    };
    m_capture = std::make_unique<BWCaptureController>(m_repository.albumManager(), std::move(told));
    m_freeze = std::make_unique<BWFreezeController>(*m_window, *m_scene, *m_renderer, *m_capture, m_clock);
    m_series = std::make_unique<BWSeriesController>(
        BWSeriesController::Parts{*m_window, *m_statusLine, *m_renderer, m_repository.configManager(), texts,
                                  m_repository.albumManager(), *m_capture, m_captureFeedback->callbacks(),
                                  [this](const QList<QUrl> &pictures) { m_auxiliaryWindows->joinPictures(pictures); }},
        [this] { return currentCamera(); }, [this](const QUrl &file) { m_captureFiles->captureAdded(file); },
        QFileInfo(m_repository.settingsFile()).path() + u"/series.json"_s, m_clock);
    connect(m_series.get(), &BWSeriesController::runningChanged, this,
            [this](bool running) { m_sleepInhibitor.setActive(BWSleepInhibitor::Reason::Series, running); });
    m_repository.albumManager().addListener(
        m_alive, [this] { BWMainQueue::post(m_alive, [this] { reportUnstoredSettings(); }); }, {});
    m_captureRecovery = std::make_unique<BWCaptureRecovery>(
        m_repository.albumManager(), [this](int, const QUrl &last) { m_captureFeedback->reportRecovered(last); });
}

/// What shows pictures in place of the live image, or beside it.
void AppDelegate::prepareStills()
{
    BWLocalizationManager &texts = m_repository.localizationManager();
    const auto say = [this](const QString &text) { m_statusLine->showForAMoment(text); };
    m_lookBack =
        std::make_unique<BWLookBackController>(*m_window, *m_scene, m_repository.albumManager(), *m_albumContents,
                                               *m_statusLine, texts, m_options.openUrl, m_clock);
    m_comparison =
        std::make_unique<BWComparison>(*m_window, *m_scene, *m_liveView, *m_albumContents, texts,
                                       BWComparison::Callbacks{[this] { return m_lookBack->file(); },
                                                               [this] { return m_lastCapture->file(); }, say, m_panels},
                                       m_clock);
    m_measurementsInFile = std::make_unique<BWMeasurementsInFile>(
        BWMeasurementsInFile::Parts{*m_measuring, *m_window, *m_liveView, *m_scene, texts,
                                    BWPictureSaver::Callbacks{say, m_panels},
                                    [this] {
                                        const BWCameraProductPtr &product = m_productInUse.product();
                                        return product ? product->name() : QString();
                                    }},
        m_clock);
    m_captureFiles = std::make_unique<BWCaptureFiles>(
        BWCaptureFiles::Parts{*m_window, *m_scene, *m_lookBack, *m_lastCapture, *m_measurementsInFile, *m_capture,
                              m_repository.albumManager(), m_repository.configManager(), *m_statusLine, texts,
                              [this] { return currentCamera(); }, m_options.openUrl});
}

void AppDelegate::connectSession()
{
    connect(&m_session, &BWCameraSession::statusChanged, this, &AppDelegate::updateStateLabel);
    connect(&m_session, &BWCameraSession::quitRequested, this, &AppDelegate::applicationShouldTerminate);
    connect(&m_session, &BWCameraSession::cameraChosen, m_freeze.get(), &BWFreezeController::goLive);
    connect(m_freeze.get(), &BWFreezeController::failed, this,
            [this] { m_statusLine->showForAMoment(m_texts.notFrozen); });
    connect(m_sessionWindows.get(), &BWSessionWindows::terminateRequested, this,
            &AppDelegate::applicationShouldTerminate);
    connect(m_grid.get(), &BWGridController::gridChanged, this, &AppDelegate::updateStateLabel);
    connect(&m_productInUse, &BWProductInUse::loaded, this, &AppDelegate::tagSnapshots);
    connect(m_measuring.get(), &BWMeasuringController::changed, this, &AppDelegate::tagSnapshots);
    connect(m_measurementsInFile.get(), &BWMeasurementsInFile::problemChanged, this, &AppDelegate::updateStateLabel);
    tagSnapshots();
}

/// Snapshots say how large what they show is, and what was measured in it.
void AppDelegate::tagSnapshots()
{
    const BWCameraProductPtr &product = m_productInUse.product();
    BWMeasuringController::OfCamera measured = m_measuring->ofCamera();
    measured.metadata.product = product ? product->name() : QString();
    m_capture->setSnapshotTags(measured.metadata.product, QStringLiteral("BrimwellPro " BW_VERSION), measured.metadata,
                               measured.field);
}

void AppDelegate::connectActions()
{
    const BWMainMenu &menu = m_window->menu();
    const BWControlBar &bar = m_window->controlBar();
    connect(m_liveView.get(), &BWLiveViewController::imageDisplayUpdated, this, &AppDelegate::updateStateLabel);
    connect(m_scene.get(), &BWSceneController::mainChanged, this, &AppDelegate::updateStateLabel);
    connect(m_scene.get(), &BWSceneController::referenceChanged, this, &AppDelegate::updateStateLabel);
    connect(m_lastCapture.get(), &BWLastCaptureController::showRequested, m_lookBack.get(),
            &BWLookBackController::show);
    connect(m_auxiliaryWindows.get(), &BWAuxiliaryWindows::savingChanged, this,
            [this](bool isSaving) { m_sleepInhibitor.setActive(BWSleepInhibitor::Reason::Export, isSaving); });
    connect(m_auxiliaryWindows.get(), &BWAuxiliaryWindows::showRequested, this, [this](const QUrl &file) {
        m_lookBack->show(file);
        m_sessionWindows->bringMainWindowToFront();
    });
    connect(menu.quit, &QAction::triggered, this, &AppDelegate::applicationShouldTerminate);
    connect(menu.openAlbumFolder, &QAction::triggered, this, &AppDelegate::openAlbumFolder);
    connect(&bar, &BWControlBar::albumsTriggered, this, &AppDelegate::onSettingsAlbums);
    connect(&bar, &BWControlBar::settingsTriggered, m_auxiliaryWindows.get(), &BWAuxiliaryWindows::showSettings);
    connect(menu.statistics, &QAction::triggered, this,
            [this](bool shown) { m_repository.configManager().setShowStatistics(shown); });
    connect(menu.snapshot, &QAction::triggered, this, &AppDelegate::forceSnapshot);
    connect(&bar, &BWControlBar::snapshotTriggered, this, &AppDelegate::forceSnapshot);
    connect(&m_window->centeringClipView(), &BWCenteringClipView::spacePressed, this, &AppDelegate::forceSnapshot);
    connect(menu.record, &QAction::triggered, this, &AppDelegate::onRecord);
    connect(&bar, &BWControlBar::recordTriggered, this, &AppDelegate::onRecord);
    m_window->centeringClipView().setLeftButtonClicks([this] {
        return m_repository.configManager().saveSnapshotOnClick() && !m_lookBack->isActive()
            && !m_liveView->movesReference();
    });
    connect(&m_window->centeringClipView(), &BWCenteringClipView::mousePressed, this, [this] {
        forceSnapshot();
        m_window->centeringClipView().showCameraCursor();
    });
    connect(&m_window->centeringClipView(), &BWCenteringClipView::firstPicturePainted, this, [this] {
        m_firstFrameMilliseconds = BWStatisticsReport::millisecondsSinceStart();
        BWMainQueue::post(m_alive, [this] { completeLaunch(); }); // when it is on the screen
    });
    connect(m_window.get(), &BWMainWindow::fullScreenChanged, this, [this](bool fullScreen) {
        constexpr double seconds = 4;
        if (fullScreen)
            m_statusLine->showForAMoment(m_texts.fullScreenHint, seconds);
    });
    m_window->centeringClipView().setStep([this](bool right) { return m_comparison->step(right); });
    connect(m_auxiliaryWindows.get(), &BWAuxiliaryWindows::compareRequested, this, [this](const QUrl &file) {
        m_comparison->compareWith(file);
        m_sessionWindows->bringMainWindowToFront();
    });
    connect(m_window.get(), &BWMainWindow::otherKeyPressed, this, &AppDelegate::otherKeyPressed);
    connect(m_window.get(), &BWMainWindow::occlusionStateChanged, this, &AppDelegate::windowDidChangeOcclusionState);
    connect(&menu, &BWMainMenu::panelsMenuOpening, this, &AppDelegate::windowDidChangeOcclusionState);
    connect(menu.cameraWindowMenuItem, &QAction::triggered, m_sessionWindows.get(),
            &BWSessionWindows::bringMainWindowToFront);
}

void AppDelegate::prepareCamera(const BWCameraPtr &camera)
{
    // A camera that hangs may outlive the windows.
    camera->setOnCameraFrame([weak = std::weak_ptr(m_renderer)](BWCamera &, const BWFrame &frame) {
        if (const auto renderer = weak.lock())
            renderer->prepareBuffer(frame);
    });
    if (m_capture) // else as soon as that exists
        m_capture->prepareCamera(camera);
}

bool AppDelegate::bringForward()
{
    if (m_window && m_window->isVisible())
        m_sessionWindows->bringMainWindowToFront();
    if (QWidget *question = QApplication::activeModalWidget()) {
        question->raise();
        question->activateWindow();
    }
    return !m_quitting.isUnderWay();
}

BWCameraPtr AppDelegate::currentCamera() const
{
    return m_session.currentCamera();
}

bool AppDelegate::pendingDevices() const
{
    return m_cameraDetector && m_cameraDetector->pendingDevices();
}

QList<BWBlockedCamera> AppDelegate::blockedCameras() const
{
    return m_cameraDetector ? m_cameraDetector->blockedCameras() : QList<BWBlockedCamera>();
}

void AppDelegate::updateStateLabel()
{
    using Kind = BWStatusLine::Kind;
    using Main = BWSceneController::Main;
    if (const QString problem = m_measurementsInFile->problem(); !problem.isNull()) {
        m_statusLine->setText(problem, Kind::Lasting);
        return;
    }
    if (!currentCamera()) {
        m_statusLine->setText(m_texts.noCameraDetectedPlaceholder, Kind::Lasting);
        return;
    }
    if (const BWStartProblem &problem = m_session.problem(); !problem.isNone()) {
        m_statusLine->setText(BWStartProblemText::status(problem, m_repository.localizationManager()), Kind::Lasting);
        return;
    }
    if (m_scene->main() == Main::Album) {
        m_statusLine->setText(m_texts.lookingBack);
        return;
    }
    if (m_grid->useGrid()) {
        m_statusLine->setText(m_liveView->state().currentZoom() == 100
                                  ? m_texts.gridDisclaimer
                                  : BWUIUtils::inOneLine(m_texts.gridDisclaimer, m_texts.gridHoldsAt100),
                              Kind::Lasting);
        return;
    }
    if (m_scene->hasReference()) {
        m_statusLine->setText(m_texts.comparing);
        return;
    }
    if (m_scene->main() == Main::Frozen) {
        const QKeySequence key = m_window->menu().freeze->shortcut();
        m_statusLine->setText(m_texts.frozen.arg(key.toString(QKeySequence::NativeText)));
        return;
    }
    const auto product = m_productInUse.currentProduct();
    m_statusLine->setText(
        product ? BWUIUtils::inOneLine(m_texts.liveStreamingWith,
                                       BWDisplayNames::product(*product, m_repository.localizationManager()))
                : m_texts.liveStreamingWith);
}

void AppDelegate::configManagerUpdatedSettings(BWConfigManager &config)
{
    // True only while listeners are being notified, so it is read at once. The rest waits until all have been.
    const bool mustResetLayout = config.mustResetLayout();
    BWMainQueue::post(m_alive, [this, mustResetLayout] {
        updateStateLabel();
        reportUnstoredSettings();
        if (mustResetLayout)
            resetLayout();
        m_window->showStatistics(m_repository.configManager().showStatistics());
        m_sessionWindows->settingsChanged();
        m_capture->setButtonRecords(m_repository.configManager().saveVideoOnHardwareButton(), [this] { onRecord(); });
    });
}

/// Once, and not before the window shows: at the start the program itself stores something.
void AppDelegate::reportUnstoredSettings()
{
    constexpr double seconds = 8; // two sentences, for people who are looking at something else
    const bool stored = m_repository.userDefaults().isStored();
    if (!stored && !m_unstoredReported && m_window->isVisible()) {
        m_statusLine->showForAMoment(m_texts.settingsNotStored, seconds);
        m_unstoredReported = true;
    }
    if (stored)
        m_unstoredReported = false;
}

void AppDelegate::resetLayout()
{
    m_window->resetLayout();
    m_auxiliaryWindows->resetLayout();
}

void AppDelegate::onSettingsAlbums()
{
    qCInfo(bwApp, "Settings/Albums");
    const BWAlbumManager &albums = m_repository.albumManager();
    if (albums.faulty()) {
        BWUIUtils::displayOKAlert(m_texts.errorInitializingAlbumsTitle,
                                  BWUIUtils::inOneLine(m_texts.errorInitializingAlbumsMessage,
                                                       u"%1, %2"_s.arg(albums.albumsBasePath().toLocalFile(),
                                                                       albums.defaultAlbumBasePath().toLocalFile())));
        return;
    }
    m_auxiliaryWindows->showAlbums();
}

void AppDelegate::openAlbumFolder()
{
    if (const BWAlbumPtr album = m_repository.albumManager().currentAlbum())
        m_options.openUrl(album->path());
}

void AppDelegate::forceSnapshot()
{
    m_lookBack->end();
    m_capture->forceSnapshot(currentCamera());
}

void AppDelegate::onRecord()
{
    m_lookBack->end();
    m_capture->toggleRecording(currentCamera(), m_sessionWindows->titleOf(currentCamera()));
}

void AppDelegate::otherKeyPressed(int key, bool autoRepeat)
{
    const BWCameraPtr camera = currentCamera();
    if (camera && BWCaptureController::isHardwareButton(key, autoRepeat, camera->readsHardwareButton()))
        m_capture->pressHardwareButton(camera);
}

void AppDelegate::windowDidChangeOcclusionState()
{
    m_auxiliaryWindows->updateMenu();
}
