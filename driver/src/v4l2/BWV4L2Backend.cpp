#include "BWACUDriver/BWV4L2Backend.h"

#include "v4l2/finding/BWCameraMaker.h"
#include "v4l2/finding/BWNodeTracker.h"
#include "v4l2/finding/BWUdevWatch.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace {

class Backend : public BWCameraBackend {
public:
    explicit Backend(QStringList tables) : m_tables(std::move(tables)) { }

    void start(const QList<BWCameraDescriptionPtr> &descriptions, Events events) override
    {
        m_pending = true; // until those attached have been looked at
        BWCameraMaker maker(BWCameraTable::read(m_tables), descriptions);
        m_watch = std::make_unique<BWUdevWatch>(
            std::make_unique<BWNodeTracker>(std::move(maker), std::move(events), BWUdevWatch::udevRuns),
            [this](bool pending, const QList<BWBlockedCamera> &blocked) {
                m_pending = pending;
                const std::scoped_lock lock(m_mutex);
                m_blocked = blocked;
            });
    }

    bool pendingDevices() const override { return m_pending; }

    QList<BWBlockedCamera> blockedCameras() const override
    {
        const std::scoped_lock lock(m_mutex);
        return m_blocked;
    }

private:
    const QStringList m_tables;
    std::atomic<bool> m_pending = false;
    mutable std::mutex m_mutex;
    QList<BWBlockedCamera> m_blocked; ///< guarded by the mutex
    std::unique_ptr<BWUdevWatch> m_watch; ///< last, so that its thread ends before what it uses
};

} // namespace

std::unique_ptr<BWCameraBackend> BWV4L2Backend::create(const QStringList &tables)
{
    return std::make_unique<Backend>(tables);
}
