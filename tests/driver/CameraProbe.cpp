#include "CameraProbe.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::chrono::seconds patience(20);

} // namespace

CameraProbe::CameraProbe(BWCamera &camera) : m_camera(camera)
{
    camera.setOnCameraFrame([this](BWCamera &, const BWFrame &frame) {
        note([&] {
            noteCaptureThread();
            m_frames.push_back(frame.info());
            if (m_holdNext > 0) {
                --m_holdNext;
                m_held.push_back(frame);
            }
        });
    });
    camera.setOnCameraSnapshot([this](BWCamera &, const QByteArray &jpeg) {
        note([&] {
            m_snapshotThread = std::this_thread::get_id();
            m_snapshots.append(jpeg);
        });
    });
    camera.setOnCameraRecording([this](BWCamera &, bool recording) {
        note([&] {
            noteCaptureThread();
            m_recording.push_back(recording);
        });
    });
    camera.setOnCameraHardwareButton([this](BWCamera &) {
        note([&] {
            noteCaptureThread();
            ++m_presses;
        });
    });
}

CameraProbe::~CameraProbe()
{
    m_camera.setOnCameraFrame({});
    m_camera.setOnCameraSnapshot({});
    m_camera.setOnCameraRecording({});
    m_camera.setOnCameraHardwareButton({});
    settle();
}

bool CameraProbe::start()
{
    m_camera.startWithCompletion([this](bool success) {
        note([&] {
            noteCaptureThread();
            m_startSucceeded = success;
            ++m_completions;
        });
    });
    return waitForCompletion() && m_startSucceeded;
}

void CameraProbe::stop()
{
    m_camera.stopWithCompletion(completion());
    waitForCompletion();
}

void CameraProbe::setResolution(BWResolution resolution)
{
    m_camera.setResolution(resolution, completion());
    waitForCompletion();
}

void CameraProbe::setVideoNorm(BWEmpiaCamera &camera, int norm)
{
    camera.setVideoNorm(norm, completion());
    waitForCompletion();
}

bool CameraProbe::waitForFrames(std::size_t count)
{
    return waitFor([&] { return m_frames.size() >= count; });
}

bool CameraProbe::waitForSnapshots(qsizetype count)
{
    return waitFor([&] { return m_snapshots.size() >= count; });
}

bool CameraProbe::waitForRecordingChanges(std::size_t count)
{
    return waitFor([&] { return m_recording.size() >= count; });
}

bool CameraProbe::waitForButtonPresses(int count)
{
    return waitFor([&] { return m_presses >= count; });
}

void CameraProbe::settle()
{
    // A change to the present size changes nothing, but its completion comes after all that was asked before.
    setResolution(m_camera.defaultResolution());
}

std::vector<BWFrameInfo> CameraProbe::frames() const
{
    const std::lock_guard lock(m_mutex);
    return m_frames;
}

std::vector<uint64_t> CameraProbe::sequences() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<uint64_t> sequences;
    for (const BWFrameInfo &frame : m_frames)
        sequences.push_back(frame.sequence);
    return sequences;
}

QList<QByteArray> CameraProbe::snapshots() const
{
    const std::lock_guard lock(m_mutex);
    return m_snapshots;
}

std::vector<bool> CameraProbe::recordingChanges() const
{
    const std::lock_guard lock(m_mutex);
    return m_recording;
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

std::thread::id CameraProbe::captureThread() const
{
    const std::lock_guard lock(m_mutex);
    return m_captureThreads.size() == 1 ? m_captureThreads.front() : std::thread::id();
}

std::thread::id CameraProbe::snapshotThread() const
{
    const std::lock_guard lock(m_mutex);
    return m_snapshotThread;
}

BWCamera::Completion CameraProbe::completion()
{
    return [this] {
        note([&] {
            noteCaptureThread();
            ++m_completions;
        });
    };
}

bool CameraProbe::waitForCompletion()
{
    ++m_asked;
    return waitFor([&] { return m_completions >= m_asked; });
}

bool CameraProbe::waitFor(const std::function<bool()> &condition)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, patience, condition);
}

void CameraProbe::note(const std::function<void()> &change)
{
    const std::lock_guard lock(m_mutex);
    change();
    m_changed.notify_all();
}

void CameraProbe::noteCaptureThread()
{
    const std::thread::id thread = std::this_thread::get_id();
    if (std::find(m_captureThreads.begin(), m_captureThreads.end(), thread) == m_captureThreads.end())
        m_captureThreads.push_back(thread);
}
