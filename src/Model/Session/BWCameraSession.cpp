#include "Model/Session/BWCameraSession.h"

#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
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

BWCameraSession::BWCameraSession(BWCameraManager &manager, BWConfigManager &config, BWProductInUse &productInUse,
                                 BWCameraSessionUi &ui, std::function<void(BWCamera &)> prepareCamera, BWClock &clock)
    : m_manager(manager),
      m_config(config),
      m_productInUse(productInUse),
      m_ui(ui),
      m_prepareCamera(std::move(prepareCamera)),
      m_clock(clock)
{
    connect(&productInUse, &BWProductInUse::resolutionChanged, this, [this] {
        showResolutions();
        m_ui.updateImageDisplay();
    });
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

/// Lets go of a camera where nobody minds waiting for its thread.
void BWCameraSession::takeDown(BWCameraPtr &&camera)
{
    m_cameraEnds.run([held = std::move(camera)]() mutable { held.reset(); });
}

/// A movie becomes whole even if its camera hangs, and cannot end it.
void BWCameraSession::endMovie()
{
    m_cameraEnds.run([camera = m_currentCamera] { camera->stopRecording(); });
}

BWCamera::Completion BWCameraSession::then(std::function<void()> work)
{
    return [this, token = m_token, alive = m_alive.watch(), work = std::move(work)] {
        // On the camera's thread, where this object may be gone already: only the GUI thread looks at it.
        BWMainQueue::post(alive, [this, token, work] {
            if (token == m_token)
                work();
        });
    };
}

void BWCameraSession::later(double seconds, std::function<void()> work)
{
    DispatchAfterStrict::dispatchForQueue(
        this,
        [this, token = m_token, work = std::move(work)] {
            if (token == m_token)
                work();
        },
        seconds, m_clock);
}

void BWCameraSession::setCurrentCamera(const BWCameraPtr &camera)
{
    m_currentCamera = camera;
    m_productInUse.setCamera(camera);
}

bool BWCameraSession::currentProductHasGrid() const
{
    const auto product = m_productInUse.currentProduct();
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
        if (m_question && m_question->other != otherCamera())
            askAboutStart();
        return;
    }
    setCurrentCamera(camera);
    updateCameraList();
    doStart();
}

void BWCameraSession::cameraRemoved(const BWDetectedCameraPtr &device)
{
    qCInfo(bwApp, "Removed camera: %s", qUtf8Printable(device->description()));
    const bool isCurrent = m_currentCamera && m_currentCamera->detectedCamera() == device;
    if (isCurrent && (m_state == State::Starting || m_state == State::Streaming))
        stopCurrentCamera(State::Stopping);
    BWCameraPtr removed;
    for (const BWCameraPtr &camera : m_manager.cameras()) {
        if (camera->detectedCamera() == device)
            removed = camera;
    }
    m_manager.removeDetectedCamera(device);
    updateCameraList();
    if (m_question && removed && m_question->other == removed)
        askAboutStart();
    takeDown(std::move(removed));
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
    endQuestions();
    ++m_token;
    m_productInUse.cameraStops();
    // Ends a running recording first. Not stopRecording(), which would make the window wait for a long movie.
    m_currentCamera->stopWithCompletion(then([this] { continueAfterStop(); }));
    giveUpStopLater(std::exchange(m_startHangs, false) ? 0 : stopPatience);
}

void BWCameraSession::giveUpStopLater(double seconds, int round)
{
    later(seconds, [this, round] {
        constexpr int longestMovie = 24; // rounds of the patience for a camera: two minutes
        if (m_currentCamera->recording() && round < longestMovie) {
            if (round == 0)
                endMovie();
            giveUpStopLater(stopPatience, round + 1);
            return;
        }
        qCWarning(bwApp).noquote() << m_currentCamera->detectedCamera()->description() << "does not stop; it is left";
        continueAfterStop();
    });
}

void BWCameraSession::continueAfterStop()
{
    ++m_token;
    BWCameraPtr stopped = m_currentCamera;
    setCurrentCamera(nullptr);
    takeDown(std::move(stopped));
    m_ui.resetUIToInitial();
    const QList<BWCameraPtr> &cameras = m_manager.cameras();
    const BWCameraPtr wanted = std::exchange(m_nextCamera, {});
    if (wanted && cameras.contains(wanted))
        setCurrentCamera(wanted);
    else if (!cameras.isEmpty())
        setCurrentCamera(cameras.first());
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
    endQuestions();
    m_startHangs = false;
    ++m_token;
    later(startPatience, [this] {
        if (m_state != State::Starting || m_question)
            return;
        qCWarning(bwApp).noquote() << m_currentCamera->detectedCamera()->description() << "does not start";
        m_startHangs = true;
        setProblem({BWStartProblem::Kind::Failed});
        askAboutStart();
    });
    m_productInUse.prepareStart(then([this] { startCamera(); }));
}

