#pragma once

#include "v4l2/finding/BWNodeTracker.h"
#include "v4l2/finding/BWUdev.h"

#include <array>
#include <poll.h>

/// Where news of cameras come from: the kernel's and udev's events, and changes of permissions in /dev. Listens from
/// its making on, so that nothing is missed between enumerate() and the first event. One thread.
class BWUdevSources {
public:
    BWUdevSources();
    ~BWUdevSources();
    BWUdevSources(const BWUdevSources &) = delete;
    BWUdevSources &operator=(const BWUdevSources &) = delete;

    /// What to poll for before readEvents().
    std::array<pollfd, 3> descriptors() const;

    /// Reports everything that is attached, and forgets the rest.
    void enumerate(BWNodeTracker &tracker) const;
    /// Reports everything that has happened. Does not wait.
    void readEvents(BWNodeTracker &tracker);

private:
    BWUdevMonitor listen(const char *source) const;
    /// False when events were lost.
    static bool readMonitor(udev_monitor *monitor, bool initialised, BWNodeTracker &tracker);
    void readAccess(BWNodeTracker &tracker) const;

    BWUdevContext m_udev;
    BWUdevMonitor m_kernelEvents; ///< come first
    BWUdevMonitor m_udevEvents; ///< the same, when udev has done its part
    int m_access; ///< inotify
};
