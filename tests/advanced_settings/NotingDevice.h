#pragma once

#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWCaptureDevice.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <QStringList>

/// What a camera was sent, in order: "3=20" for a control, "norm 1" for the video norm.
class DeviceNotes {
public:
    /// Everything since the last call.
    QString take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_sent, {}).join(u' ');
    }

    /// A camera that is held up takes what it is sent only when it is let go.
    void holdUp()
    {
        const std::lock_guard lock(m_mutex);
        m_heldUp = true;
    }
    void letGo()
    {
        const std::lock_guard lock(m_mutex);
        m_heldUp = false;
        m_changed.notify_all();
    }
    void waitUntilBusy()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_busy; });
    }

    /// The camera moves a control by itself.
    std::function<void(int identifier, double value)> moves;

    void note(const QString &text)
    {
        std::unique_lock lock(m_mutex);
        m_sent.append(text);
        m_busy = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_heldUp; });
        m_busy = false;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    QStringList m_sent;
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
    void setResolution(BWResolution wished) override { m_device->setResolution(wished); }
    BWStartProblem startStreaming() override { return m_device->startStreaming(); }
    void stopStreaming() override { m_device->stopStreaming(); }
    WaitResult waitFrame(std::chrono::milliseconds timeout, BWFrame &frame) override
    {
        return m_device->waitFrame(timeout, frame);
    }
    void interrupt() override { m_device->interrupt(); }
    double setControl(int identifier, double value) override
    {
        m_notes->note(QStringLiteral("%1=%2").arg(identifier).arg(value));
        return m_device->setControl(identifier, value);
    }
    void setVideoNorm(int norm) override
    {
        m_notes->note(QStringLiteral("norm %1").arg(norm));
        m_device->setVideoNorm(norm);
    }

private:
    const std::unique_ptr<BWCaptureDevice> m_device;
    const std::shared_ptr<DeviceNotes> m_notes;
};
