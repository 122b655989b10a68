#pragma once

#include "BWACUDriver/BWCamera.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <QList>
#include <thread>
#include <vector>

/// Listens to one camera and lets a test wait for what it expects. A wait that lasts too long answers false.
class CameraProbe {
public:
    /// Takes over all callbacks of the camera.
    explicit CameraProbe(BWCamera &camera);
    ~CameraProbe();

    // Operations, waited for. Called on one thread.
    bool start();
    void stop();
    void setResolution(BWResolution resolution);
    void setVideoNorm(BWEmpiaCamera &camera, int norm);

    bool waitForFrames(std::size_t count);
    bool waitForSnapshots(qsizetype count);
    bool waitForRecordingChanges(std::size_t count);
    bool waitForButtonPresses(int count);

    /// Waits until all commands given so far are carried out.
    void settle();

    /// What has arrived up to now.
    std::vector<BWFrameInfo> frames() const;
    std::vector<uint64_t> sequences() const;
    QList<QByteArray> snapshots() const;
    std::vector<bool> recordingChanges() const;

    /// Keeps that many of the next frames, and with them their buffers.
    void holdNextFrames(std::size_t count);
    std::vector<BWFrame> takeHeld();

    /// The one thread on which frames, recording changes, presses and completions came; nothing if there were several.
    std::thread::id captureThread() const;
    std::thread::id snapshotThread() const;

private:
    BWCamera::Completion completion();
    bool waitForCompletion();
    bool waitFor(const std::function<bool()> &condition);
    void note(const std::function<void()> &change);
    void noteCaptureThread();

    BWCamera &m_camera;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<BWFrameInfo> m_frames;
    std::vector<BWFrame> m_held;
    std::size_t m_holdNext = 0;
    QList<QByteArray> m_snapshots;
    std::vector<bool> m_recording;
    int m_presses = 0;
    int m_asked = 0; ///< operations with a completion; the test's thread only
    int m_completions = 0;
    bool m_startSucceeded = false;
    std::vector<std::thread::id> m_captureThreads;
    std::thread::id m_snapshotThread;
};
