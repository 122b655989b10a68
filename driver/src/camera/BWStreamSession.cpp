// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/BWStreamSession.h"

#include "base/BWDriverLog.h"

#include <algorithm>
#include <cmath>
#include <future>
#include <pthread.h>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

// The session that this thread works for.
thread_local const void *capturingSession = nullptr;
thread_local const void *snapshotSession = nullptr;

// No device takes this long to stop; a movie may.
constexpr std::chrono::seconds deviceTime(2);
constexpr std::chrono::minutes movieTime(2);

std::atomic<int> captureThreads{0};

QString inWords(const BWStartProblem &problem)
{
    switch (problem.kind) {
    case BWStartProblem::Kind::None:
        break;
    case BWStartProblem::Kind::InUse:
        return problem.holder.isNull() ? QStringLiteral("another program holds it")
                                       : QStringLiteral("%1 holds it").arg(problem.holder);
    case BWStartProblem::Kind::NoBandwidth:
        return QStringLiteral("not enough USB bandwidth");
    case BWStartProblem::Kind::NoPermission:
        return QStringLiteral("no permission to open it");
    case BWStartProblem::Kind::NoDriver:
        return QStringLiteral("no driver for it");
    case BWStartProblem::Kind::Gone:
        return QStringLiteral("it is no longer attached");
    case BWStartProblem::Kind::Failed:
        return QStringLiteral("it failed");
    }
    return {};
}

} // namespace

std::shared_ptr<BWStreamSession> BWStreamSession::create(BWCamera &camera, const BWDetectedCameraPtr &detectedCamera)
{
    auto session = std::make_shared<BWStreamSession>(camera, detectedCamera, detectedCamera->open());
    ++captureThreads;
    std::promise<void> ended;
    session->m_ended = ended.get_future();
    session->m_thread = std::thread([session, ended = std::move(ended)]() mutable {
        capturingSession = session.get();
        pthread_setname_np(pthread_self(), "capture");
        session->run();
        --captureThreads;
        ended.set_value();
    });
    return session;
}

BWStreamSession::BWStreamSession(BWCamera &camera, BWDetectedCameraPtr detectedCamera,
                                 std::unique_ptr<BWCaptureDevice> device)
    : m_detectedCamera(std::move(detectedCamera)),
      m_callbacks(camera),
      m_controls(device->controls()),
      m_snapshots(
          [this](const QByteArray &jpeg, const BWCamera::StillReceiver &receiver) {
              snapshotSession = this;
              if (receiver)
                  receiver(jpeg);
              else
                  m_callbacks.snapshot(jpeg);
          },
          [this](const BWCamera::StillReceiver &receiver) { dropSnapshot(receiver); }),
      m_recorder([this](bool recording, const BWRecordingStatus &status) {
          m_recordingReports.post([this, recording, status] { m_callbacks.recording(recording, status); });
          post([this] { m_recordingReports.runWaiting(); });
      }),
      m_resolution(device->resolution()),
      m_device(std::move(device))
{
    m_device->setEvents([this] { post([this] { m_callbacks.hardwareButton(); }); },
                        [this](int identifier, double value) { m_controls.noteValue(identifier, value); });
}

void BWStreamSession::shutDown()
{
    m_recorder.end(); // here, as the movie must be completed even if the device hangs
    m_queue.close();
    m_device->interrupt();
    if (!onOwnThread()) {
        if (endsInTime()) {
            m_thread.join();
            return;
        }
        qCWarning(bwDriver).noquote() << m_detectedCamera->description() << "does not answer; its thread is abandoned";
        if (!m_recorder.isActive()) {
            m_recorder.waitUntilComplete(); // its end is about to be reported
            m_recordingReports.runWaiting();
        }
    }
    m_callbacks.clear();
    m_thread.detach();
}

bool BWStreamSession::endsInTime() const
{
    const auto longest = Clock::now() + movieTime;
    do {
        if (m_ended.wait_for(deviceTime) == std::future_status::ready)
            return true;
    } while (m_recorder.isActive() && Clock::now() < longest);
    return false;
}

int BWStreamSession::runningThreads()
{
    return captureThreads;
}

void BWStreamSession::setStallTime(std::chrono::milliseconds time)
{
    post([this, time] { m_stall.setLimit(time); });
}

void BWStreamSession::start(BWCamera::StartCompletion completion)
{
    post([this, completion = std::move(completion)] {
        const bool success = doStart();
        if (completion)
            completion(success);
    });
}

BWStartProblem BWStreamSession::startProblem() const
{
    const std::lock_guard lock(m_startProblemMutex);
    return m_startProblem;
}

void BWStreamSession::stop(BWCamera::Completion completion)
{
    post([this, completion = std::move(completion)] {
        doStop();
        if (completion)
            completion();
    });
}

void BWStreamSession::setResolution(BWResolution resolution, BWCamera::Completion completion)
{
    post([this, resolution, completion = std::move(completion)] {
        doSetResolution(resolution);
        if (completion)
            completion();
    });
}

