// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraStatus.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// Connects one plugged-in simulated camera with the device that a session has opened on it: at one end the hand that
/// pushes frames, presses the button, causes faults and pulls the plug, at the other the stream that waits. Plugging in
/// again makes a new cable. Any thread.
class BWSimulatedCable {
public:
    using Time = std::chrono::steady_clock::time_point;

    enum class Turn { Frame, Nothing, Gone };
    enum class Pacing { RealTime, Manual };
    enum class Claim { Granted, InUse, Gone };

    /// What happens to one frame.
    struct Fault {
        bool lost = false;
        bool torn = false;
        bool truncated = false;
    };

    explicit BWSimulatedCable(Pacing pacing);

    // The hand.
    void pull();
    void pressButton();
    void stall();
    void tearNextFrames(int count);
    void truncateNextFrames(int count);
    void loseNextFrames(int count);
    void pushFrames(int count);

    // The device.
    /// Reserves the camera for the device; only one at a time may stream. Ends a stall.
    Claim claim(const void *device);
    void release(const void *device);

    /// `button` is called for each press until it is set again or cleared.
    void setButton(const void *device, std::function<void()> button);
    void clearButton(const void *device);

    /// Waits until a frame may be captured: with manual pacing until one is pushed, else until `due`. Nothing when
    /// `deadline` passes first, or after interrupt().
    Turn waitForTurn(Time due, Time deadline);
    Fault takeFault();
    void interrupt();

    /// Whether a pushed frame has not been captured yet; always true in real time.
    bool framesOutstanding() const;

private:
    /// Sets one of the members below and wakes a waiting stream.
    template <typename Value>
    void set(Value BWSimulatedCable::*member, Value value);

    const Pacing m_pacing;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_gone = false;
    bool m_stalled = false;
    bool m_interrupted = false;
    int m_tear = 0;
    int m_truncate = 0;
    int m_lose = 0;
    int m_pushed = 0;
    const void *m_streamingDevice = nullptr;

    std::mutex m_buttonMutex; ///< held during a press, so that there is no call after clearButton()
    const void *m_buttonDevice = nullptr;
    std::function<void()> m_button;
};

/// What keeps a simulated camera from starting: set by the hand that holds it, read by the devices opened on it. Kept
/// over unplugging. Any thread.
class BWSimulatedObstacle {
public:
    void set(const BWStartProblem &problem)
    {
        const std::lock_guard lock(m_mutex);
        m_problem = problem;
    }

    BWStartProblem problem() const
    {
        const std::lock_guard lock(m_mutex);
        return m_problem;
    }

private:
    mutable std::mutex m_mutex;
    BWStartProblem m_problem;
};
