// SPDX-License-Identifier: GPL-3.0-or-later
#include "CameraProbe.h"

#include <algorithm>
#include <utility>

CameraProbe::CameraProbe(BWCamera &camera, std::function<void(int)> push) : m_camera(camera), m_push(std::move(push))
{
    camera.setOnCameraFrame([this](BWCamera &, const BWFrame &frame) {
        note(m_captureThreads, [&] {
            m_frames.push_back(frame.info());
            if (m_holdNext > 0) {
                --m_holdNext;
                m_held.push_back(frame);
            }
        });
    });
    camera.setOnCameraSnapshot(
        [this](BWCamera &, const QByteArray &jpeg) { note(m_snapshotThreads, [&] { m_snapshots.append(jpeg); }); });
    camera.setOnCameraRecording([this](BWCamera &, bool recording, const BWRecordingStatus &) {
        note(m_captureThreads, [&] { m_recording.push_back(recording); });
    });
    camera.setOnCameraHardwareButton([this](BWCamera &) { note(m_captureThreads, [&] { ++m_presses; }); });
}

CameraProbe::~CameraProbe()
{
    m_camera.setOnCameraFrame({});
    m_camera.setOnCameraSnapshot({});
    m_camera.setOnCameraRecording({});
    m_camera.setOnCameraHardwareButton({});
    settle();
}

bool CameraProbe::complete(const std::function<void(const BWCamera::Completion &)> &operation)
{
    ++m_asked;
    operation([this] { note(m_captureThreads, [&] { ++m_completions; }); });
    return waitFor([&] { return m_completions >= m_asked; });
}

bool CameraProbe::start(int frames)
{
    const bool completed = complete([this](const BWCamera::Completion &done) {
        m_camera.startWithCompletion([this, done](bool success) {
            note(m_captureThreads, [&] { m_startSucceeded = success; });
            done();
        });
    });
    return completed && locked(m_startSucceeded) && stream(frames);
}

void CameraProbe::settle()
{
    // A change to the present size changes nothing, but its completion follows all earlier requests.
    setResolution(m_camera.defaultResolution());
}

bool CameraProbe::stream(int count)
{
    for (int i = 0; i < count; ++i) {
        const std::size_t before = frames().size();
        m_push(1);
        if (!waitForFrames(before + 1))
            return false;
    }
    return true;
}

std::vector<uint64_t> CameraProbe::sequences() const
{
    std::vector<uint64_t> sequences;
    for (const BWFrameInfo &frame : frames())
        sequences.push_back(frame.sequence);
    return sequences;
}

void CameraProbe::holdNextFrames(std::size_t count)
{
    const std::lock_guard lock(m_mutex);
    m_holdNext = count;
}

std::vector<BWFrame> CameraProbe::takeHeld()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_held, {});
}

bool CameraProbe::waitFor(const std::function<bool()> &condition)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(20), condition);
}

void CameraProbe::note(Threads &threads, const std::function<void()> &change)
{
    const std::lock_guard lock(m_mutex);
    threads.insert(std::this_thread::get_id());
    change();
    m_changed.notify_all();
}