void BWCameraSession::startCamera()
{
    const auto succeeded = then([this] {
        m_startHangs = false;
        if (m_question) { // which took so long that it was taken for failed
            endQuestions();
            setProblem({});
        }
        setState(State::Streaming);
        m_productInUse.cameraStarted();
        m_ui.cameraStarted();
        setupCurrentCamera();
    });
    const auto failed = then([this] { startFailed(m_currentCamera->startProblem()); });
    m_currentCamera->startWithCompletion([succeeded, failed](bool success) { success ? succeeded() : failed(); });
}

void BWCameraSession::startFailed(const BWStartProblem &problem)
{
    m_startHangs = false;
    constexpr int mostQuietRetries = 3;
    if (problem.kind == BWStartProblem::Kind::Gone && m_quietRetries < mostQuietRetries) {
        // Its removal is about to be reported. Nobody can do anything about it.
        ++m_quietRetries;
        later(goneDelay, [this] { doStart(); });
        return;
    }
    setProblem(problem);
    askAboutStart();
}

void BWCameraSession::askAboutStart()
{
    std::optional<BWResolution> smaller;
    if (m_problem.kind == BWStartProblem::Kind::NoBandwidth)
        smaller = smallerResolution(*m_currentCamera);
    m_question = {m_problem, smaller, otherCamera()};
    m_ui.showCameraInUse(*m_question, [this, token = m_token](BWCameraSessionUi::StartAnswer answer) {
        if (token == m_token && m_question)
            answerAboutStart(answer);
    });
}

void BWCameraSession::answerAboutStart(BWCameraSessionUi::StartAnswer answer)
{
    using Answer = BWCameraSessionUi::StartAnswer;
    const BWCameraSessionUi::StartQuestion question = *m_question;
    switch (answer) {
    case Answer::UseSmaller:
        if (const auto product = m_productInUse.currentProduct(); product && question.smaller)
            product->setCurrentResolution(*question.smaller);
        break;
    case Answer::UseOther:
        if (question.other) {
            changeCurrentCamera(question.other);
            return;
        }
        break;
    case Answer::Quit:
        requestQuit([this] { askAboutStart(); });
        return;
    case Answer::TryAgain:
        break;
    }
    doStart();
}

/// The one after it, so that with several that are busy the user comes to each of them.
BWCameraPtr BWCameraSession::otherCamera() const
{
    const QList<BWCameraPtr> &cameras = m_manager.cameras();
    const BWCameraPtr next =
        cameras.value((cameras.indexOf(m_currentCamera) + 1) % std::max<qsizetype>(cameras.size(), 1));
    return next == m_currentCamera ? nullptr : next;
}

void BWCameraSession::endQuestions()
{
    m_question.reset();
    m_ui.endQuestions();
}

void BWCameraSession::requestQuit(const std::function<void()> &askAgain)
{
    const int token = m_token;
    m_ui.terminate();
    if (token == m_token)
        askAgain();
}

void BWCameraSession::watchStream(BWCamera &camera)
{
    camera.setOnCameraStreamProblem([this, alive = m_alive.watch()](BWCamera &source, const BWStartProblem &problem) {
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
    endQuestions();
    ++m_token;
    m_productInUse.cameraStops();
    if (!m_currentCamera) {
        done();
        return;
    }
    if (m_currentCamera->recording())
        endMovie();
    m_currentCamera->stopWithCompletion(then(std::move(done)));
}

void BWCameraSession::setToNoCamera()
{
    setState(State::NoCamera);
    m_ui.hideAuxiliaryWindows();
    m_ui.updateStateLabel();
    if (m_firstCameraInstalled)
        openNoCameraSheet();
    else
        m_ui.showNoCameraWindow();
}

void BWCameraSession::openNoCameraSheet()
{
    m_ui.openNoCameraSheet([this] { requestQuit([this] { openNoCameraSheet(); }); });
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