void BWStreamSession::setVideoNorm(int norm, BWCamera::Completion completion)
{
    post([this, norm, completion = std::move(completion)] {
        doSetVideoNorm(norm);
        if (completion)
            completion();
    });
}

void BWStreamSession::setSetting(int identifier, double value)
{
    const std::shared_ptr<BWCameraSetting> setting = m_controls.setting(identifier);
    if (!setting || std::isnan(value))
        return;
    value = std::clamp(value, setting->min(), setting->max());
    m_queue.postNewest(identifier, [this, identifier, value] {
        if (identifier == BWSettingVideoNorm)
            doSetVideoNorm(static_cast<int>(value));
        else if (deviceIsUsable())
            m_controls.apply(*m_device, identifier, value);
    });
    m_device->interrupt();
}

void BWStreamSession::takeSnapshot(BWCamera::StillReceiver receiver)
{
    post([this, receiver = std::move(receiver)] { doTakeSnapshot(receiver); });
}

bool BWStreamSession::startRecording(const QString &path)
{
    if (!m_started) {
        qCWarning(bwDriver) << "A camera that does not stream cannot be recorded";
        return false;
    }
    const uint64_t recording = m_recorder.reserve(path);
    if (recording != 0)
        post([this, recording] { doStartRecording(recording); });
    return recording != 0;
}

void BWStreamSession::stopRecording()
{
    m_recorder.end();
    m_recorder.waitUntilComplete();
    if (capturingSession == this)
        return;
    const auto reported = std::make_shared<std::promise<void>>();
    post([reported] { reported->set_value(); });
    if (reported->get_future().wait_for(deviceTime) != std::future_status::ready)
        m_recordingReports.runWaiting();
}

int BWStreamSession::readRegister(int identifier)
{
    int value = 0;
    runAndWait([this, identifier, &value] {
        if (deviceIsUsable())
            value = m_device->readRegister(identifier);
    });
    return value;
}

void BWStreamSession::writeRegister(int identifier, int value)
{
    runAndWait([this, identifier, value] {
        if (deviceIsUsable())
            m_device->writeRegister(identifier, value);
    });
}

QString BWStreamSession::registerProblem()
{
    QString problem;
    runAndWait([this, &problem] { problem = m_device->registerProblem(); });
    return problem;
}

void BWStreamSession::post(BWCommandQueue::Command command)
{
    m_queue.post(std::move(command));
    m_device->interrupt();
}

void BWStreamSession::runAndWait(const BWCommandQueue::Command &command)
{
    if (capturingSession == this) {
        command();
        return;
    }
    const auto done = std::make_shared<std::promise<void>>();
    post([&command, done] {
        command();
        done->set_value();
    });
    done->get_future().wait();
}

bool BWStreamSession::onOwnThread() const
{
    return capturingSession == this || snapshotSession == this;
}

void BWStreamSession::run()
{
    while (!m_queue.isClosed() || !m_queue.isEmpty()) {
        m_queue.runWaiting();
        if (m_state == State::Streaming)
            captureFrame();
        else if (m_state != State::Interrupted)
            m_queue.wait();
        else if (!m_queue.waitFor(m_stall.remaining(Clock::now())))
            resumeStream();
    }
    doStop();
    m_snapshots.finish();
    m_queue.runWaiting(); // the end of a recording
}

void BWStreamSession::captureFrame()
{
    BWFrame frame;
    switch (m_device->waitFrame(m_stall.remaining(Clock::now()), frame)) {
    case BWCaptureDevice::WaitResult::Frame:
        if (m_inspector.accept(frame)) {
            m_stall.restart(Clock::now());
            m_restartWarned = false;
            deliver(frame);
            return;
        }
        break;
    case BWCaptureDevice::WaitResult::BadFrame:
        m_inspector.reject(frame);
        break;
    case BWCaptureDevice::WaitResult::Nothing:
        break;
    case BWCaptureDevice::WaitResult::Gone:
        deviceIsGone();
        return;
    }
    if (!m_device->expectsFrames())
        m_stall.restart(Clock::now());
    else if (m_stall.expired(Clock::now()))
        restartStalledStream();
}

void BWStreamSession::deliver(const BWFrame &frame)
{
    m_recorder.offer(frame);
    m_snapshots.offer(frame);
    m_callbacks.frame(frame);
}

bool BWStreamSession::doStart()
{
    const BWStartProblem problem = tryToStart();
    {
        const std::lock_guard lock(m_startProblemMutex);
        m_startProblem = problem;
    }
    return problem.isNone();
}

BWStartProblem BWStreamSession::tryToStart()
{
    if (m_state == State::Streaming || m_state == State::Interrupted)
        return {};
    if (m_state == State::Gone)
        return {BWStartProblem::Kind::Gone};
    if (m_queue.isClosed())
        return {BWStartProblem::Kind::Failed};
    BWStartProblem problem = m_device->startStreaming();
    if (!problem.isNone()) {
        qCWarning(bwDriver).noquote() << m_detectedCamera->description() << "could not be started:" << inWords(problem);
        return problem;
    }
    m_state = State::Streaming;
    m_resolution = m_device->resolution();
    m_started = true;
    m_restartWarned = false;
    m_inspector.streamStarted();
    m_stall.restart(Clock::now());
    return {};
}

