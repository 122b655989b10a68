// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumWatch.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <array>
#include <atomic>
#include <cstring>
#include <malloc.h>
#include <poll.h>
#include <QSet>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr int settleMilliseconds = 100; // of silence after which a program has written its files
constexpr int longestSettle = 5; // times that
constexpr std::size_t manyChanges = 1000; // more are quicker to list
constexpr qsizetype longAlbum = 10'000; // files; to list more takes memory worth giving back
constexpr std::size_t changesUntilTrim = 1000; // each leaves the space of a list, which smaller things break up
constexpr int retryMilliseconds = 2000; // where nothing can be watched
constexpr uint32_t entriesChange = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr uint32_t folderGoes = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr uint32_t fileWritten = IN_CLOSE_WRITE;
constexpr uint32_t fileMayDiffer = fileWritten | IN_MOVED_TO | IN_Q_OVERFLOW; // or was moved over the old one
constexpr uint32_t allAnew = folderGoes | IN_Q_OVERFLOW; // what the events tell is not the whole of it

/// Keeps the entries that were there before, so that a long list is in memory once, and the GUI thread frees few.
void share(QList<QUrl> &now, const QList<QUrl> &before)
{
    if (now == before) {
        now = before;
        return;
    }
    const QSet<QUrl> known(before.cbegin(), before.cend());
    for (QUrl &file : now) {
        if (const auto same = known.constFind(file); same != known.cend())
            file = *same;
    }
}

} // namespace

class BWAlbumWatch::Worker : public std::enable_shared_from_this<Worker> {
public:
    Worker(const BWAlbum &album, std::function<void(const Report &)> report)
        : m_album(album),
          m_report(std::move(report)),
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

    std::atomic<unsigned> requests = 0;
    std::atomic<bool> anew = false; // the next listing asks the disk

private:
    struct Change {
        QByteArray name;
        bool isThere;
    };

    void watchFolder();
    uint32_t waitForChange();
    bool waitForEvents(int milliseconds) const;
    uint32_t takeEvents();
    Report listed(const std::optional<Report> &last) const;
    Report followed(const Report &last, const std::vector<Change> &changes);
    void report(const Report &report);

    const BWAlbum m_album;
    const std::function<void(const Report &)> m_report; // for the GUI thread
    const int m_wakeUp;
    const int m_events;
    int m_watch = -1;
    std::vector<Change> m_changes; // of entries, since the last listing
    std::size_t m_followed = 0; // changes since memory was given back
    std::atomic<bool> m_stopped = false;
};

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

/// All that has happened to the folder, in one mask.
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
            if ((event.mask & entriesChange) != 0 && event.len > 0)
                m_changes.push_back({at + sizeof event, (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0});
            at += sizeof event + event.len;
        }
    }
    if ((what & folderGoes) != 0 && m_watch >= 0) {
        ::inotify_rm_watch(m_events, std::exchange(m_watch, -1));
        takeEvents(); // the end of the watch is an event, too
    }
    return what;
}

uint32_t BWAlbumWatch::Worker::waitForChange()
{
    const unsigned before = requests;
    waitForEvents(m_watch < 0 ? retryMilliseconds : -1);
    uint32_t what = takeEvents();
    for (int i = 0; i < longestSettle && !m_stopped && requests == before && waitForEvents(settleMilliseconds); ++i)
        what |= takeEvents();
    return what;
}

void BWAlbumWatch::Worker::report(const Report &report)
{
    BWMainQueue::post(weak_from_this(), [this, report] {
        if (!m_stopped)
            m_report(report);
    });
}

/// Asks the disk for all of it.
BWAlbumWatch::Report BWAlbumWatch::Worker::listed(const std::optional<Report> &last) const
{
    Report now{m_album.contents()};
    if (last && last->listing && now.listing) {
        share(now.listing->images, last->listing->images);
        share(now.listing->videos, last->listing->videos);
    }
    now.differs = !last || now.listing != last->listing;
    if (now.listing && now.listing->images.size() > longAlbum)
        ::malloc_trim(0);
    return now;
}

/// A file more or less costs a long album hardly anything.
BWAlbumWatch::Report BWAlbumWatch::Worker::followed(const Report &last, const std::vector<Change> &changes)
{
    Report now{last.listing, false};
    for (const Change &change : changes)
        now.differs |= m_album.follow(*now.listing, change.name, change.isThere);
    m_followed += changes.size();
    if (m_followed >= changesUntilTrim) {
        m_followed = 0;
        ::malloc_trim(0);
    }
    return now;
}

void BWAlbumWatch::Worker::run()
{
    std::optional<Report> last;
    uint32_t what = 0;
    while (!m_stopped) {
        const unsigned serves = requests;
        const bool isAnew = anew.exchange(false);
        const bool wasWatched = m_watch >= 0;
        what |= takeEvents(); // of what happened before the requests that this serves
        watchFolder(); // before listing it, so that nothing is missed
        const std::vector<Change> changes = std::exchange(m_changes, {});
        const bool known =
            last && last->listing && wasWatched && !isAnew && (what & allAnew) == 0 && changes.size() < manyChanges;
        Report now = known ? followed(*last, changes) : listed(last);
        now.requests = serves;
        now.filesWritten = (what & fileMayDiffer) != 0;
        if (!last || now.differs || now.requests != last->requests || now.filesWritten)
            report(now);
        last = std::move(now);
        what = requests == serves ? waitForChange() : 0;
    }
}

BWAlbumWatch::BWAlbumWatch(const BWAlbum &album, std::function<void(const Report &)> report)
    : m_worker(std::make_shared<Worker>(album, std::move(report)))
{
    m_thread.run([worker = m_worker] { worker->run(); });
}

BWAlbumWatch::~BWAlbumWatch()
{
    m_worker->stop();
}

unsigned BWAlbumWatch::request(Depth depth)
{
    if (depth == Depth::ListAnew)
        m_worker->anew = true;
    const unsigned count = ++m_worker->requests;
    m_worker->wakeUp();
    return count;
}
