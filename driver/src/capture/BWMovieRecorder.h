// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraStatus.h"
#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWMovieWriter.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <QString>
#include <set>
#include <thread>

/// Frames on their way into a movie. A device has only a few buffers, so the queue holds no more than two of them;
/// further frames are copied, up to a limit in bytes, so that a pause of the disk costs no frame. One thread at a time.
class BWRecordingQueue {
public:
    /// False if there is no room for the frame.
    bool push(const BWFrame &frame);
    /// The oldest frame; null if the queue is empty.
    BWFrame pop();
    bool isEmpty() const { return m_entries.empty(); }
    void clear();

private:
    struct Entry {
        BWFrame frame;
        std::size_t copied = 0; ///< bytes
        bool isHeld = false; ///< one of the device's buffers
    };

    std::deque<Entry> m_entries;
    std::size_t m_copied = 0;
    int m_held = 0;
};

/// Records passing frames into a movie file on a writer thread, through a bounded queue: when the disk is too slow,
/// frames are left out of the movie, counted and logged, and the stream is not held up.
///
/// A recording is requested with reserve(), from which on it counts as running, and begins with begin(). It ends with
/// end(), or by itself when the file can no longer be written, was removed, or the disk is nearly full.
class BWMovieRecorder {
public:
    /// True after the first frame is written, on the writer thread; false once for every recording that was reserved,
    /// when it is over and its file complete, even if it never got a frame: on the writer thread, or on the thread that
    /// ended it before it began. Must not wait for anything. By then the next recording may run; `status` is that of
    /// the one being reported.
    using StateCallback = std::function<void(bool recording, const BWRecordingStatus &status)>;

    /// Opens the movie file; as BWMovieWriter::create().
    using OpenWriter = std::function<std::unique_ptr<BWMovieWriter>(const QString &path, QString *error)>;

    explicit BWMovieRecorder(StateCallback callback, OpenWriter openWriter = &BWMovieWriter::create);
    /// Ends a recording and waits.
    ~BWMovieRecorder();

    /// The number of the new recording, or 0 if another one runs. Any thread.
    uint64_t reserve(const QString &path);

    /// Begins the reserved recording; no effect if it has ended meanwhile. Capture thread.
    void begin(uint64_t recording);

    /// From reserve() until the file is complete. Any thread.
    bool isActive() const;

    /// Never waits. Capture thread.
    void offer(const BWFrame &frame);

    /// Takes no more frames; the file is completed in the background. With a `path`, ends only the recording to it.
    /// False if there was nothing to end. Never waits. Any thread.
    bool end(BWRecordingStatus::End reason = BWRecordingStatus::End::Asked, const QString &path = {});

    /// Of the current recording, else of the last one. Any thread.
    BWRecordingStatus status() const;

    /// Waits until all recordings up to now are over, and their ends reported. Any thread but the writer's.
    void waitUntilComplete();

private:
    enum class State { Idle, Reserved, Writing, Ending };

    bool isReserved(uint64_t recording) const;
    void run(const QString &path);
    void writeFrames(BWMovieWriter &writer, const QString &path);
    void noteWritten(const BWMovieWriter &writer, const BWFrame &frame);
    void noteFailed(const BWMovieWriter &writer);
    void noteEmpty();
    bool waitForFrame(BWFrame &frame);
    void conclude(std::unique_lock<std::mutex> lock);

    const StateCallback m_callback;
    const OpenWriter m_openWriter;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::Idle;
    uint64_t m_number = 0; ///< of the last recording that was reserved
    std::set<uint64_t> m_unreported; ///< recordings whose end has not been reported
    BWRecordingQueue m_frames;
    BWRecordingStatus m_status;
    std::chrono::steady_clock::time_point m_firstTime; ///< time stamp of the first frame
    std::thread m_thread;
};
