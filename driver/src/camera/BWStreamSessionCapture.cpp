#include "camera/BWStreamSession.h"

#include "base/BWDriverLog.h"

#include <utility>

using Clock = std::chrono::steady_clock;

namespace {

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
        return QStringLiteral("it is not attached any more");
    case BWStartProblem::Kind::Failed:
        return QStringLiteral("it failed");
    }
    return {};
}

} // namespace

void BWCamera::Session::run()
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
    m_queue.runWaiting(); // what the end of a recording has to tell
}

void BWCamera::Session::captureFrame()
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

void BWCamera::Session::deliver(const BWFrame &frame)
{
    m_recorder.offer(frame);
    m_snapshots.offer(frame);
    m_callbacks.frame(frame);
}

bool BWCamera::Session::doStart()
{
    const BWStartProblem problem = tryToStart();
    {
        const std::lock_guard lock(m_startProblemMutex);
        m_startProblem = problem;
    }
    return problem.isNone();
}

BWStartProblem BWCamera::Session::tryToStart()
{
    if (m_state == State::Streaming || m_state == State::Interrupted)
        return {};
    if (m_state == State::Gone)
        return {BWStartProblem::Kind::Gone};
    if (m_queue.isClosed())
        return {BWStartProblem::Kind::Failed};
    const BWStartProblem problem = m_device->startStreaming();
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

void BWCamera::Session::doStop()
{
    m_recorder.end();
    m_snapshots.dropRequests();
    if (m_state == State::Streaming)
        m_device->stopStreaming();
    if (m_state != State::Gone)
        m_state = State::Stopped;
    // With the device released nothing is held up by the disk any more, and whoever quits now quits with whole files.
    m_snapshots.waitUntilDelivered();
    m_recorder.waitUntilComplete();
    m_recordingNews.runWaiting(); // now, or it would come after the completion of the stop
    m_streamProblem = {};
    m_started = false;
}

void BWCamera::Session::doSetResolution(BWResolution resolution)
{
    if (!deviceIsUsable())
        return;
    if (!resolution.isValid()) {
        qCWarning(bwDriver) << "No resolution:" << resolution.dimensions();
        return;
    }
    if (resolution != m_resolution)
        reconfigure([this, resolution] { m_device->setResolution(resolution); });
}

void BWCamera::Session::doSetVideoNorm(int norm)
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

void BWCamera::Session::doTakeSnapshot()
{
    if (m_state == State::Streaming || m_state == State::Interrupted)
        m_snapshots.request();
    else
        qCWarning(bwDriver) << "No snapshot: the camera does not stream";
}

void BWCamera::Session::doStartRecording(uint64_t recording)
{
    if (m_state == State::Streaming || m_state == State::Interrupted) {
        m_recorder.begin(recording);
        return;
    }
    qCWarning(bwDriver) << "No recording: the camera does not stream any more";
    m_recorder.end(m_state == State::Gone ? BWRecordingStatus::End::CameraGone : BWRecordingStatus::End::Asked);
}

void BWCamera::Session::reconfigure(const std::function<void()> &change)
{
    // One movie has one size and one rate.
    m_recorder.end(BWRecordingStatus::End::CameraChanged);
    const bool streaming = m_state == State::Streaming;
    if (streaming)
        m_device->stopStreaming();
    change();
    m_resolution = m_device->resolution();
    // The change may be just what an interrupted stream was waiting for.
    if (streaming || m_state == State::Interrupted)
        resumeStream();
}

void BWCamera::Session::resumeStream()
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
    tellStreamProblem(problem);
}

void BWCamera::Session::tellStreamProblem(const BWStartProblem &problem)
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

void BWCamera::Session::restartStalledStream()
{
    if (!std::exchange(m_restartWarned, true))
        qCWarning(bwDriver).noquote() << m_detectedCamera->description() << "delivers nothing; restarting its stream";
    m_inspector.streamRestarted();
    m_device->stopStreaming();
    resumeStream();
}

void BWCamera::Session::deviceIsGone()
{
    qCInfo(bwDriver).noquote() << m_detectedCamera->description() << "was unplugged while it streamed";
    m_recorder.end(BWRecordingStatus::End::CameraGone);
    m_snapshots.dropRequests();
    m_device->stopStreaming();
    m_state = State::Gone;
}
