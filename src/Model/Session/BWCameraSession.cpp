#include "Model/Session/BWCameraSession.h"

#include "Model/BWCameraProduct.h"
#include "Model/BWConfigManager.h"
#include "Model/Session/BWCameraSessionUi.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const char *nameOf(BWCameraSession::State state)
{
    using State = BWCameraSession::State;
    switch (state) {
    case State::Waiting:
        return "waiting";
    case State::Starting:
        return "starting";
    case State::Streaming:
        return "streaming";
    case State::Switching:
        return "switching";
    case State::Stopping:
        return "stopping";
    case State::NoCamera:
        return "no camera";
    case State::Quitting:
        return "quitting";
    }
    return "?";
}

/// What may follow what. Quitting may follow everything and is followed by nothing.
bool mayFollow(BWCameraSession::State from, BWCameraSession::State to)
{
    using State = BWCameraSession::State;
    if (from == State::Quitting)
        return false;
    switch (to) {
    case State::Quitting:
        return true;
    case State::Waiting:
        return from == State::Stopping || from == State::Switching;
    case State::Starting:
        return from != State::Streaming;
    case State::Streaming:
        return from == State::Starting;
    case State::Switching:
    case State::Stopping:
        return from == State::Starting || from == State::Streaming;
    case State::NoCamera:
        return from == State::Waiting;
    }
    return false;
}

/// The largest of the camera's sizes that is smaller than the one it failed to start with.
std::optional<BWResolution> smallerResolution(const BWCamera &camera)
{
    const auto area = [](BWResolution size) { return qint64(size.width()) * size.height(); };
    std::optional<BWResolution> best;
    for (const BWResolution &size : camera.detectedCamera()->cameraDescription()->availableResolutions) {
        if (area(size) < area(camera.defaultResolution()) && (!best || area(size) > area(*best)))
            best = size;
    }
    return best;
}

} // namespace

BWCameraSession::BWCameraSession(BWCameraManager &manager, BWConfigManager &config, BWCameraSessionUi &ui,
                                 std::function<void(BWCamera &)> prepareCamera, BWClock &clock)
    : m_manager(manager), m_config(config), m_ui(ui), m_prepareCamera(std::move(prepareCamera)), m_clock(clock)
{
}

BWCameraSession::~BWCameraSession()
{
    cancelNoCamera();
}

void BWCameraSession::setState(State state)
{
    if (!mayFollow(m_state, state))
        qFatal("Camera session: %s cannot follow %s", nameOf(state), nameOf(m_state));
    qCInfo(bwApp, "Camera session: %s", nameOf(state));
    m_state = state;
}

BWCamera::Completion BWCameraSession::then(std::function<void()> work)
{
    return [this, token = m_token, alive = std::weak_ptr(m_alive), work = std::move(work)] {
        // On the camera's thread, where this object may be gone already: only the GUI thread looks at it.
        BWMainQueue::post(alive, [this, token, work] {
            if (token == m_token)
                work();
        });
    };
}

std::shared_ptr<BWCameraProduct> BWCameraSession::currentProduct() const
{
    return m_currentCamera ? m_config.currentProductForCameraIdentifier(m_currentCamera->identifierForProducts())
                           : nullptr;
}

bool BWCameraSession::currentProductHasGrid() const
{
    const auto product = currentProduct();
    return product && (product->identifier() == "dx10"_L1 || product->identifier() == "dx12"_L1);
}

void BWCameraSession::waitForCamera()
{
    if (!m_currentCamera && m_state == State::Waiting)
        scheduleNoCamera();
}

void BWCameraSession::cameraFound(const BWDetectedCameraPtr &device)
{
    if (m_state == State::Quitting)
        return;
    cancelNoCamera();
    m_ui.hideNoCameraWindow();
    const BWCameraPtr camera = m_manager.addDetectedCamera(device);
    watchStream(*camera);
    m_prepareCamera(*camera);
    m_ui.endNoCameraSheet();
    if (m_currentCamera) {
        updateCameraList();
        return;
    }
    m_currentCamera = camera;
    updateCameraList();
    doStart();
}

