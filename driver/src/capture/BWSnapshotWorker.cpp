// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/BWSnapshotWorker.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWStill.h"

#include <new>
#include <utility>

namespace {

constexpr int maximumHeld = 2;

QByteArray jpegOf(const BWFrame &frame)
{
    try {
        return BWStill::jpegOf(frame);
    } catch (const std::bad_alloc &) {
        return {};
    }
}

} // namespace

BWSnapshotWorker::BWSnapshotWorker(Deliver deliver, Drop drop) : m_deliver(std::move(deliver)), m_drop(std::move(drop))
{
}

BWSnapshotWorker::~BWSnapshotWorker()
{
    finish();
}

void BWSnapshotWorker::request(const Receiver &receiver)
{
    const std::lock_guard lock(m_mutex);
    m_requests.push_back(receiver);
    m_streaming = true;
    if (!m_thread.joinable())
        m_thread = std::thread(&BWSnapshotWorker::run, this);
}

void BWSnapshotWorker::offer(const BWFrame &frame)
{
    const std::lock_guard lock(m_mutex);
    if (m_requests.empty() || m_held >= maximumHeld)
        return;
    ++m_held;
    m_frames.push_back({frame, std::move(m_requests.front())});
    m_requests.pop_front();
    m_changed.notify_one();
}

void BWSnapshotWorker::dropRequests()
{
    std::deque<Receiver> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_streaming = false;
        dropped.swap(m_requests);
    }
    if (!dropped.empty())
        qCWarning(bwDriver) << "The stream ended before" << dropped.size() << "snapshots could be taken";
    for (const Receiver &receiver : dropped)
        m_drop(receiver);
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
    Taken taken;
    while (waitForFrame(taken)) {
        const BWPixelFormat format = taken.frame.pixelFormat();
        const QByteArray jpeg = jpegOf(taken.frame);
        taken.frame = {}; // returns its buffer to the device before the still is written to a disk
        {
            const std::lock_guard lock(m_mutex);
            --m_held;
        }
        const Receiver receiver = std::exchange(taken.receiver, {});
        if (!jpeg.isNull()) {
            m_deliver(jpeg, receiver);
        } else if (format == BWPixelFormat::MJPEG) {
            putBack(receiver);
        } else {
            qCWarning(bwDriver) << "A snapshot was dropped because its frame could not be encoded";
            m_deliver({}, receiver);
        }
    }
}

bool BWSnapshotWorker::waitForFrame(Taken &taken)
{
    std::unique_lock lock(m_mutex);
    m_delivering = false;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_frames.empty() || m_finishing; });
    if (m_frames.empty())
        return false;
    m_delivering = true;
    taken = std::move(m_frames.front());
    m_frames.pop_front();
    return true;
}

void BWSnapshotWorker::putBack(const Receiver &receiver)
{
    std::unique_lock lock(m_mutex);
    if (m_streaming) {
        qCInfo(bwDriver) << "A snapshot takes the next frame because its own was damaged";
        m_requests.push_front(receiver);
        return;
    }
    lock.unlock();
    qCWarning(bwDriver) << "A snapshot was dropped: its frame was damaged and the stream has ended";
    m_drop(receiver);
}
