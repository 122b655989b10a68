#include "App/Windows/BWSessionWindows.h"

#include "App/LiveView/BWGridController.h"
#include "App/LiveView/BWLiveViewController.h"
#include "App/Windows/BWAuxiliaryWindows.h"
#include "Model/BWRepository.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Session/BWCameraSession.h"
#include "Model/Session/BWStartProblemText.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/BWNoCameraProductSheetWindowController.h"
#include "Views/BWNoCameraWindowController.h"
#include "Views/BWStartProblemAlert.h"
#include "Views/MainWindow/BWCameraTitles.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Settings/BWSettingsWindowController.h"

#include <QAction>
#include <utility>

using namespace Qt::StringLiterals;

BWSessionWindows::BWSessionWindows(BWMainWindow &window, BWLiveViewController &liveView, BWGridController &grid,
                                   BWAuxiliaryWindows &auxiliary, BWProductInUse &productInUse,
                                   BWRepository &repository, Callbacks callbacks, BWClock &clock)
    : m_window(window),
      m_liveView(liveView),
      m_grid(grid),
      m_auxiliary(auxiliary),
      m_productInUse(productInUse),
      m_repository(repository),
      m_callbacks(std::move(callbacks))
{
    BWLocalizationManager &texts = repository.localizationManager();
    const BWNoCameraBaseWindowController::Callbacks noCamera{
        m_callbacks.pendingDevices,
        [this, &texts] { return BWStartProblemText::obstacle(m_callbacks.blockedCameras(), texts); }};
    m_noCameraWindow = std::make_unique<BWNoCameraWindowController>(noCamera, clock, &window);
    m_noCameraWindow->localizeWithManager(texts);
    connect(m_noCameraWindow.get(), &BWNoCameraWindowController::terminateRequested, this,
            &BWSessionWindows::terminate);
    m_productSheet = std::make_unique<BWNoCameraProductSheetWindowController>(
        [&config = repository.configManager()](const QString &type) { return config.productsByCameraIdentifier(type); },
        clock, &window);
    m_productSheet->localizeWithManager(texts);
    m_noCameraSheet = std::make_unique<BWNoCameraSheetWindowController>(noCamera, clock, &window);
    m_noCameraSheet->localizeWithManager(texts);
    // Their keys reach the main window only, which the sheets block. The other two have a button to quit.
    for (QWidget *question :
         std::initializer_list<QWidget *>{m_noCameraWindow.get(), m_noCameraSheet.get(), m_productSheet.get()})
        question->addAction(window.menu().simpleHelpMenuItem);
    m_productSheet->addAction(window.menu().quit);
    m_window.controlBar().setCameraControlsEnabled(false);
}

BWSessionWindows::~BWSessionWindows() = default;

void BWSessionWindows::setSession(BWCameraSession &session)
{
    m_session = &session;
    connect(&m_window.controlBar(), &BWControlBar::resolutionPicked, this, [this](const QString &title) {
        const auto resolution = BWResolution::fromResolutionString(title);
        if (!resolution)
            return;
        m_productInUse.changeResolution(*resolution);
    });
    connect(&m_window.menu(), &BWMainMenu::cameraPicked, this, [this](int index) {
        const BWCameraPtr picked = m_cameras.value(index);
        m_session->changeCurrentCamera(picked);
    });
    connect(&m_window.menu(), &BWMainMenu::productPicked, this, [this](const QString &identifier) {
        if (const auto product = m_repository.configManager().productByIdentifier(identifier))
            m_repository.configManager().setCurrentProductIdentifier(identifier, product->cameraTypeIdentifier());
    });
}

void BWSessionWindows::settingsChanged()
{
    showProducts();
    enableGrid(m_session->currentProductHasGrid());
    updateImageDisplay();
}

QString BWSessionWindows::localizeProductName(const BWCameraProduct &product) const
{
    return m_auxiliary.settings().localizeProductName(product);
}

void BWSessionWindows::enableCameraMenus()
{
    m_window.menu().enablePanels();
}

