// SPDX-License-Identifier: GPL-3.0-or-later
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
                                 BWClock &clock)
    : m_manager(manager), m_config(config), m_productInUse(productInUse), m_clock(clock)
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

/// Releases a camera on another thread, because that waits for the camera's own.
void BWCameraSession::takeDown(BWCameraPtr &&camera)
{
    m_cameraEnds.run([held = std::move(camera)]() mutable { held.reset(); });
}

/// Completes the movie even if its camera hangs.
void BWCameraSession::endMovie()
{
    m_cameraEnds.run([camera = currentCamera()] { camera->stopRecording(); });
}

BWCamera::Completion BWCameraSession::then(std::function<void()> work)
{
    return [this, token = m_token, alive = m_alive.watch(), work = std::move(work)] {
        // On the camera's thread, where this object may be gone: only the GUI thread uses it.
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

const BWCameraPtr &BWCameraSession::currentCamera() const
{
    return m_productInUse.camera();
}

const QList<BWCameraPtr> &BWCameraSession::cameras() const
{
    return m_manager.cameras();
}

void BWCameraSession::waitForCamera()
{
    if (!currentCamera() && m_state == State::Waiting)
        scheduleNoCamera();
}

void BWCameraSession::cameraFound(const BWDetectedCameraPtr &device)
{
    if (m_state == State::Quitting)
        return;
    cancelNoCamera();
    Q_EMIT cameraAppeared();
    const BWCameraPtr camera = m_manager.addDetectedCamera(device);
    watchStream(*camera);
    Q_EMIT cameraAdded(camera);
    if (currentCamera()) {
        Q_EMIT camerasChanged();
        if (m_question && m_question->other != otherCamera())
            askAboutStart();
        return;
    }
    m_productInUse.setCamera(camera);
    Q_EMIT camerasChanged();
    doStart();
}

void BWCameraSession::cameraRemoved(const BWDetectedCameraPtr &device)
{
    qCInfo(bwApp, "Removed camera: %s", qUtf8Printable(device->description()));
    const bool isCurrent = currentCamera() && currentCamera()->detectedCamera() == device;
    if (isCurrent && (m_state == State::Starting || m_state == State::Streaming))
        stopCurrentCamera(State::Stopping);
    BWCameraPtr removed;
    for (const BWCameraPtr &camera : m_manager.cameras()) {
        if (camera->detectedCamera() == device)
            removed = camera;
    }
    m_manager.removeDetectedCamera(device);
    Q_EMIT camerasChanged();
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
    if (!camera || camera == currentCamera())
        return;
    if (m_state != State::Starting && m_state != State::Streaming)
        return;
    m_nextCamera = camera;
    Q_EMIT cameraChosen();
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
    currentCamera()->stopWithCompletion(then([this] { continueAfterStop(); }));
    giveUpStopLater(std::exchange(m_startHangs, false) ? 0 : stopPatience);
}

void BWCameraSession::giveUpStopLater(double seconds, int round)
{
    later(seconds, [this, round] {
        constexpr int longestMovie = 24; // rounds of the patience for a camera: two minutes
        if (currentCamera()->recording() && round < longestMovie) {
            if (round == 0)
                endMovie();
            giveUpStopLater(stopPatience, round + 1);
            return;
        }
        qCWarning(bwApp).noquote() << currentCamera()->detectedCamera()->description()
                                   << "does not stop and is left behind";
        continueAfterStop();
    });
}

void BWCameraSession::continueAfterStop()
{
    ++m_token;
    BWCameraPtr stopped = currentCamera();
    m_productInUse.setCamera(nullptr);
    takeDown(std::move(stopped));
    Q_EMIT cameraGone();
    const QList<BWCameraPtr> &cameras = m_manager.cameras();
    const BWCameraPtr wanted = std::exchange(m_nextCamera, {});
    if (wanted && cameras.contains(wanted))
        m_productInUse.setCamera(wanted);
    else if (!cameras.isEmpty())
        m_productInUse.setCamera(cameras.first());
    Q_EMIT camerasChanged();
    if (currentCamera()) {
        doStart();
        return;
    }
    setState(State::Waiting);
    Q_EMIT statusChanged();
    scheduleNoCamera();
}

void BWCameraSession::doStart()
{
    if (m_state != State::Starting) {
        setState(State::Starting);
        m_silentRetries = 0;
    }
    Q_EMIT starting();
    m_hadCamera = true;
    setProblem({});
    endQuestions();
    m_startHangs = false;
    ++m_token;
    later(startPatience, [this] {
        if (m_state != State::Starting || m_question)
            return;
        qCWarning(bwApp).noquote() << currentCamera()->detectedCamera()->description() << "does not start";
        m_startHangs = true;
        setProblem({BWStartProblem::Kind::Failed});
        askAboutStart();
    });
    m_productInUse.prepareStart();
    startCamera(); // the camera carries out one after the other
}

void BWCameraSession::startCamera()
{
    const auto succeeded = then([this] {
        m_startHangs = false;
        if (m_question) { // the start took so long that it counted as failed
            endQuestions();
            setProblem({});
        }
        setState(State::Streaming);
        m_productInUse.cameraStarted();
        Q_EMIT started();
        if (m_config.currentProductIdentifierForCameraIdentifier(currentCamera()->identifierForProducts()).isNull())
            Q_EMIT productUnknown();
    });
    const auto failed = then([this] { takeStartFailure(currentCamera()->startProblem()); });
    currentCamera()->startWithCompletion([succeeded, failed](bool success) { success ? succeeded() : failed(); });
}

void BWCameraSession::takeStartFailure(const BWStartProblem &problem)
{
    m_startHangs = false;
    constexpr int maxSilentRetries = 3;
    if (problem.kind == BWStartProblem::Kind::Gone && m_silentRetries < maxSilentRetries) {
        // Its removal is about to be reported, and the user cannot help.
        ++m_silentRetries;
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
        smaller = smallerResolution(*currentCamera());
    m_question = {m_problem, smaller, otherCamera()};
    Q_EMIT startFailed(*m_question);
}

void BWCameraSession::answerStartQuestion(StartAnswer answer)
{
    if (!m_question)
        return; // it was withdrawn
    using Answer = StartAnswer;
    const StartQuestion question = *m_question;
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

/// The next in the list, so that the user reaches each of several busy cameras.
BWCameraPtr BWCameraSession::otherCamera() const
{
    const QList<BWCameraPtr> &cameras = m_manager.cameras();
    const BWCameraPtr next =
        cameras.value((cameras.indexOf(currentCamera()) + 1) % std::max<qsizetype>(cameras.size(), 1));
    return next == currentCamera() ? nullptr : next;
}

void BWCameraSession::endQuestions()
{
    m_question.reset();
    Q_EMIT questionsWithdrawn();
}

void BWCameraSession::requestQuit(const std::function<void()> &askAgain)
{
    const int token = m_token;
    Q_EMIT quitRequested();
    if (token == m_token)
        askAgain();
}

void BWCameraSession::watchStream(BWCamera &camera)
{
    camera.setOnCameraStreamProblem([this, alive = m_alive.watch()](BWCamera &source, const BWStartProblem &problem) {
        BWMainQueue::post(alive, [this, camera = &source, problem] {
            if (currentCamera().get() == camera && m_state == State::Streaming)
                setProblem(problem);
        });
    });
}

void BWCameraSession::setProblem(const BWStartProblem &problem)
{
    m_problem = problem;
    Q_EMIT statusChanged();
}

void BWCameraSession::answerProduct(const QString &identifier)
{
    if (currentCamera())
        m_config.setCurrentProductIdentifier(identifier, currentCamera()->identifierForProducts());
}

void BWCameraSession::stopForQuit(std::function<void()> done)
{
    cancelNoCamera();
    if (m_state != State::Quitting)
        setState(State::Quitting);
    endQuestions();
    ++m_token;
    m_productInUse.cameraStops();
    if (!currentCamera()) {
        done();
        return;
    }
    if (currentCamera()->recording())
        endMovie();
    currentCamera()->stopWithCompletion(then(std::move(done)));
}

void BWCameraSession::setToNoCamera()
{
    setState(State::NoCamera);
    Q_EMIT statusChanged();
    Q_EMIT noCamera(m_hadCamera);
}

void BWCameraSession::quitWithoutCamera()
{
    requestQuit([this] { Q_EMIT noCamera(m_hadCamera); });
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
