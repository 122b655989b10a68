#include "Model/BWAlbumIntake.h"

#include "Utils/BWLogging.h"

#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto longCopy = std::chrono::milliseconds(500);
constexpr auto tellEvery = std::chrono::milliseconds(200);

} // namespace

BWAlbumIntake::BWAlbumIntake(CurrentAlbum currentAlbum, std::function<void()> contentsChanged)
    : m_currentAlbum(std::move(currentAlbum)), m_contentsChanged(std::move(contentsChanged))
{
    m_worker.setMaxThreadCount(1); // in order, and the search for a free name has no rival
}

BWAlbumIntake::~BWAlbumIntake()
{
    startCopies();
    m_worker.waitForDone();
}

template <typename Item>
std::optional<Item> BWAlbumIntake::takeFirst(std::deque<Item> &items)
{
    const std::lock_guard lock(m_mutex);
    if (items.empty())
        return std::nullopt;
    Item item = std::move(items.front());
    items.pop_front();
    return item;
}

void BWAlbumIntake::add(const QUrl &file, BWMediaType type, Completion completion, Progress progress)
{
    {
        const std::lock_guard lock(m_mutex);
        m_captures.push_back({file, type, std::move(completion), std::move(progress)});
        ++m_open;
    }
    QMetaObject::invokeMethod(
        &m_context, [this] { startCopies(); }, Qt::QueuedConnection);
}

void BWAlbumIntake::startCopies()
{
    while (std::optional<Capture> capture = takeFirst(m_captures)) {
        const BWAlbumPtr album = m_currentAlbum();
        if (!album)
            qCWarning(bwModel).noquote() << "No album to add" << capture->file.toDisplayString() << "to";
        m_worker.start([this, album, item = std::move(*capture)] { copy(album, item); });
    }
}

void BWAlbumIntake::copy(const BWAlbumPtr &album, const Capture &capture)
{
    Result result{false, {}, capture.completion};
    result.added = album && album->addFile(capture.file, capture.type, &result.file, throttled(capture.progress));
    {
        const std::lock_guard lock(m_mutex);
        m_results.push_back(std::move(result));
    }
    QMetaObject::invokeMethod(
        &m_context, [this] { report(); }, Qt::QueuedConnection);
}

void BWAlbumIntake::report()
{
    // One by one: a completion may show an alert, under which this is entered again.
    while (const std::optional<Result> result = takeFirst(m_results)) {
        if (result->added)
            m_contentsChanged();
        if (result->completion && (result->added || !m_abandoned))
            result->completion(result->added, result->file);
        const std::lock_guard lock(m_mutex);
        --m_open;
    }
    tellIfDone();
}

/// Hands what a long copy tells on to the owner's thread, and ends it when it is abandoned.
BWAlbum::Progress BWAlbumIntake::throttled(const Progress &progress)
{
    return [this, progress, next = Clock::now() + longCopy](double done) mutable {
        if (progress && Clock::now() >= next) {
            next = Clock::now() + tellEvery;
            QMetaObject::invokeMethod(
                &m_context, [progress, done] { progress(done); }, Qt::QueuedConnection);
        }
        return !m_abandoned;
    };
}

void BWAlbumIntake::whenDone(std::function<void()> done)
{
    m_whenDone.push_back(std::move(done));
    tellIfDone();
}

void BWAlbumIntake::tellIfDone()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_open > 0)
            return;
    }
    for (const auto &done : std::exchange(m_whenDone, {}))
        done();
}
