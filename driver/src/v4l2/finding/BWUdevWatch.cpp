#include "v4l2/finding/BWUdevWatch.h"

#include "base/BWDriverLog.h"
#include "v4l2/finding/BWUdevSources.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <QFile>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

int milliseconds(const std::optional<BWNodeTracker::Time> &until)
{
    if (!until)
        return -1;
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*until - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<qint64>(0, rest.count()));
}

} // namespace

BWUdevWatch::BWUdevWatch(std::unique_ptr<BWNodeTracker> tracker, Publish publish)
    : m_tracker(std::move(tracker)),
      m_publish(std::move(publish)),
      m_end(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_thread([this] { run(); })
{
}

BWUdevWatch::~BWUdevWatch()
{
    eventfd_write(m_end, 1);
    m_thread.join();
    close(m_end);
}

bool BWUdevWatch::udevRuns()
{
    return QFile::exists(u"/run/udev/control"_s);
}

void BWUdevWatch::run()
{
    BWUdevSources sources;
    sources.enumerate(*m_tracker);
    while (true) {
        publish(); // to open a camera can take a while
        m_tracker->advance(std::chrono::steady_clock::now());
        publish();
        const auto [kernel, udev, access] = sources.descriptors();
        std::array waited{pollfd{m_end, POLLIN, 0}, kernel, udev, access};
        if (poll(waited.data(), waited.size(), milliseconds(m_tracker->nextTime())) < 0 && errno != EINTR) {
            qCWarning(bwDriver) << "Cameras are no longer watched:" << std::strerror(errno);
            return;
        }
        if (waited[0].revents != 0)
            return;
        sources.readEvents(*m_tracker);
    }
}

void BWUdevWatch::publish() const
{
    m_publish(m_tracker->pending(std::chrono::steady_clock::now()), m_tracker->blocked());
}
