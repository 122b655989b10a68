// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWCaptureDevice.h"
#include "BWACUDriver/BWDetectedCamera.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <QStringList>

/// What a camera was sent, in order: "3=20" for a control, "norm 1" for the video norm; with all calls noted also
/// "size 640x480", "start", "stop".
class DeviceNotes {
public:
    bool allCalls = false;

    /// Everything since the last call.
    QString take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_sent, {}).join(u' ');
    }

    /// A camera that is held up carries nothing out until it is let go; or it hangs in that one call, which may also be
    /// "frame".
    void holdUp(const QString &call = {})
    {
        const std::lock_guard lock(m_mutex);
        m_heldUp = true;
        m_heldUpIn = call;
    }
    void letGo()
    {
        const std::lock_guard lock(m_mutex);
        m_heldUp = false;
        m_changed.notify_all();
    }
    bool isBusy()
    {
        const std::lock_guard lock(m_mutex);
        return m_busy;
    }

    /// The camera moves a control by itself.
    std::function<void(int identifier, double value)> moves;

    void pass(const QString &call, bool isSent)
    {
        {
            const std::lock_guard lock(m_mutex);
            if (isSent || allCalls)
                m_sent.append(call);
        }
        hang(call, isSent);
    }
    void hang(const QString &call, bool isSent = false)
    {
        std::unique_lock lock(m_mutex);
        const auto isFree = [&] { return !m_heldUp || (m_heldUpIn.isNull() ? !isSent : call != m_heldUpIn); };
        m_busy = !isFree();
        m_changed.notify_all();
        m_changed.wait(lock, isFree);
        m_busy = false;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    QStringList m_sent;
    QString m_heldUpIn;
    bool m_heldUp = false;
    bool m_busy = false;
};

/// Stands before another device and notes what that is sent.
class NotingDevice : public BWCaptureDevice {
public:
    NotingDevice(std::unique_ptr<BWCaptureDevice> device, std::shared_ptr<DeviceNotes> notes)
        : m_device(std::move(device)), m_notes(std::move(notes))
    {
    }

    void setEvents(std::function<void()> button, std::function<void(int, double)> control) override
    {
        m_notes->moves = control;
        m_device->setEvents(std::move(button), std::move(control));
    }
    std::vector<BWControlInfo> controls() const override
    {
        std::vector<BWControlInfo> controls = m_device->controls();
        for (BWControlInfo &control : controls) {
            if (control.identifier == BWSettingVideoNorm)
                control.max = 1; // a receiver that does not know SECAM
        }
        return controls;
    }
    BWResolution resolution() const override { return m_device->resolution(); }
    void setResolution(BWResolution requested) override
    {
        m_notes->pass(QStringLiteral("size ") + requested.resolutionString(), false);
        m_device->setResolution(requested);
    }
    BWStartProblem startStreaming() override
    {
        m_notes->pass(QStringLiteral("start"), false);
        return m_device->startStreaming();
    }
    void stopStreaming() override
    {
        m_notes->pass(QStringLiteral("stop"), false);
        m_device->stopStreaming();
    }
    WaitResult waitFrame(std::chrono::milliseconds timeout, BWFrame &frame) override
    {
        m_notes->hang(QStringLiteral("frame"));
        return m_device->waitFrame(timeout, frame);
    }
    void interrupt() override { m_device->interrupt(); }
    bool expectsFrames() const override { return m_device->expectsFrames(); }
    double setControl(int identifier, double value) override
    {
        m_notes->pass(QStringLiteral("%1=%2").arg(identifier).arg(value), true);
        return m_device->setControl(identifier, value);
    }
    void setVideoNorm(int norm) override
    {
        m_notes->pass(QStringLiteral("norm %1").arg(norm), true);
        m_device->setVideoNorm(norm);
    }

private:
    const std::unique_ptr<BWCaptureDevice> m_device;
    const std::shared_ptr<DeviceNotes> m_notes;
};

/// The same camera, with notes of what it is sent.
inline BWDetectedCameraPtr noting(const BWDetectedCameraPtr &camera, const std::shared_ptr<DeviceNotes> &notes)
{
    return std::make_shared<BWDetectedCamera>(camera->cameraDescription(), camera->uniqueIdentifier(), [camera, notes] {
        return std::make_unique<NotingDevice>(camera->open(), notes);
    });
}
