#include "camera/BWStreamSession.h"

#include "base/BWDriverLog.h"

#include <algorithm>
#include <cmath>
#include <future>
#include <utility>

namespace {

// The session that this thread works for.
thread_local const void *capturingSession = nullptr;
thread_local const void *snapshotSession = nullptr;

// No device needs as long to stop; a movie may.
constexpr std::chrono::seconds deviceTime(2);
constexpr std::chrono::minutes movieTime(2);

std::atomic<int> captureThreads{0};

} // namespace

std::shared_ptr<BWCamera::Session> BWCamera::Session::create(BWCamera &camera,
                                                             const BWDetectedCameraPtr &detectedCamera)
{
    const auto session = std::make_shared<Session>(camera, detectedCamera, detectedCamera->open());
    ++captureThreads;
    std::promise<void> ended;
    session->m_ended = ended.get_future();
    session->m_thread = std::thread([session, ended = std::move(ended)]() mutable {
        capturingSession = session.get();
        session->run();
        --captureThreads;
        ended.set_value();
    });
    return session;
}

BWCamera::Session::Session(BWCamera &camera, BWDetectedCameraPtr detectedCamera,
                           std::unique_ptr<BWCaptureDevice> device)
    : m_detectedCamera(std::move(detectedCamera)),
      m_callbacks(camera),
      m_controls(device->controls()),
      m_snapshots([this](const QByteArray &jpeg) {
          snapshotSession = this;
          m_callbacks.snapshot(jpeg);
      }),
      m_recorder([this](bool recording, const BWRecordingStatus &status) {
          m_recordingNews.post([this, recording, status] { m_callbacks.recording(recording, status); });
          post([this] { m_recordingNews.runWaiting(); });
      }),
      m_resolution(device->resolution()),
      m_device(std::move(device))
{
    m_device->setEvents([this] { post([this] { m_callbacks.hardwareButton(); }); },
                        [this](int identifier, double value) { m_controls.noteValue(identifier, value); });
}

void BWCamera::Session::shutDown()
{
    m_recorder.end(); // here, for the movie must become whole even if the device hangs
    m_queue.close();
    m_device->interrupt();
    if (!onOwnThread()) {
        if (endsInTime()) {
            m_thread.join();
            return;
        }
        qCWarning(bwDriver).noquote() << m_detectedCamera->description()
                                      << "does not answer; its thread is left behind";
        if (!m_recorder.isActive()) {
            m_recorder.waitUntilComplete(); // its end is about to be told
            m_recordingNews.runWaiting();
        }
    }
    m_callbacks.clear();
    m_thread.detach();
}

bool BWCamera::Session::endsInTime() const
{
    const auto longest = std::chrono::steady_clock::now() + movieTime;
    do {
        if (m_ended.wait_for(deviceTime) == std::future_status::ready)
            return true;
    } while (m_recorder.isActive() && std::chrono::steady_clock::now() < longest);
    return false;
}

int BWCamera::Session::runningThreads()
{
    return captureThreads;
}

void BWCamera::Session::setStallTime(std::chrono::milliseconds time)
{
    post([this, time] { m_stall.setLimit(time); });
}

void BWCamera::Session::start(StartCompletion completion)
{
    post([this, completion = std::move(completion)] {
        const bool success = doStart();
        if (completion)
            completion(success);
    });
}

BWStartProblem BWCamera::Session::startProblem() const
{
    const std::lock_guard lock(m_startProblemMutex);
    return m_startProblem;
}

void BWCamera::Session::stop(Completion completion)
{
    post([this, completion = std::move(completion)] {
        doStop();
        if (completion)
            completion();
    });
}

void BWCamera::Session::setResolution(BWResolution resolution, Completion completion)
{
    post([this, resolution, completion = std::move(completion)] {
        doSetResolution(resolution);
        if (completion)
            completion();
    });
}

void BWCamera::Session::setVideoNorm(int norm, Completion completion)
{
    post([this, norm, completion = std::move(completion)] {
        doSetVideoNorm(norm);
        if (completion)
            completion();
    });
}

void BWCamera::Session::setSetting(int identifier, double value)
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

void BWCamera::Session::takeSnapshot()
{
    post([this] { doTakeSnapshot(); });
}

bool BWCamera::Session::startRecording(const QString &path)
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

void BWCamera::Session::stopRecording()
{
    m_recorder.end();
    m_recorder.waitUntilComplete();
    if (capturingSession == this)
        return;
    const auto told = std::make_shared<std::promise<void>>();
    post([told] { told->set_value(); });
    if (told->get_future().wait_for(deviceTime) != std::future_status::ready)
        m_recordingNews.runWaiting();
}

int BWCamera::Session::readRegister(int identifier)
{
    int value = 0;
    runAndWait([this, identifier, &value] {
        if (deviceIsUsable())
            value = m_device->readRegister(identifier);
    });
    return value;
}

void BWCamera::Session::writeRegister(int identifier, int value)
{
    runAndWait([this, identifier, value] {
        if (deviceIsUsable())
            m_device->writeRegister(identifier, value);
    });
}

QString BWCamera::Session::registerProblem()
{
    QString problem;
    runAndWait([this, &problem] { problem = m_device->registerProblem(); });
    return problem;
}

void BWCamera::Session::post(BWCommandQueue::Command command)
{
    m_queue.post(std::move(command));
    m_device->interrupt();
}

void BWCamera::Session::runAndWait(const BWCommandQueue::Command &command)
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

bool BWCamera::Session::onOwnThread() const
{
    return capturingSession == this || snapshotSession == this;
}