void BWCameraSession::cameraRemoved(const BWDetectedCameraPtr &device)
{
    qCInfo(bwApp, "Removed camera: %s", qUtf8Printable(device->description()));
    const bool isCurrent = m_currentCamera && m_currentCamera->detectedCamera() == device;
    if (isCurrent && (m_state == State::Starting || m_state == State::Streaming))
        stopCurrentCamera(State::Stopping);
    m_manager.removeDetectedCamera(device);
    updateCameraList();
}

void BWCameraSession::changeCurrentCamera(const BWCameraPtr &camera)
{
    if (camera && m_state == State::Switching) {
        m_nextCamera = camera; // also the one that is being stopped
        return;
    }
    if (!camera || camera == m_currentCamera)
        return;
    if (m_state != State::Starting && m_state != State::Streaming)
        return;
    m_nextCamera = camera;
    stopCurrentCamera(State::Switching);
}

void BWCameraSession::stopCurrentCamera(State state)
{
    setState(state);
    m_problem = {};
    m_ui.endQuestions();
    ++m_token;
    // Ends a running recording first. Not stopRecording(), which would make the window wait for a long movie.
    m_currentCamera->stopWithCompletion(then([this] { continueAfterStop(); }));
}

void BWCameraSession::continueAfterStop()
{
    m_currentCamera.reset();
    m_ui.resetUIToInitial();
    const QList<BWCameraPtr> &cameras = m_manager.cameras();
    const BWCameraPtr wanted = std::exchange(m_nextCamera, {});
    if (wanted && cameras.contains(wanted))
        m_currentCamera = wanted;
    else if (!cameras.isEmpty())
        m_currentCamera = cameras.first();
    updateCameraList();
    if (m_currentCamera) {
        doStart();
        return;
    }
    setState(State::Waiting);
    m_ui.updateStateLabel();
    scheduleNoCamera();
}

void BWCameraSession::doStart()
{
    if (m_state != State::Starting) {
        setState(State::Starting);
        m_quietRetries = 0;
    }
    m_ui.enableCameraMenus();
    m_firstCameraInstalled = true;
    setProblem({});

    const auto product = currentProduct();
    const BWResolution wished = product ? product->currentResolution() : m_currentCamera->defaultResolution();
    ++m_token;
    m_currentCamera->setResolution(wished, then([this] {
                                       auto *bridge = dynamic_cast<BWEmpiaCamera *>(m_currentCamera.get());
                                       if (!bridge) {
                                           startCamera();
                                           return;
                                       }
                                       const auto current = currentProduct();
                                       const double norm =
                                           current ? current->valueForSetting(BWSettingVideoNorm).value_or(0) : 0;
                                       bridge->setVideoNorm(static_cast<int>(norm), then([this] { startCamera(); }));
                                   }));
}

void BWCameraSession::startCamera()
{
    const auto succeeded = then([this] {
        setState(State::Streaming);
        m_ui.setStartedCamera(m_currentCamera);
        setupCurrentCamera();
    });
    const auto failed = then([this] { startFailed(m_currentCamera->startProblem()); });
    m_currentCamera->startWithCompletion([succeeded, failed](bool success) { success ? succeeded() : failed(); });
}

