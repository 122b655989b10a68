#include "Model/Albums/BWAlbumWatch.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <array>
#include <atomic>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int settleMilliseconds = 100; // a program that writes many files is waited for so long
constexpr int longestSettle = 5; // times that
constexpr int retryMilliseconds = 2000; // where nothing can be watched
constexpr uint32_t entriesChange = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr uint32_t folderGoes = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr uint32_t fileWritten = IN_CLOSE_WRITE;

} // namespace

class BWAlbumWatch::Worker : public std::enable_shared_from_this<Worker> {
public:
    Worker(const BWAlbum &album, std::function<void(const Report &)> tell)
        : m_album(album),
          m_tell(std::move(tell)),
          m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          m_events(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    {
        if (m_events < 0)
            qCWarning(bwModel, "Changes of albums cannot be watched: %s", std::strerror(errno));
    }
    ~Worker()
    {
        ::close(m_wakeUp);
        if (m_events >= 0)
            ::close(m_events);
    }

    void run();
    void wakeUp() const { ::eventfd_write(m_wakeUp, 1); }
    void stop()
    {
        m_stopped = true;
        wakeUp();
    }

    std::atomic<unsigned> asked = 0;

private:
    std::optional<Listing> list() const;
    void watchFolder();
    uint32_t waitForChange();
    bool waitForEvents(int milliseconds) const;
    uint32_t takeEvents();
    void report(const Report &report);

    const BWAlbum m_album;
    const std::function<void(const Report &)> m_tell; // called on the GUI thread
    const int m_wakeUp;
    const int m_events;
    int m_watch = -1;
    std::atomic<bool> m_stopped = false;
};

std::optional<BWAlbumWatch::Listing> BWAlbumWatch::Worker::list() const
{
    const auto images = m_album.contentsForType(BWMediaType::Image);
    const auto videos = m_album.contentsForType(BWMediaType::Video);
    if (!images || !videos)
        return std::nullopt;
    return Listing{*images, *videos};
}

void BWAlbumWatch::Worker::watchFolder()
{
    if (m_watch < 0 && m_events >= 0)
        m_watch = ::inotify_add_watch(m_events, BWFilePath::native(m_album.path()).constData(),
                                      entriesChange | folderGoes | fileWritten | IN_ONLYDIR);
}

bool BWAlbumWatch::Worker::waitForEvents(int milliseconds) const
{
    std::array<pollfd, 2> files{pollfd{m_wakeUp, POLLIN, 0}, pollfd{m_events, POLLIN, 0}};
    return ::poll(files.data(), files.size(), milliseconds) > 0;
}

/// What has happened to the folder, all in one.
uint32_t BWAlbumWatch::Worker::takeEvents()
{
    eventfd_t count = 0;
    ::eventfd_read(m_wakeUp, &count);
    uint32_t what = 0;
    alignas(inotify_event) std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t size = m_events < 0 ? 0 : ::read(m_events, buffer.data(), buffer.size());
        if (size <= 0)
            break;
        for (const char *at = buffer.data(); at < buffer.data() + size;) {
            inotify_event event;
            std::memcpy(&event, at, sizeof event);
            what |= event.mask;
            at += sizeof event + event.len;
        }
    }
    if ((what & folderGoes) != 0 && m_watch >= 0) {
        ::inotify_rm_watch(m_events, std::exchange(m_watch, -1));
        takeEvents(); // that it is watched no more is an event, too
    }
    return what;
}

uint32_t BWAlbumWatch::Worker::waitForChange()
{
    const unsigned before = asked;
    waitForEvents(m_watch < 0 ? retryMilliseconds : -1);
    uint32_t what = takeEvents();
    for (int i = 0; i < longestSettle && !m_stopped && asked == before && waitForEvents(settleMilliseconds); ++i)
        what |= takeEvents();
    return what;
}

void BWAlbumWatch::Worker::report(const Report &report)
{
    BWMainQueue::post(weak_from_this(), [this, report] {
        if (!m_stopped)
            m_tell(report);
    });
}

void BWAlbumWatch::Worker::run()
{
    std::optional<Report> last;
    uint32_t what = 0;
    while (!m_stopped) {
        const unsigned serves = asked;
        watchFolder(); // before it is listed, so that nothing is missed
        Report now{list(), serves, (what & fileWritten) != 0};
        if (!last || now.listing != last->listing || now.asked != last->asked || now.filesWritten)
            report(now);
        last = std::move(now);
        if (asked == serves)
            what = waitForChange();
    }
}

BWAlbumWatch::BWAlbumWatch(const BWAlbum &album, std::function<void(const Report &)> tell)
    : m_worker(std::make_shared<Worker>(album, std::move(tell)))
{
    m_thread.run([worker = m_worker] { worker->run(); });
}

BWAlbumWatch::~BWAlbumWatch()
{
    m_worker->stop();
}

unsigned BWAlbumWatch::ask()
{
    const unsigned count = ++m_worker->asked;
    m_worker->wakeUp();
    return count;
}
