// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"

#include <mutex>

/// The callbacks that the user of a camera has set. May be set and called on any thread; a callback runs outside every
/// lock, so it may call the camera or set callbacks itself.
class BWCameraCallbacks {
public:
    explicit BWCameraCallbacks(BWCamera &camera) : m_camera(camera) { }

    void setFrame(BWCamera::FrameCallback callback) { set(&Table::frame, std::move(callback)); }
    void setSnapshot(BWCamera::SnapshotCallback callback) { set(&Table::snapshot, std::move(callback)); }
    void setSnapshotDropped(BWCamera::SnapshotDroppedCallback callback)
    {
        set(&Table::snapshotDropped, std::move(callback));
    }
    void setRecording(BWCamera::RecordingCallback callback) { set(&Table::recording, std::move(callback)); }
    void setHardwareButton(BWCamera::HardwareButtonCallback callback) { set(&Table::button, std::move(callback)); }
    void setStreamProblem(BWCamera::StreamProblemCallback callback) { set(&Table::streamProblem, std::move(callback)); }

    void frame(const BWFrame &frame) const { call(&Table::frame, frame); }
    void snapshot(const QByteArray &jpeg) const { call(&Table::snapshot, jpeg); }
    void snapshotDropped() const { call(&Table::snapshotDropped); }
    void recording(bool recording, const BWRecordingStatus &status) const
    {
        call(&Table::recording, recording, status);
    }
    void hardwareButton() const { call(&Table::button); }
    void streamProblem(const BWStartProblem &problem) const { call(&Table::streamProblem, problem); }

    /// No callback starts after this.
    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_table = std::make_shared<const Table>();
    }

private:
    struct Table {
        BWCamera::FrameCallback frame;
        BWCamera::SnapshotCallback snapshot;
        BWCamera::SnapshotDroppedCallback snapshotDropped;
        BWCamera::RecordingCallback recording;
        BWCamera::HardwareButtonCallback button;
        BWCamera::StreamProblemCallback streamProblem;
    };

    // The table is replaced as a whole, so that a call costs no copy of a callback.
    template <typename Function>
    void set(Function Table::*entry, Function callback)
    {
        const std::lock_guard lock(m_mutex);
        auto table = std::make_shared<Table>(*m_table);
        (*table).*entry = std::move(callback);
        m_table = std::move(table);
    }

    template <typename Function, typename... Arguments>
    void call(Function Table::*entry, const Arguments &...arguments) const
    {
        std::shared_ptr<const Table> table;
        {
            const std::lock_guard lock(m_mutex);
            table = m_table;
        }
        if (const Function &callback = (*table).*entry)
            callback(m_camera, arguments...);
    }

    BWCamera &m_camera;
    mutable std::mutex m_mutex;
    std::shared_ptr<const Table> m_table = std::make_shared<const Table>();
};