void BWCameraSession::startFailed(const BWStartProblem &problem)
{
    const auto stillStarting = [this, token = m_token] { return token == m_token && m_state == State::Starting; };
    constexpr int mostQuietRetries = 3;
    if (problem.kind == BWStartProblem::Kind::Gone && m_quietRetries < mostQuietRetries) {
        // Its removal is about to be reported. Nobody can do anything about it.
        ++m_quietRetries;
        DispatchAfterStrict::dispatchForQueue(
            this,
            [this, stillStarting] {
                if (stillStarting())
                    doStart();
            },
            goneDelay, m_clock);
        return;
    }
    setProblem(problem);
    std::optional<BWResolution> smaller;
    if (problem.kind == BWStartProblem::Kind::NoBandwidth)
        smaller = smallerResolution(*m_currentCamera);
    m_ui.showCameraInUse(problem, smaller, [this, stillStarting](std::optional<BWResolution> size) {
        if (!stillStarting())
            return;
        if (const auto product = currentProduct(); product && size)
            product->setCurrentResolution(*size);
        doStart();
    });
}

void BWCameraSession::watchStream(BWCamera &camera)
{
    camera.setOnCameraStreamProblem(
        [this, alive = std::weak_ptr(m_alive)](BWCamera &source, const BWStartProblem &problem) {
            BWMainQueue::post(alive, [this, camera = &source, problem] {
                if (m_currentCamera.get() == camera && m_state == State::Streaming)
                    setProblem(problem);
            });
        });
}

void BWCameraSession::setProblem(const BWStartProblem &problem)
{
    m_problem = problem;
    m_ui.updateStateLabel();
}

void BWCameraSession::setupCurrentCamera()
{
    showResolutions();
    m_ui.enableGrid(currentProductHasGrid());
    m_ui.updateImageDisplay();
    m_ui.bringMainWindowToFront();
    if (m_config.currentProductIdentifierForCameraIdentifier(m_currentCamera->identifierForProducts()).isNull())
        requestProductFirstTime();
}

void BWCameraSession::requestProductFirstTime()
{
    const QString type = m_currentCamera->identifierForProducts();
    m_ui.askForProduct(m_currentCamera, [this, type](const QString &chosen) {
        if (!chosen.isNull())
            m_config.setCurrentProductIdentifier(chosen, type);
    });
}

void BWCameraSession::changeResolution(BWResolution resolution)
{
    if (m_state != State::Streaming)
        return;
    m_currentCamera->setResolution(resolution, then([this] { m_ui.updateImageDisplay(); }));
}

void BWCameraSession::useProductResolution()
{
    const auto product = currentProduct();
    if (m_state != State::Streaming || !product || m_currentCamera->recording()
        || product->currentResolution() == m_currentCamera->defaultResolution())
        return;
    m_currentCamera->setResolution(product->currentResolution(), then([this] {
                                       showResolutions();
                                       m_ui.updateImageDisplay();
                                   }));
}

void BWCameraSession::showResolutions()
{
    m_ui.showResolutions(m_currentCamera->detectedCamera()->cameraDescription()->availableResolutions,
                         m_currentCamera->defaultResolution());
}

void BWCameraSession::stopForQuit(std::function<void()> done)
{
    cancelNoCamera();
    if (m_state != State::Quitting)
        setState(State::Quitting);
    m_ui.endQuestions();
    ++m_token;
    if (!m_currentCamera || !m_currentCamera->started()) {
        done();
        return;
    }
    m_currentCamera->stopWithCompletion(then(std::move(done)));
}

void BWCameraSession::setToNoCamera()
{
    setState(State::NoCamera);
    m_ui.hideAuxiliaryWindows();
    m_ui.updateStateLabel();
    if (m_firstCameraInstalled)
        m_ui.openNoCameraSheet([this] { m_ui.terminate(); });
    else
        m_ui.showNoCameraWindow();
}

void BWCameraSession::scheduleNoCamera()
{
    cancelNoCamera();
    m_noCameraSource = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            m_noCameraSource.reset();
            setToNoCamera();
        },
        noCameraDelay, m_clock);
}

void BWCameraSession::cancelNoCamera()
{
    if (const auto source = std::exchange(m_noCameraSource, {}))
        source->cancel();
}

void BWCameraSession::updateCameraList()
{
    m_ui.updateCameraList(m_manager.cameras(), m_currentCamera);
}