void BWSessionWindows::updateStateLabel()
{
    m_callbacks.updateStateLabel();
}

void BWSessionWindows::updateCameraList(const QList<BWCameraPtr> &cameras, const BWCameraPtr &current)
{
    m_cameras = cameras;
    m_auxiliary.settings().updateCameras(cameras, current);
    m_window.menu().showCameras(cameraTitles(), static_cast<int>(cameras.indexOf(current)));
    showProducts();
}

QStringList BWSessionWindows::cameraTitles() const
{
    QStringList names;
    for (const BWCameraPtr &camera : m_cameras)
        names.append(m_auxiliary.settings().localizeCameraName(*camera));
    return BWCameraTitles::unique(names);
}

QString BWSessionWindows::titleOf(const BWCameraPtr &camera) const
{
    return cameraTitles().value(m_cameras.indexOf(camera));
}

void BWSessionWindows::showProducts()
{
    const BWCameraPtr &camera = m_session->currentCamera();
    const auto current = m_productInUse.currentProduct();
    QList<BWCameraProductPtr> products;
    if (camera)
        products = m_repository.configManager().productsByCameraIdentifier(camera->identifierForProducts());
    QStringList names;
    for (const BWCameraProductPtr &product : products)
        names.append(localizeProductName(*product));
    m_window.menu().showProducts(products, names, current ? current->identifier() : QString());
}

void BWSessionWindows::cameraStarted()
{
    m_window.controlBar().setCameraControlsEnabled(true);
    m_window.menu().setCameraActionsEnabled(true);
    m_auxiliary.showHidden();
}

void BWSessionWindows::showResolutions(const QList<BWResolution> &resolutions, BWResolution current)
{
    m_window.controlBar().showResolutions(resolutions, current);
}

void BWSessionWindows::enableGrid(bool available)
{
    m_grid.enableGrid(available);
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
    m_window.controlBar().setCameraControlsEnabled(false);
    m_window.menu().setCameraActionsEnabled(false);
    m_liveView.clear();
}

void BWSessionWindows::askForProduct(const BWCameraPtr &camera, std::function<void(const QString &chosen)> answer)
{
    m_productSheet->end();
    m_productSheet->setCamera(camera);
    m_productSheet->beginSheet(&m_window, [this, answer = std::move(answer)](int result) {
        const auto product = m_productSheet->selectedProduct();
        answer(result == 1 && product ? product->identifier() : QString());
    });
}

void BWSessionWindows::showCameraInUse(const StartQuestion &question, std::function<void(StartAnswer)> answer)
{
    endCameraInUse();
    m_cameraInUse =
        new BWStartProblemAlert(question, titleOf(question.other), m_repository.localizationManager(), &m_window);
    connect(m_cameraInUse, &BWStartProblemAlert::answered, this, std::move(answer));
    m_cameraInUse->open();
}

void BWSessionWindows::endQuestions()
{
    m_productSheet->end();
    endCameraInUse();
}

void BWSessionWindows::endCameraInUse()
{
    if (!m_cameraInUse)
        return;
    m_cameraInUse->disconnect(this);
    m_cameraInUse->hide();
    m_cameraInUse->deleteLater(); // it may be just telling its answer
    m_cameraInUse.clear();
}

void BWSessionWindows::showNoCameraWindow()
{
    m_noCameraWindow->show();
    m_noCameraWindow->raise();
    m_noCameraWindow->activateWindow();
}

void BWSessionWindows::hideNoCameraWindow()
{
    m_noCameraWindow->hide();
}

void BWSessionWindows::openNoCameraSheet(std::function<void()> terminateProgram)
{
    m_noCameraSheet->beginSheet(&m_window, [terminateProgram = std::move(terminateProgram)](int result) {
        if (result == 1)
            terminateProgram();
    });
}

void BWSessionWindows::endNoCameraSheet()
{
    m_noCameraSheet->end();
}

void BWSessionWindows::hideAuxiliaryWindows()
{
    m_auxiliary.hideAll();
}

void BWSessionWindows::terminate()
{
    m_callbacks.terminate();
}
