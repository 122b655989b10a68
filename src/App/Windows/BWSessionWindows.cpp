// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Windows/BWSessionWindows.h"

#include "App/LiveView/BWGridController.h"
#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "App/Windows/BWAuxiliaryWindows.h"
#include "Model/BWRepository.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Session/BWStartProblemText.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWStartProblemAlert.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"

#include <QAction>
#include <utility>

using namespace Qt::StringLiterals;

BWSessionWindows::BWSessionWindows(BWMainWindow &window, BWLiveViewController &liveView, BWSceneController &scene,
                                   BWGridController &grid, BWAuxiliaryWindows &auxiliary, BWCameraSession &session,
                                   BWProductInUse &productInUse, BWRepository &repository, Callbacks callbacks,
                                   BWClock &clock)
    : m_window(window),
      m_liveView(liveView),
      m_scene(scene),
      m_grid(grid),
      m_auxiliary(auxiliary),
      m_session(session),
      m_productInUse(productInUse),
      m_config(repository.configManager()),
      m_texts(repository.localizationManager())
{
    makeQuestions(m_texts, std::move(callbacks), clock);
    enableControls();
    connectSession();
    connectMenus();
    showCameras(); // one may be starting already
    if (m_session.currentCamera())
        m_window.menu().enablePanels();
}

BWSessionWindows::~BWSessionWindows() = default;

void BWSessionWindows::watchPendingDevices()
{
    for (BWNoCameraBaseWindowController *window :
         std::initializer_list<BWNoCameraBaseWindowController *>{m_noCameraWindow.get(), m_noCameraSheet.get()})
        window->watchPendingDevices();
}

void BWSessionWindows::makeQuestions(BWLocalizationManager &texts, const Callbacks &callbacks, BWClock &clock)
{
    const BWNoCameraBaseWindowController::Callbacks noCamera{
        callbacks.pendingDevices, [&texts, blockedCameras = callbacks.blockedCameras] {
            return BWStartProblemText::obstacle(blockedCameras(), texts);
        }};
    m_noCameraWindow = std::make_unique<BWNoCameraWindowController>(noCamera, clock, &m_window);
    m_noCameraWindow->localizeWithManager(texts);
    connect(m_noCameraWindow.get(), &BWNoCameraWindowController::terminateRequested, this,
            &BWSessionWindows::terminateRequested);
    m_productSheet = std::make_unique<BWNoCameraProductSheetWindowController>(
        [this](const QString &type) { return m_config.productsByCameraIdentifier(type); }, clock, &m_window);
    m_productSheet->localizeWithManager(texts);
    m_noCameraSheet = std::make_unique<BWNoCameraSheetWindowController>(noCamera, clock, &m_window);
    m_noCameraSheet->localizeWithManager(texts);
    // The menu's keys reach only the main window, which the sheets block. The other two have a button to quit.
    for (QWidget *question :
         std::initializer_list<QWidget *>{m_noCameraWindow.get(), m_noCameraSheet.get(), m_productSheet.get()})
        question->addAction(m_window.menu().simpleHelpMenuItem);
    for (QAction *action : {m_window.menu().quit, m_window.menu().series})
        m_productSheet->addAction(action);
    for (BWNoCameraBaseWindowController *question :
         std::initializer_list<BWNoCameraBaseWindowController *>{m_noCameraWindow.get(), m_noCameraSheet.get()})
        question->showAction(*m_window.menu().series); // enabled without a camera as long as there is one to stop
}

void BWSessionWindows::connectSession()
{
    connect(&m_session, &BWCameraSession::camerasChanged, this, &BWSessionWindows::showCameras);
    connect(&m_session, &BWCameraSession::cameraAppeared, this, &BWSessionWindows::endNoCamera);
    connect(&m_session, &BWCameraSession::starting, &m_window.menu(), &BWMainMenu::enablePanels);
    connect(&m_session, &BWCameraSession::started, this, &BWSessionWindows::cameraStarted);
    connect(&m_session, &BWCameraSession::cameraGone, this, &BWSessionWindows::resetUIToInitial);
    connect(&m_session, &BWCameraSession::noCamera, this, &BWSessionWindows::showNoCamera);
    connect(&m_session, &BWCameraSession::productUnknown, this, &BWSessionWindows::askForProduct);
    connect(&m_session, &BWCameraSession::startFailed, this, &BWSessionWindows::showStartProblem);
    connect(&m_session, &BWCameraSession::questionsWithdrawn, this, &BWSessionWindows::endQuestions);
    connect(&m_scene, &BWSceneController::mainChanged, this, &BWSessionWindows::followScene);
    connect(&m_productInUse, &BWProductInUse::resolutionChanged, this, [this] {
        showResolutions();
        updateImageDisplay();
    });
}

