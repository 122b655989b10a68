// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"

#include <functional>
#include <QObject>

/// Ends the program in order, and ends it whatever hangs: a camera and a disk get their time, not more. GUI thread.
///
/// | State             | left by                                                                            |
/// |-------------------|------------------------------------------------------------------------------------|
/// | Running           | quit() with files being saved: Asking; else StoppingCamera                         |
/// | Asking            | Cancel: Running; OK, or quitWithoutQuestion(): StoppingCamera                      |
/// | StoppingCamera    | the camera has stopped, or its time is over: FinishingCaptures                     |
/// | FinishingCaptures | all are in the album, the user does not want to wait, or their time is over: Ended |
/// | Ended             | never                                                                              |
///
/// Nothing is lost with a capture that is not in the album at the end: the next start takes it in.
class BWQuitting : public QObject {
    Q_OBJECT

public:
    enum class State { Running, Asking, StoppingCamera, FinishingCaptures, Ended };

    /// What the rest of the program does for it. The two questions return with the user's answer; meanwhile the event
    /// loop runs. `done` may be called at once, later, or never.
    struct Callbacks {
        std::function<bool()> isSaving; ///< files of an album are being saved elsewhere
        std::function<bool()> mayStopSaving; ///< asks
        std::function<void(std::function<void()> done)> stopCamera;
        std::function<bool()> completesMovie; ///< which takes longer than to stop a camera
        std::function<void(std::function<void()> done)> finishCaptures;
        std::function<bool()> mayLeaveCaptures; ///< asks
        std::function<void()> leaveCaptures; ///< to the next start
        std::function<void()> end;
    };

    static constexpr double cameraPatience = 5; // seconds
    static constexpr double moviePatience = 120;
    static constexpr double capturePatience = 600; // a long movie on its way to a slow disk

    explicit BWQuitting(Callbacks callbacks, BWClock &clock = BWClock::system());

    State state() const { return m_state; }
    /// It can no longer be cancelled.
    bool isUnderWay() const { return m_state != State::Running && m_state != State::Asking; }

    /// The user wants to quit. A second call, while captures are being finished, offers to leave them.
    void quit();
    /// The desktop session ends and nobody can answer: saving elsewhere is abandoned.
    void quitWithoutQuestion();

private:
    void setState(State state);
    void stopCamera();
    void waitForCamera(double seconds);
    void finishCaptures();
    void offerToLeaveCaptures();
    void leaveCaptures();
    void end();

    const Callbacks m_callbacks;
    BWClock &m_clock;
    State m_state = State::Running;
    bool m_offers = false;
    std::chrono::nanoseconds m_stopsSince{};
};