void BWStreamSession::doStop()
{
    // Whoever stops the camera may have heard of an unplug first; the movie's end must say so all the same.
    if (BWFrame frame; m_state == State::Streaming && m_recorder.isActive()
        && m_device->waitFrame(std::chrono::milliseconds(0), frame) == BWCaptureDevice::WaitResult::Gone)
        deviceIsGone();
    m_recorder.end();
    m_snapshots.dropRequests();
    if (m_state == State::Streaming)
        m_device->stopStreaming();
    if (m_state != State::Gone)
        m_state = State::Stopped;
    // With the device released the disk holds nothing up, and a program that quits after this leaves whole files.
    m_snapshots.waitUntilDelivered();
    m_recorder.waitUntilComplete();
    m_recordingReports.runWaiting(); // now, or it would come after the completion of the stop
    m_streamProblem = {};
    m_started = false;
}

void BWStreamSession::doSetResolution(BWResolution resolution)
{
    if (!deviceIsUsable())
        return;
    if (!resolution.isValid()) {
        qCWarning(bwDriver) << "Not a resolution:" << resolution.dimensions();
        return;
    }
    if (resolution != m_resolution)
        reconfigure([this, resolution] { m_device->setResolution(resolution); });
}

void BWStreamSession::doSetVideoNorm(int norm)
{
    const std::shared_ptr<BWCameraSetting> setting = m_controls.setting(BWSettingVideoNorm);
    if (!deviceIsUsable() || !setting)
        return;
    if (norm < setting->min() || norm > setting->max()) {
        qCWarning(bwDriver).noquote() << m_detectedCamera->description() << "has no video norm" << norm;
        return;
    }
    if (norm == m_videoNorm)
        return;
    m_videoNorm = norm;
    setting->setValue(norm);
    // A change of the norm makes the bridge chip forget its size.
    reconfigure([this, norm] {
        m_device->setVideoNorm(norm);
        m_device->setResolution(m_resolution);
    });
}

void BWStreamSession::doTakeSnapshot(const BWCamera::StillReceiver &receiver)
{
    if (m_state == State::Streaming || m_state == State::Interrupted) {
        m_snapshots.request(receiver);
        return;
    }
    qCWarning(bwDriver) << "No snapshot: the camera does not stream";
    dropSnapshot(receiver);
}

void BWStreamSession::dropSnapshot(const BWCamera::StillReceiver &receiver) const
{
    if (receiver)
        receiver({});
    else
        m_callbacks.snapshotDropped();
}

void BWStreamSession::doStartRecording(uint64_t recording)
{
    if (m_state == State::Streaming || m_state == State::Interrupted) {
        m_recorder.begin(recording);
        return;
    }
    qCWarning(bwDriver) << "No recording: the camera no longer streams";
    m_recorder.end(m_state == State::Gone ? BWRecordingStatus::End::CameraGone : BWRecordingStatus::End::Asked);
}

void BWStreamSession::reconfigure(const std::function<void()> &change)
{
    // One movie has one size and one rate.
    m_recorder.end(BWRecordingStatus::End::CameraChanged);
    const bool streaming = m_state == State::Streaming;
    if (streaming)
        m_device->stopStreaming();
    change();
    m_resolution = m_device->resolution();
    // The change may be what an interrupted stream needs to run again.
    if (streaming || m_state == State::Interrupted)
        resumeStream();
}

void BWStreamSession::resumeStream()
{
    const BWStartProblem problem = m_device->startStreaming();
    if (problem.isNone()) {
        m_state = State::Streaming;
        m_resolution = m_device->resolution();
        m_inspector.streamStarted();
    } else {
        m_state = State::Interrupted;
    }
    m_stall.restart(Clock::now());
    reportStreamProblem(problem);
}

void BWStreamSession::reportStreamProblem(const BWStartProblem &problem)
{
    if (problem == m_streamProblem)
        return;
    m_streamProblem = problem;
    if (problem.isNone())
        qCInfo(bwDriver).noquote() << m_detectedCamera->description() << "streams again";
    else
        qCWarning(bwDriver).noquote() << m_detectedCamera->description()
                                      << "could not be restarted:" << inWords(problem) << "- trying again";
    m_callbacks.streamProblem(problem);
}

void BWStreamSession::restartStalledStream()
{
    if (!std::exchange(m_restartWarned, true))
        qCWarning(bwDriver).noquote() << m_detectedCamera->description() << "delivers nothing; restarting its stream";
    m_inspector.streamRestarted();
    m_device->stopStreaming();
    resumeStream();
}

void BWStreamSession::deviceIsGone()
{
    qCInfo(bwDriver).noquote() << m_detectedCamera->description() << "was unplugged while it streamed";
    m_recorder.end(BWRecordingStatus::End::CameraGone);
    m_snapshots.dropRequests();
    m_device->stopStreaming();
    m_state = State::Gone;
}
