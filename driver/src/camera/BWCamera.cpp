// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCamera.h"

#include "camera/BWStreamSession.h"

#include <utility>

BWCamera::BWCamera(const BWDetectedCameraPtr &detectedCamera)
    : m_session(BWStreamSession::create(*this, detectedCamera))
{
}

BWCamera::~BWCamera()
{
    m_session->shutDown();
}

int BWCamera::runningThreads()
{
    return BWStreamSession::runningThreads();
}

const BWDetectedCameraPtr &BWCamera::detectedCamera() const
{
    return m_session->detectedCamera();
}

QString BWCamera::identifierForProducts() const
{
    return detectedCamera()->cameraDescription()->identifierForProducts;
}

void BWCamera::startWithCompletion(StartCompletion completion)
{
    m_session->start(std::move(completion));
}

BWStartProblem BWCamera::startProblem() const
{
    return m_session->startProblem();
}

void BWCamera::stopWithCompletion(Completion completion)
{
    m_session->stop(std::move(completion));
}

bool BWCamera::started() const
{
    return m_session->started();
}

void BWCamera::setResolution(BWResolution resolution, Completion completion)
{
    m_session->setResolution(resolution, std::move(completion));
}

BWResolution BWCamera::defaultResolution() const
{
    return m_session->resolution();
}

void BWCamera::setSetting(int identifier, double value)
{
    m_session->setSetting(identifier, value);
}

std::shared_ptr<BWCameraSetting> BWCamera::settingForIdentifier(int identifier) const
{
    return m_session->controls().setting(identifier);
}

void BWCamera::takeSnapshot(StillReceiver receiver)
{
    m_session->takeSnapshot(std::move(receiver));
}

bool BWCamera::startRecording(const QString &path)
{
    return m_session->startRecording(path);
}

bool BWCamera::recording() const
{
    return m_session->recording();
}

void BWCamera::stopRecording()
{
    m_session->stopRecording();
}

bool BWCamera::endRecording(const QString &path, BWRecordingStatus::End reason)
{
    return m_session->endRecording(path, reason);
}

BWRecordingStatus BWCamera::recordingStatus() const
{
    return m_session->recordingStatus();
}

void BWCamera::setOnCameraFrame(FrameCallback callback)
{
    m_session->callbacks().setFrame(std::move(callback));
}

void BWCamera::setOnCameraSnapshot(SnapshotCallback callback)
{
    m_session->callbacks().setSnapshot(std::move(callback));
}

void BWCamera::setOnCameraSnapshotDropped(SnapshotDroppedCallback callback)
{
    m_session->callbacks().setSnapshotDropped(std::move(callback));
}

void BWCamera::setOnCameraRecording(RecordingCallback callback)
{
    m_session->callbacks().setRecording(std::move(callback));
}

void BWCamera::setOnCameraHardwareButton(HardwareButtonCallback callback)
{
    m_session->callbacks().setHardwareButton(std::move(callback));
}

void BWCamera::setOnCameraStreamProblem(StreamProblemCallback callback)
{
    m_session->callbacks().setStreamProblem(std::move(callback));
}

bool BWCamera::readsHardwareButton() const
{
    return m_session->readsButton();
}

void BWCamera::setStallTime(std::chrono::milliseconds time)
{
    m_session->setStallTime(time);
}

BWCameraStatistics BWCamera::statistics() const
{
    return m_session->inspector().statistics();
}

void BWEmpiaCamera::setVideoNorm(int norm, Completion completion)
{
    m_session->setVideoNorm(norm, std::move(completion));
}

int BWEmpiaCamera::readRegisterWithIdentifier(int identifier)
{
    return m_session->readRegister(identifier);
}

void BWEmpiaCamera::writeValue(int value, int identifier)
{
    m_session->writeRegister(identifier, value & 0xff);
}

QString BWEmpiaCamera::registerProblem()
{
    return m_session->registerProblem();
}
