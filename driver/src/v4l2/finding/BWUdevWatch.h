#pragma once

#include "v4l2/finding/BWNodeTracker.h"

#include <functional>
#include <memory>
#include <thread>

/// Tells a node tracker, on a thread of its own, what the kernel and udev have to say about cameras.
class BWUdevWatch {
public:
    /// BWNodeTracker::pending() and blocked().
    using Publish = std::function<void(bool pending, const QList<BWBlockedCamera> &blocked)>;

    /// The thread starts at once and alone uses the tracker from then on. `publish` is called on it, whenever the
    /// answers may have changed; for the first time when what was attached before has been looked at.
    BWUdevWatch(std::unique_ptr<BWNodeTracker> tracker, Publish publish);
    /// Nothing is called any more afterwards. Waits for a device that is just being opened.
    ~BWUdevWatch();

    /// Whether udev is there to set nodes up; it is not in most containers.
    static bool udevRuns();

private:
    void run();
    void publish() const;

    const std::unique_ptr<BWNodeTracker> m_tracker;
    const Publish m_publish;
    const int m_end; ///< an eventfd, written to end the thread
    std::thread m_thread;
};
