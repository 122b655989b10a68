// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumIntake.h"

#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto longCopy = std::chrono::milliseconds(500);
constexpr auto intakeReportEvery = std::chrono::milliseconds(200);
constexpr auto patience = std::chrono::minutes(2); // a long movie on a slow disk
constexpr auto patienceWhenAbandoned = std::chrono::seconds(2);

} // namespace

BWAlbumIntake::BWAlbumIntake(CurrentAlbum currentAlbum, std::function<void()> contentsChanged)
    : m_currentAlbum(std::move(currentAlbum)), m_contentsChanged(std::move(contentsChanged)), m_worker(1, patience)
{
}

BWAlbumIntake::~BWAlbumIntake()
{
    startCopies();
}

void BWAlbumIntake::add(const QUrl &file, BWMediaType type, Completion completion, Progress progress, BWAlbumPtr album)
{
    ++m_open;
    {
        const std::lock_guard lock(m_mutex);
        m_captures.push_back({file, type, std::move(completion), std::move(progress), std::move(album)});
    }
    BWMainQueue::post(m_alive, [this] { startCopies(); });
}

void BWAlbumIntake::release()
{
    m_held = false;
    startCopies();
}

void BWAlbumIntake::startCopies()
{
    if (m_held)
        return;
    std::deque<Capture> captures;
    {
        const std::lock_guard lock(m_mutex);
        captures.swap(m_captures);
    }
    for (const Capture &capture : captures)
        startCopy(capture);
}

void BWAlbumIntake::startCopy(const Capture &capture)
{
    const BWAlbumPtr album = capture.album ? capture.album : m_currentAlbum();
    if (!album)
        qCWarning(bwModel).noquote() << "No album to add" << capture.file.toDisplayString() << "to";
    m_worker.run([this, alive = alive(), album, capture, progress = throttled(capture.progress)] {
        QUrl file;
        const bool added = album && album->addFile(capture.file, capture.type, &file, progress);
        BWMainQueue::post(alive, [this, capture, added, file] { report(capture, added, file); });
    });
}

void BWAlbumIntake::report(const Capture &capture, bool added, const QUrl &file)
{
    if (added)
        qCInfo(bwModel).noquote() << "Capture in the album:" << file.toLocalFile();
    if (added && !capture.album)
        m_contentsChanged();
    --m_open; // first: the completion may wait for the user, and the program may be asked to end meanwhile
    if (capture.completion && (added || !*m_abandoned))
        capture.completion(added, file);
    notifyIfDone();
}

/// Reports the progress of a long copy to the owner's thread, and ends the copy when it is abandoned.
BWAlbum::Progress BWAlbumIntake::throttled(const Progress &progress)
{
    return [progress, alive = alive(), abandoned = m_abandoned, next = Clock::now() + longCopy](double done) mutable {
        if (progress && Clock::now() >= next) {
            next = Clock::now() + intakeReportEvery;
            BWMainQueue::post(alive, [progress, done] { progress(done); });
        }
        return !*abandoned;
    };
}

void BWAlbumIntake::whenDone(std::function<void()> done)
{
    m_whenDone.push_back(std::move(done));
    notifyIfDone();
}

void BWAlbumIntake::notifyIfDone()
{
    if (m_open > 0)
        return;
    for (const auto &done : std::exchange(m_whenDone, {}))
        done();
}

void BWAlbumIntake::abandon()
{
    *m_abandoned = true;
    m_worker.setPatience(patienceWhenAbandoned);
}
