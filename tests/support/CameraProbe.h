// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <QList>
#include <set>
#include <thread>
#include <vector>

/// Listens to one camera and lets a test wait for what it expects. A wait that lasts too long answers false.
class CameraProbe {
public:
    /// Sets all callbacks of the camera; `push` lets it capture that many frames.
    CameraProbe(BWCamera &camera, std::function<void(int count)> push);
    ~CameraProbe();

    // Operations, waited for. Called on one thread.
    bool complete(const std::function<void(const BWCamera::Completion &)> &operation);
    /// Starts, and lets that many frames pass.
    bool start(int frames = 0);
    void stop()
    {
        complete([this](const BWCamera::Completion &done) { m_camera.stopWithCompletion(done); });
    }
    void setResolution(BWResolution resolution)
    {
        complete([&](const BWCamera::Completion &done) { m_camera.setResolution(resolution, done); });
    }
    /// Waits until all commands given so far are carried out.
    void settle();
    /// Pushes frames one after the other, waiting for each to be delivered.
    bool stream(int count);

    bool waitForFrames(std::size_t count)
    {
        return waitFor([&] { return m_frames.size() >= count; });
    }
    bool waitForSnapshots(qsizetype count)
    {
        return waitFor([&] { return m_snapshots.size() >= count; });
    }
    bool waitForRecordingChanges(std::size_t count)
    {
        return waitFor([&] { return m_recording.size() >= count; });
    }
    bool waitForButtonPresses(int count)
    {
        return waitFor([&] { return m_presses >= count; });
    }

    // What has arrived up to now.
    std::vector<BWFrameInfo> frames() const { return locked(m_frames); }
    std::vector<uint64_t> sequences() const;
    QList<QByteArray> snapshots() const { return locked(m_snapshots); }
    std::vector<bool> recordingChanges() const { return locked(m_recording); }

    /// Keeps that many of the next frames, and with them their buffers.
    void holdNextFrames(std::size_t count);
    bool waitForHeld(std::size_t count)
    {
        return waitFor([&] { return m_held.size() >= count; });
    }
    std::vector<BWFrame> takeHeld();

    /// The threads on which frames, recording changes, presses and completions came.
    std::set<std::thread::id> captureThreads() const { return locked(m_captureThreads); }
    std::set<std::thread::id> snapshotThreads() const { return locked(m_snapshotThreads); }

private:
    using Threads = std::set<std::thread::id>;

    template <typename Value>
    Value locked(const Value &value) const
    {
        const std::lock_guard lock(m_mutex);
        return value;
    }
    bool waitFor(const std::function<bool()> &condition);
    void note(Threads &threads, const std::function<void()> &change);

    BWCamera &m_camera;
    const std::function<void(int)> m_push;
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
    Threads m_captureThreads;
    Threads m_snapshotThreads;
};
