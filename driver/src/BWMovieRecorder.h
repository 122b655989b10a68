#pragma once

#include "BWACUDriver/BWRecordingStatus.h"
#include "BWRecordingQueue.h"
#include "media/BWMovieWriter.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <QString>
#include <thread>

/// Records passing frames into a movie file on a writer thread. A bounded queue lies in between: when the disk is too
/// slow for it, frames are left out of the movie, counted and logged, and the stream is not held up.
///
/// A recording is asked for with reserve(), so that it counts as running from then on, and begins with begin(). It ends
/// by end(), or by itself when the file can no longer be written or the disk is nearly full.
class BWMovieRecorder {
public:
    /// Called on the writer thread: true after the first frame is written, false once when a recording that was begun
    /// is over and its file complete, also if it never got a frame. Must not wait for anything.
    using StateCallback = std::function<void(bool recording)>;

    /// Opens the movie file; as BWMovieWriter::create().
    using OpenWriter = std::function<std::unique_ptr<BWMovieWriter>(const QString &path, QString *error)>;

    explicit BWMovieRecorder(StateCallback callback, OpenWriter openWriter = &BWMovieWriter::create);
    /// Ends a recording and waits.
    ~BWMovieRecorder();

    /// The number of the new recording, or 0 if one is running. Any thread.
    uint64_t reserve();

    /// Begins the reserved recording; without effect if it was ended meanwhile. Capture thread.
    void begin(uint64_t recording, const QString &path);

    /// From reserve() until the file is complete. Any thread.
    bool isActive() const;

    /// Never waits. Capture thread.
    void offer(const BWFrame &frame);

    /// No frame is taken any more; the file is completed in the background. Never waits. Any thread.
    void end(BWRecordingStatus::End reason = BWRecordingStatus::End::Asked);

    /// Of the recording that runs, else of the last one. Any thread.
    BWRecordingStatus status() const;

    /// Waits until the recording that runs or ends now is over. Any thread but the writer's.
    void waitUntilComplete();

private:
    enum class State { Idle, Reserved, Writing, Ending };

    bool isReserved(uint64_t recording) const;
    void run(const QString &path);
    void writeFrames(BWMovieWriter &writer, const QString &path);
    void noteWritten(const BWMovieWriter &writer, const BWFrame &frame);
    void noteEmpty();
    bool waitForFrame(BWFrame &frame);
    void finished();

    const StateCallback m_callback;
    const OpenWriter m_openWriter;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::Idle;
    uint64_t m_number = 0; ///< of the last recording that was reserved
    uint64_t m_completed = 0; ///< of the last recording that is over
    BWRecordingQueue m_frames;
    BWRecordingStatus m_status;
    std::chrono::steady_clock::time_point m_firstTime; ///< time stamp of the first frame
    std::thread m_thread;
};
