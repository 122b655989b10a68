// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/DispatchAfterStrict.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <optional>
#include <QObject>

class BWConfigManager;
class BWProductInUse;

/// Decides which camera runs and brings it up in the right order: resolution, video norm, stream, product.
///
/// Its signals say what the user is to see. Those that are questions are answered by a call, later, or not at all once
/// they are withdrawn.
///
/// GUI thread only. Completions of a camera arrive on its own thread and are handled here later; those of an
/// earlier start or stop are ignored.
class BWCameraSession : public QObject {
    Q_OBJECT

public:
    enum class State {
        Waiting, ///< no camera; the no-camera state follows after a while
        Starting,
        Streaming,
        Switching, ///< the old camera is being stopped for another one
        Stopping, ///< the camera was unplugged and is being stopped
        NoCamera,
        Quitting,
    };

    /// How long the user sees nothing special when there is no camera.
    static constexpr double noCameraDelay = 1.5; // seconds
    /// A camera that is gone before its removal was reported is tried again after that time.
    static constexpr double goneDelay = 1; // seconds
    /// A start that takes longer counts as failed, until it succeeds.
    static constexpr double startPatience = 10; // seconds
    /// A camera that has not stopped by then is left behind, unless its movie is still being completed.
    static constexpr double stopPatience = 5; // seconds

    /// A camera that cannot be started: why, and what may lead on.
    struct StartQuestion {
        BWStartProblem problem;
        std::optional<BWResolution> smaller; ///< a size with which it may work
        BWCameraPtr other; ///< a camera to be used in its place; null if there is none
    };
    enum class StartAnswer { TryAgain, UseSmaller, UseOther, Quit };

    /// All must outlive the session.
    BWCameraSession(BWCameraManager &manager, BWConfigManager &config, BWProductInUse &productInUse,
                    BWClock &clock = BWClock::system());
    ~BWCameraSession() override;

    State state() const { return m_state; }
    /// The camera that runs or is being started; null if there is none.
    const BWCameraPtr &currentCamera() const;
    /// All that are attached.
    const QList<BWCameraPtr> &cameras() const;

    /// Why the current camera could not be started, or started again; none while it streams or is expected to.
    const BWStartProblem &problem() const { return m_problem; }

    /// Called once, when detection starts.
    void waitForCamera();
    void cameraFound(const BWDetectedCameraPtr &device);
    void cameraRemoved(const BWDetectedCameraPtr &device);

    /// Switches to another camera of the manager's; the current one changes nothing.
    void changeCurrentCamera(const BWCameraPtr &camera);

    /// Stops the camera, even one that is being started, then calls `done`; at once without a camera, never if the camera
    /// hangs.
    void stopForQuit(std::function<void()> done);

    /// What the user answered to productUnknown(), startFailed() and noCamera().
    void answerProduct(const QString &identifier);
    void answerStartQuestion(StartAnswer answer);
    void quitWithoutCamera();

Q_SIGNALS:
    void statusChanged(); ///< the current camera or problem()
    void camerasChanged(); ///< cameras() or which of them is current
    void cameraAppeared();
    void cameraAdded(const BWCameraPtr &camera); ///< once for each, to install its callbacks
    void starting();
    void started(); ///< the current camera streams, with the values of its product
    void cameraChosen(); ///< another one than the current
    void cameraGone(); ///< or about to change: its picture goes
    void noCamera(bool hadCamera); ///< `hadCamera`: one was in use since launch
    void productUnknown(); ///< which product is the current camera?
    void startFailed(const BWCameraSession::StartQuestion &question); ///< in place of the one asked before
    void questionsWithdrawn(); ///< productUnknown() and startFailed()
    void quitRequested();

private:
    void setState(State state);
    /// A completion for the camera: does the work on the GUI thread, unless another start or stop began in between.
    BWCamera::Completion then(std::function<void()> work);
    void doStart();
    void startCamera();
    void takeStartFailure(const BWStartProblem &problem);
    void askAboutStart();
    BWCameraPtr otherCamera() const;
    void endQuestions();
    /// The user may cancel: then the question stands again.
    void requestQuit(const std::function<void()> &askAgain);
    void watchStream(BWCamera &camera);
    void setProblem(const BWStartProblem &problem);
    void stopCurrentCamera(State state);
    void giveUpStopLater(double seconds, int round = 0);
    void continueAfterStop();
    void takeDown(BWCameraPtr &&camera);
    void endMovie();
    /// Does the work after that time, unless another start or stop began in between.
    void later(double seconds, std::function<void()> work);
    void setToNoCamera();
    void scheduleNoCamera();
    void cancelNoCamera();

    BWCameraManager &m_manager;
    BWConfigManager &m_config;
    BWProductInUse &m_productInUse;
    BWClock &m_clock;
    State m_state = State::Waiting;
    BWCameraPtr m_nextCamera; // the one to switch to
    DispatchAfterStrict::Handle m_noCameraSource;
    bool m_hadCamera = false;
    bool m_startHangs = false;
    int m_silentRetries = 0; // of this start, without a question
    BWStartProblem m_problem;
    std::optional<StartQuestion> m_question; // while it is open
    int m_token = 0; // counts the starts and stops; answers that carry an old one are stale
    BWAliveToken m_alive;
    BWWorkerPool m_cameraEnds{4, BWWorkerPool::untilDone}; // a camera that hangs takes seconds
};
