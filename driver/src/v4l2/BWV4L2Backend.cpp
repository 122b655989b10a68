// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWV4L2Backend.h"

#include "base/BWDriverLog.h"
#include "v4l2/BWWakeUp.h"
#include "v4l2/finding/BWCameraMaker.h"
#include "v4l2/finding/BWNodeTracker.h"
#include "v4l2/finding/BWUdevSources.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <optional>
#include <QFile>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// In most containers there is no udev.
bool udevRuns()
{
    return QFile::exists(u"/run/udev/control"_s);
}

int waitingTime(const std::optional<BWNodeTracker::Time> &until)
{
    if (!until)
        return -1;
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*until - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<qint64>(0, rest.count()));
}

/// Watches the kernel and udev on a thread of its own, which reports the cameras.
class V4L2Backend : public BWCameraBackend {
public:
    explicit V4L2Backend(QStringList tables) : m_tables(std::move(tables)) { }

    /// Waits for a device that is just being opened.
    ~V4L2Backend() override
    {
        m_end.wake();
        if (m_thread.joinable())
            m_thread.join();
    }

    void start(const QList<BWCameraDescriptionPtr> &descriptions, Events events) override
    {
        m_changed = events.changed;
        m_pending = true; // until the thread has looked at the cameras that are attached now
        m_tracker.emplace(BWCameraMaker(BWCameraTable::read(m_tables), descriptions), std::move(events), udevRuns);
        m_thread = std::thread([this] { watch(); });
    }

    bool pendingDevices() const override { return m_pending; }

    QList<BWBlockedCamera> blockedCameras() const override
    {
        const std::scoped_lock lock(m_mutex);
        return m_blocked;
    }

private:
    void watch()
    {
        BWUdevSources sources;
        sources.enumerate(*m_tracker);
        while (true) {
            publish(); // opening a camera can take a while
            m_tracker->advance(std::chrono::steady_clock::now());
            publish();
            const auto [kernel, udev, access] = sources.descriptors();
            std::array polled{pollfd{m_end.descriptor(), POLLIN, 0}, kernel, udev, access};
            if (poll(polled.data(), polled.size(), waitingTime(m_tracker->nextTime())) < 0 && errno != EINTR) {
                qCWarning(bwDriver) << "Cameras are no longer watched:" << std::strerror(errno);
                return;
            }
            if (polled[0].revents != 0)
                return;
            sources.readEvents(*m_tracker);
        }
    }

    void publish()
    {
        const bool pending = m_tracker->pending(std::chrono::steady_clock::now());
        bool changed = m_pending.exchange(pending) != pending;
        QList<BWBlockedCamera> blocked = m_tracker->blocked();
        {
            const std::scoped_lock lock(m_mutex);
            changed = changed || m_blocked != blocked;
            m_blocked = std::move(blocked);
        }
        if (changed && m_changed)
            m_changed();
    }

    const QStringList m_tables;
    const BWWakeUp m_end;
    std::optional<BWNodeTracker> m_tracker; ///< belongs to the thread once that runs
    std::function<void()> m_changed;
    std::atomic<bool> m_pending = false;
    mutable std::mutex m_mutex;
    QList<BWBlockedCamera> m_blocked; ///< guarded by the mutex
    std::thread m_thread;
};

} // namespace

std::unique_ptr<BWCameraBackend> BWV4L2Backend::create(const QStringList &tables)
{
    return std::make_unique<V4L2Backend>(tables);
}
