// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "camera/BWCameraCallbacks.h"
#include "camera/BWCameraControls.h"
#include "camera/BWCommandQueue.h"
#include "camera/BWFrameInspector.h"
#include "capture/BWMovieRecorder.h"
#include "capture/BWSnapshotWorker.h"

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>

/// Notices when a stream has been silent for too long. One thread.
class BWStallWatch {
public:
    using Time = std::chrono::steady_clock::time_point;

    void setLimit(std::chrono::milliseconds limit) { m_limit = limit; }

    /// A sign of life, or a new start.
    void restart(Time now) { m_since = now; }

    /// Time left until the stream counts as stalled; 0 when it does.
    std::chrono::milliseconds remaining(Time now) const
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_since + m_limit - now);
        return left > std::chrono::milliseconds(0) ? left : std::chrono::milliseconds(0);
    }
    bool expired(Time now) const { return remaining(now) == std::chrono::milliseconds(0); }

private:
    std::chrono::milliseconds m_limit{2000};
    Time m_since;
};

/// What is behind a BWCamera: the capture thread, which alone touches the device, and its states.
///
/// The public operations may be called on any thread; they put a command into the queue. The capture thread runs the
/// commands in order and fetches frames in between. It keeps the session, and with it everything it uses, alive until
/// it has ended: a thread that hangs in the kernel can be abandoned and finds everything in place if it ever comes back.
///
/// | State       | the device  | left by                                                        |
/// |-------------|-------------|----------------------------------------------------------------|
/// | Stopped     | is idle     | start: Streaming                                               |
/// | Streaming   | streams     | stop: Stopped; failed restart: Interrupted; unplug: Gone       |
/// | Interrupted | is idle     | stop: Stopped; a later restart: Streaming                      |
/// | Gone        | is not used | never                                                          |
class BWStreamSession {
public:
    static std::shared_ptr<BWStreamSession> create(BWCamera &camera, const BWDetectedCameraPtr &detectedCamera);
    BWStreamSession(BWCamera &camera, BWDetectedCameraPtr detectedCamera, std::unique_ptr<BWCaptureDevice> device);

    /// Stops everything and waits for the capture thread, but not for a device that hangs, nor on a thread of the
    /// session itself. The session then ends by itself, without calling back.
    void shutDown();
    static int runningThreads();

    void setStallTime(std::chrono::milliseconds time);

    void start(BWCamera::StartCompletion completion);
    BWStartProblem startProblem() const;
    void stop(BWCamera::Completion completion);
    bool started() const { return m_started; }
    void setResolution(BWResolution resolution, BWCamera::Completion completion);
    BWResolution resolution() const { return m_resolution; }
    void setVideoNorm(int norm, BWCamera::Completion completion);
    void setSetting(int identifier, double value);
    void takeSnapshot(BWCamera::StillReceiver receiver);
    bool startRecording(const QString &path);
    bool recording() const { return m_recorder.isActive(); }
    void stopRecording();
    bool endRecording(const QString &path, BWRecordingStatus::End reason) { return m_recorder.end(reason, path); }
    BWRecordingStatus recordingStatus() const { return m_recorder.status(); }
    int readRegister(int identifier);
    void writeRegister(int identifier, int value);
    QString registerProblem();
    bool readsButton() const { return m_device->readsButton(); }

    const BWDetectedCameraPtr &detectedCamera() const { return m_detectedCamera; }
    BWCameraCallbacks &callbacks() { return m_callbacks; }
    const BWCameraControls &controls() const { return m_controls; }
    const BWFrameInspector &inspector() const { return m_inspector; }

private:
    enum class State { Stopped, Streaming, Interrupted, Gone };

    // Any thread.
    void post(BWCommandQueue::Command command);
    void runAndWait(const BWCommandQueue::Command &command);
    bool onOwnThread() const;
    bool endsInTime() const;

    // Capture thread.
    void run();
    void captureFrame();
    void deliver(const BWFrame &frame);
    bool doStart();
    BWStartProblem tryToStart();
    void doStop();
    void doSetResolution(BWResolution resolution);
    void doSetVideoNorm(int norm);
    void dropSnapshot(const BWCamera::StillReceiver &receiver) const;
    void doTakeSnapshot(const BWCamera::StillReceiver &receiver);
    void doStartRecording(uint64_t recording);
    void reconfigure(const std::function<void()> &change);
    void resumeStream();
    void reportStreamProblem(const BWStartProblem &problem);
    void restartStalledStream();
    void deviceIsGone();
    bool deviceIsUsable() const { return m_state != State::Gone; }

    const BWDetectedCameraPtr m_detectedCamera;
    BWCameraCallbacks m_callbacks;
    BWCameraControls m_controls;
    BWCommandQueue m_queue;
    BWFrameInspector m_inspector;
    BWStallWatch m_stall;
    BWSnapshotWorker m_snapshots;
    BWCommandQueue m_recordingReports; ///< calls of the recording callback
    BWMovieRecorder m_recorder;
    State m_state = State::Stopped;
    bool m_restartWarned = false; ///< since the last good frame
    BWStartProblem m_streamProblem; ///< as last reported
    int m_videoNorm = -1; ///< as the device has it; unknown before the first change
    mutable std::mutex m_startProblemMutex;
    BWStartProblem m_startProblem;
    std::atomic<bool> m_started{false};
    std::atomic<BWResolution> m_resolution;
    // Destroyed before everything its events use.
    const std::unique_ptr<BWCaptureDevice> m_device;
    std::future<void> m_ended; ///< ready when the capture thread has done everything
    std::thread m_thread;
};
