// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/BWMovieRecorder.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWDiskSpace.h"

#include <algorithm>
#include <new>
#include <QFile>
#include <utility>

namespace {

// One frame may be refused because it is damaged; this many in a row mean that the file accepts no more frames.
constexpr int refusedInARow = 15;

constexpr std::chrono::milliseconds spaceInterval(500);

constexpr int mostHeld = 2;
constexpr std::size_t mostCopied = 64 << 20; // bytes; two seconds of a fast 5-megapixel camera

} // namespace

bool BWRecordingQueue::push(const BWFrame &frame)
{
    if (m_held < mostHeld) {
        m_entries.push_back({frame, 0, true});
        ++m_held;
        return true;
    }
    const std::size_t size = frame.info().byteCount();
    if (m_copied + size > mostCopied)
        return false;
    m_entries.push_back({frame.copied(), size, false});
    m_copied += size;
    return true;
}

BWFrame BWRecordingQueue::pop()
{
    if (m_entries.empty())
        return {};
    Entry first = std::move(m_entries.front());
    m_entries.pop_front();
    m_copied -= first.copied;
    m_held -= first.isHeld ? 1 : 0;
    return std::move(first.frame);
}

void BWRecordingQueue::clear()
{
    m_entries.clear();
    m_copied = 0;
    m_held = 0;
}

BWMovieRecorder::BWMovieRecorder(StateCallback callback, OpenWriter openWriter)
    : m_callback(std::move(callback)), m_openWriter(std::move(openWriter))
{
}

BWMovieRecorder::~BWMovieRecorder()
{
    end();
    if (m_thread.joinable())
        m_thread.join();
}

uint64_t BWMovieRecorder::reserve(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Idle)
        return 0;
    m_state = State::Reserved;
    m_status = {};
    m_status.path = path;
    m_unreported.insert(++m_number);
    return m_number;
}

void BWMovieRecorder::begin(uint64_t recording)
{
    // The previous recording's thread has nothing left to do but end.
    if (m_thread.joinable() && isReserved(recording))
        m_thread.join();
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Reserved || m_number != recording)
        return;
    m_state = State::Writing;
    m_thread = std::thread(&BWMovieRecorder::run, this, m_status.path);
}

bool BWMovieRecorder::isReserved(uint64_t recording) const
{
    const std::lock_guard lock(m_mutex);
    return m_state == State::Reserved && m_number == recording;
}

bool BWMovieRecorder::isActive() const
{
    const std::lock_guard lock(m_mutex);
    return m_state != State::Idle;
}

void BWMovieRecorder::offer(const BWFrame &frame)
{
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Writing)
        return;
    bool isTaken = false;
    try {
        isTaken = m_frames.push(frame);
    } catch (const std::bad_alloc &) {
        isTaken = false; // no memory for its copy; the stream goes on
    }
    if (isTaken)
        m_changed.notify_all();
    else if (m_status.framesLeftOut++ == 0)
        qCWarning(bwDriver) << "The movie file cannot be written as fast as frames arrive; frames are left out";
}

bool BWMovieRecorder::end(BWRecordingStatus::End reason, const QString &path)
{
    std::unique_lock lock(m_mutex);
    const bool isMeant = path.isNull() || path == m_status.path;
    if ((m_state != State::Reserved && m_state != State::Writing) || !isMeant)
        return false;
    m_status.end = reason;
    if (m_state == State::Reserved) {
        conclude(std::move(lock)); // there is no writer to do it
    } else {
        m_state = State::Ending;
        m_changed.notify_all();
    }
    return true;
}

BWRecordingStatus BWMovieRecorder::status() const
{
    const std::lock_guard lock(m_mutex);
    return m_status;
}

void BWMovieRecorder::waitUntilComplete()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, number = m_number] { return m_unreported.empty() || *m_unreported.begin() > number; });
}

void BWMovieRecorder::run(const QString &path)
{
    QString error;
    if (const std::unique_ptr<BWMovieWriter> writer = m_openWriter(path, &error)) {
        writeFrames(*writer, path);
        if (!writer->finish())
            qCWarning(bwDriver).noquote() << "The movie" << path << "could not be completed";
        if (writer->hasFailed())
            noteFailed(*writer);
        if (writer->isEmpty())
            noteEmpty();
    } else {
        qCWarning(bwDriver).noquote() << "The movie" << path << "cannot be written:" << error;
        end(BWMovieWriter::isPossible() ? BWRecordingStatus::End::Failed : BWRecordingStatus::End::NoMovies);
    }
    conclude(std::unique_lock(m_mutex));
}

void BWMovieRecorder::writeFrames(BWMovieWriter &writer, const QString &path)
{
    BWFrame frame;
    bool begun = false;
    int refused = 0;
    auto spaceChecked = std::chrono::steady_clock::now();
    while (refused < refusedInARow && waitForFrame(frame)) {
        if (!writer.write(frame)) {
            refused = writer.hasFailed() ? refusedInARow : refused + 1;
            continue;
        }
        refused = 0;
        noteWritten(writer, frame);
        if (!std::exchange(begun, true))
            m_callback(true, status());
        const auto now = std::chrono::steady_clock::now();
        if (now - spaceChecked < spaceInterval)
            continue;
        spaceChecked = now;
        if (writer.isRemoved()) {
            qCWarning(bwDriver).noquote() << "The recording ends because its file was removed:" << path;
            end(BWRecordingStatus::End::FileGone);
        } else if (BWDiskSpace::isNearlyFull(QFile::encodeName(path))) {
            qCWarning(bwDriver).noquote() << "The recording ends because the disk of" << path << "is nearly full";
            end(BWRecordingStatus::End::DiskFull);
        }
    }
    if (refused < refusedInARow)
        return;
    qCWarning(bwDriver) << "The recording ends because its file accepts no more frames";
    end(BWRecordingStatus::End::Failed);
}

void BWMovieRecorder::noteWritten(const BWMovieWriter &writer, const BWFrame &frame)
{
    const std::lock_guard lock(m_mutex);
    if (m_status.frames++ == 0)
        m_firstTime = frame.timestamp();
    m_status.duration = std::chrono::duration_cast<std::chrono::milliseconds>(frame.timestamp() - m_firstTime);
    m_status.bytes = writer.bytesWritten();
}

/// Pictures are missing, which counts more than why it was being ended.
void BWMovieRecorder::noteFailed(const BWMovieWriter &writer)
{
    const std::lock_guard lock(m_mutex);
    m_status.end = writer.diskIsFull() ? BWRecordingStatus::End::DiskFull : BWRecordingStatus::End::Failed;
}

void BWMovieRecorder::noteEmpty()
{
    const std::lock_guard lock(m_mutex);
    m_status.frames = 0;
    m_status.bytes = 0;
    m_status.duration = {};
}

bool BWMovieRecorder::waitForFrame(BWFrame &frame)
{
    frame = {};
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_frames.isEmpty() || m_state != State::Writing; });
    frame = m_frames.pop();
    return !frame.isNull();
}

void BWMovieRecorder::conclude(std::unique_lock<std::mutex> lock)
{
    m_state = State::Idle;
    m_frames.clear();
    const uint64_t number = m_number;
    const BWRecordingStatus status = m_status;
    lock.unlock();
    if (status.framesLeftOut > 0)
        qCWarning(bwDriver) << status.framesLeftOut << "frames were left out of the movie";
    // First the callback, then those who wait: after the wait it is already on its way.
    m_callback(false, status);
    lock.lock();
    m_unreported.erase(number);
    m_changed.notify_all();
}
