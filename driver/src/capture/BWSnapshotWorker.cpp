#include "capture/BWSnapshotWorker.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWStill.h"

#include <utility>

namespace {
constexpr int maximumHeld = 2;
}

BWSnapshotWorker::BWSnapshotWorker(Deliver deliver) : m_deliver(std::move(deliver)) { }

BWSnapshotWorker::~BWSnapshotWorker()
{
    finish();
}

void BWSnapshotWorker::request()
{
    const std::lock_guard lock(m_mutex);
    ++m_requests;
    m_streaming = true;
    if (!m_thread.joinable())
        m_thread = std::thread(&BWSnapshotWorker::run, this);
}

void BWSnapshotWorker::offer(const BWFrame &frame)
{
    const std::lock_guard lock(m_mutex);
    if (m_requests == 0 || m_held >= maximumHeld)
        return;
    --m_requests;
    ++m_held;
    m_frames.push_back(frame);
    m_changed.notify_one();
}

void BWSnapshotWorker::dropRequests()
{
    const std::lock_guard lock(m_mutex);
    m_streaming = false;
    if (m_requests > 0)
        qCWarning(bwDriver) << "The stream ended before" << std::exchange(m_requests, 0) << "snapshots could be taken";
}

void BWSnapshotWorker::waitUntilDelivered()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_frames.empty() && !m_delivering; });
}

void BWSnapshotWorker::finish()
{
    dropRequests();
    {
        const std::lock_guard lock(m_mutex);
        m_finishing = true;
        m_changed.notify_one();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void BWSnapshotWorker::run()
{
    BWFrame frame;
    while (waitForFrame(frame)) {
        const BWPixelFormat format = frame.pixelFormat();
        const QByteArray jpeg = BWStill::jpegOf(frame);
        frame = {}; // returns its buffer to the device before the still is written to a disk
        {
            const std::lock_guard lock(m_mutex);
            --m_held;
        }
        if (!jpeg.isNull())
            m_deliver(jpeg);
        else if (format == BWPixelFormat::MJPEG)
            putBack();
        else
            qCWarning(bwDriver) << "A snapshot was dropped because its frame could not be encoded";
    }
}

bool BWSnapshotWorker::waitForFrame(BWFrame &frame)
{
    std::unique_lock lock(m_mutex);
    m_delivering = false;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_frames.empty() || m_finishing; });
    if (m_frames.empty())
        return false;
    m_delivering = true;
    frame = std::move(m_frames.front());
    m_frames.pop_front();
    return true;
}

void BWSnapshotWorker::putBack()
{
    const std::lock_guard lock(m_mutex);
    if (m_streaming) {
        qCInfo(bwDriver) << "A snapshot takes the next frame because its own was damaged";
        ++m_requests;
    } else {
        qCWarning(bwDriver) << "A snapshot was dropped: its frame was damaged and the stream has ended";
    }
}
