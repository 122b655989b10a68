#pragma once

#include "BWACUDriver/BWRecordingStatus.h"
#include "capture/BWRecordingQueue.h"
#include "media/BWMovieWriter.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <QString>
#include <set>
#include <thread>

/// Records passing frames into a movie file on a writer thread. A bounded queue lies in between: when the disk is too
/// slow for it, frames are left out of the movie, counted and logged, and the stream is not held up.
///
/// A recording is asked for with reserve(), so that it counts as running from then on, and begins with begin(). It ends
/// by end(), or by itself when the file can no longer be written, was removed, or the disk is nearly full.
class BWMovieRecorder {
public:
    /// True after the first frame is written, on the writer thread; false once for every recording that was reserved,
    /// when it is over and its file complete, also if it never got a frame: on the writer thread, or on that which ended
    /// it before it was begun. Must not wait for anything. By then the next recording may run; `status` is that of
    /// the one told about.
    using StateCallback = std::function<void(bool recording, const BWRecordingStatus &status)>;

    /// Opens the movie file; as BWMovieWriter::create().
    using OpenWriter = std::function<std::unique_ptr<BWMovieWriter>(const QString &path, QString *error)>;

    explicit BWMovieRecorder(StateCallback callback, OpenWriter openWriter = &BWMovieWriter::create);
    /// Ends a recording and waits.
    ~BWMovieRecorder();

    /// The number of the new recording, or 0 if one is running. Any thread.
    uint64_t reserve(const QString &path);

    /// Begins the reserved recording; without effect if it was ended meanwhile. Capture thread.
    void begin(uint64_t recording);

    /// From reserve() until the file is complete. Any thread.
    bool isActive() const;

    /// Never waits. Capture thread.
    void offer(const BWFrame &frame);

    /// No frame is taken any more; the file is completed in the background. Only the recording to `path`, if that is
    /// told. False if there was nothing to end. Never waits. Any thread.
    bool end(BWRecordingStatus::End reason = BWRecordingStatus::End::Asked, const QString &path = {});

    /// Of the recording that runs, else of the last one. Any thread.
    BWRecordingStatus status() const;

    /// Waits until all recordings up to now are over, and their ends told. Any thread but the writer's.
    void waitUntilComplete();

private:
    enum class State { Idle, Reserved, Writing, Ending };

    bool isReserved(uint64_t recording) const;
    void run(const QString &path);
    void writeFrames(BWMovieWriter &writer, const QString &path);
    void noteWritten(const BWMovieWriter &writer, const BWFrame &frame);
    void noteEmpty();
    bool waitForFrame(BWFrame &frame);
    void over(std::unique_lock<std::mutex> lock);

    const StateCallback m_callback;
    const OpenWriter m_openWriter;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::Idle;
    uint64_t m_number = 0; ///< of the last recording that was reserved
    std::set<uint64_t> m_untold; ///< recordings whose end has not been told
    BWRecordingQueue m_frames;
    BWRecordingStatus m_status;
    std::chrono::steady_clock::time_point m_firstTime; ///< time stamp of the first frame
    std::thread m_thread;
};