void BWSessionWindows::connectMenus()
{
    connect(&m_window.controlBar(), &BWControlBar::resolutionPicked, this, [this](const QString &title) {
        if (const auto resolution = BWResolution::fromResolutionString(title))
            m_productInUse.changeResolution(*resolution);
    });
    connect(&m_window.menu(), &BWMainMenu::cameraPicked, this,
            [this](int index) { m_session.changeCurrentCamera(m_session.cameras().value(index)); });
    connect(&m_window.menu(), &BWMainMenu::productPicked, this, [this](const QString &identifier) {
        if (const auto product = m_config.productByIdentifier(identifier))
            m_config.setCurrentProductIdentifier(identifier, product->cameraTypeIdentifier());
    });
}

void BWSessionWindows::settingsChanged()
{
    showProducts();
    m_grid.followProduct();
    updateImageDisplay();
}

void BWSessionWindows::showCameras()
{
    const QList<BWCameraPtr> &cameras = m_session.cameras();
    const BWCameraPtr &current = m_session.currentCamera();
    m_auxiliary.showCameras();
    m_window.menu().showCameras(BWDisplayNames::cameras(cameras, m_texts), static_cast<int>(cameras.indexOf(current)));
    showProducts();
}

QString BWSessionWindows::titleOf(const BWCameraPtr &camera) const
{
    return BWDisplayNames::cameras(m_session.cameras(), m_texts).value(m_session.cameras().indexOf(camera));
}

void BWSessionWindows::showProducts()
{
    const BWCameraPtr &camera = m_session.currentCamera();
    const auto current = m_productInUse.currentProduct();
    QList<BWCameraProductPtr> products;
    if (camera)
        products = m_config.productsByCameraIdentifier(camera->identifierForProducts());
    QStringList names;
    for (const BWCameraProductPtr &product : products)
        names.append(BWDisplayNames::product(*product, m_texts));
    m_window.menu().showProducts(products, names, current ? current->identifier() : QString());
}

void BWSessionWindows::cameraStarted()
{
    m_streams = true;
    enableControls();
    m_auxiliary.showHidden();
    showResolutions();
    m_grid.followProduct();
    updateImageDisplay();
    bringMainWindowToFront();
}

void BWSessionWindows::showResolutions()
{
    const BWCameraPtr &camera = m_session.currentCamera();
    m_window.controlBar().showResolutions(camera->detectedCamera()->cameraDescription()->availableResolutions,
                                          camera->defaultResolution());
}

void BWSessionWindows::updateImageDisplay()
{
    m_grid.reloadGridDebugger();
    m_liveView.updateImageDisplay();
}

void BWSessionWindows::bringMainWindowToFront()
{
    m_window.setWindowState(m_window.windowState() & ~Qt::WindowMinimized);
    m_window.show();
    m_window.raise();
    m_window.activateWindow();
}

void BWSessionWindows::resetUIToInitial()
{
    m_streams = false;
    enableControls();
    m_liveView.clear();
}

/// A still can be looked at, and a frozen one saved, without a camera.
void BWSessionWindows::enableControls()
{
    const bool hasPicture = m_streams || m_scene.main() != BWSceneController::Main::Live;
    m_window.controlBar().setControlsEnabled(m_streams, hasPicture);
    m_window.menu().setActionsEnabled(m_streams, hasPicture);
}

void BWSessionWindows::followScene()
{
    enableControls();
    if (m_scene.main() != BWSceneController::Main::Live)
        return;
    if (!m_streams)
        m_liveView.clear(); // no picture takes the place of the still
    if (m_sheetWaits)
        showNoCamera(true);
}

void BWSessionWindows::askForProduct()
{
    m_productSheet->end();
    m_productSheet->setCamera(m_session.currentCamera());
    m_productSheet->beginSheet(&m_window, [this](int result) {
        const auto product = m_productSheet->selectedProduct();
        if (result == 1 && product)
            m_session.answerProduct(product->identifier());
    });
}

void BWSessionWindows::showStartProblem(const BWCameraSession::StartQuestion &question)
{
    endStartProblem();
    m_startProblem = new BWStartProblemAlert(question, titleOf(question.other), m_texts, &m_window);
    connect(m_startProblem, &BWStartProblemAlert::answered, &m_session, &BWCameraSession::answerStartQuestion);
    m_startProblem->addAction(m_window.menu().series);
    m_startProblem->open();
}

void BWSessionWindows::endStartProblem()
{
    if (!m_startProblem)
        return;
    m_startProblem->disconnect(&m_session);
    m_startProblem->hide();
    m_startProblem->deleteLater(); // it may be sending its answer
    m_startProblem.clear();
}

void BWSessionWindows::endQuestions()
{
    m_productSheet->end();
    endStartProblem();
}

void BWSessionWindows::showNoCamera(bool hadCamera)
{
    m_auxiliary.hideAll();
    if (hadCamera) {
        m_sheetWaits = m_scene.main() != BWSceneController::Main::Live; // which it would block
        if (m_sheetWaits)
            return;
        m_noCameraSheet->beginSheet(&m_window, [this](int result) {
            if (result == 1)
                m_session.quitWithoutCamera();
        });
        return;
    }
    m_noCameraWindow->show();
    m_noCameraWindow->raise();
    m_noCameraWindow->activateWindow();
}

void BWSessionWindows::endNoCamera()
{
    m_sheetWaits = false;
    m_noCameraWindow->hide();
    m_noCameraSheet->end();
}
