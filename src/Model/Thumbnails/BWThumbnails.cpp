// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Thumbnails/BWThumbnails.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWMainQueue.h"

#include <algorithm>
#include <new>
#include <QSet>

using Clock = std::chrono::steady_clock;

struct BWThumbnails::Entry {
    BWThumbnail thumbnail;
    std::optional<BWFileStamp> stamp;
    BWThumbnailSize size;
    Clock::time_point looked;
    int looksLeft = 0; ///< that are taken without a request, at a file that may still be being written

    qsizetype cost() const { return costOfEntry + thumbnail.image.sizeInBytes(); }
    static constexpr qsizetype costOfEntry = 512; // bytes, about: address, stamp, administration
};

namespace {

constexpr int looksAtUnsettled = 10;
constexpr std::chrono::milliseconds margin(50); // for timers that fire early

/// What a picture may need at most: as much as a square one.
qsizetype mostBytes(BWThumbnailSize size)
{
    const qsizetype side = BWThumbnailSizes::pixels(size);
    return side * side * 4;
}

BWThumbnailWorkers::Callbacks callbacksFor(const QByteArray &folder)
{
    const auto store = std::make_shared<BWThumbnailStore>(folder);
    BWThumbnailWorkers::Callbacks callbacks;
    callbacks.newMaker = [store] {
        const auto maker = std::make_shared<BWThumbnailMaker>();
        const auto make = [store, maker](const BWThumbnailRequest &request) {
            const QByteArray path = BWFilePath::native(request.file);
            BWThumbnailResult result{request};
            result.made.stamp = BWThumbnailFile::stampOf(path);
            if (request.known && request.knownStamp == result.made.stamp) {
                result.unchanged = true;
                return result;
            }
            if (!result.made.stamp)
                return result;
            if (auto found = store->find(path, *result.made.stamp, request.size)) {
                result.made.thumbnail = std::move(*found);
                return result;
            }
            result.made = maker->make(path, request.size);
            result.toBeStored = result.made.worthKeeping;
            return result;
        };
        return [make](const BWThumbnailRequest &request) {
            try {
                return make(request);
            } catch (const std::bad_alloc &) {
                return BWThumbnailResult{.request = request, .made = {.unsettled = true}};
            }
        };
    };
    callbacks.store = [store](const BWThumbnailResult &result) {
        try {
            const QByteArray path = BWFilePath::native(result.request.file);
            if (BWThumbnailFile::stampOf(path) != result.made.stamp) // it has gone or changed meanwhile
                return;
            store->keep(path, *result.made.stamp, result.request.size, result.made.thumbnail);
        } catch (const std::bad_alloc &) { // then it is made again the next time
        }
    };
    return callbacks;
}

} // namespace

BWThumbnails::BWThumbnails(Ready ready) : BWThumbnails(std::move(ready), Options()) { }

BWThumbnails::BWThumbnails(Ready ready, const Options &options)
    : m_ready(std::move(ready)), m_options(options), m_memory(options.memory)
{
    BWThumbnailWorkers::Callbacks callbacks = callbacksFor(options.sharedFolder);
    callbacks.resultsWaiting = [this, alive = m_alive.watch()] { BWMainQueue::post(alive, [this] { takeResults(); }); };
    m_workers = std::make_unique<BWThumbnailWorkers>(std::move(callbacks), options.threads);
    m_nextLook.setSingleShot(true);
    m_nextLook.setInterval(options.lookAgainAfter + margin);
    m_nextLook.callOnTimeout([this] { ask(false); });
}

BWThumbnails::~BWThumbnails() = default;

std::optional<BWThumbnail> BWThumbnails::thumbnail(const QUrl &file) const
{
    const Entry *const entry = m_memory.object(file);
    return entry ? std::optional(entry->thumbnail) : std::nullopt;
}

void BWThumbnails::request(const QList<QUrl> &inOrder, int pixels)
{
    m_size = BWThumbnailSizes::forPixels(pixels);
    m_wanted = inOrder;
    ask(true);
}

void BWThumbnails::ask(bool isRequested)
{
    const auto longAgo = Clock::now() - m_options.lookAgainAfter;
    QList<BWThumbnailRequest> missing;
    QList<BWThumbnailRequest> again;
    QSet<QUrl> seen;
    qsizetype bytes = 0;
    for (qsizetype i = 0; i < m_wanted.size(); ++i) {
        const QUrl &file = m_wanted.at(i);
        if (seen.contains(file))
            continue;
        seen.insert(file);
        const Entry *const entry = m_memory.object(file);
        const bool suffices = entry && entry->size >= m_size;
        bytes += suffices ? entry->cost() : Entry::costOfEntry + mostBytes(m_size);
        if (bytes > m_memory.maxCost() && i > 0) {
            m_wanted.resize(i);
            break;
        }
        if (!suffices)
            missing.append({file, m_size});
        else if (entry->looked <= longAgo)
            again.append({file, m_size, true, entry->stamp});
        else if (isRequested || (entry->looksLeft > 0 && !m_nextLook.isActive()))
            m_nextLook.start(); // anew: this one may have been looked at later than the one that it runs for
    }
    // The cache drops the first files last.
    std::for_each(m_wanted.crbegin(), m_wanted.crend(), [this](const QUrl &file) { m_memory.object(file); });
    m_workers->request(missing + again);
}

void BWThumbnails::takeResults()
{
    QList<QUrl> ready;
    bool lost = false;
    for (const BWThumbnailResult &result : m_workers->take()) {
        lost = lost || (result.unchanged && !m_memory.contains(result.request.file));
        if (keep(result))
            ready.append(result.request.file);
    }
    if (lost) // the cache has dropped an unchanged one meanwhile
        ask(false);
    if (!ready.isEmpty())
        m_ready(ready);
}

/// Whether the thumbnail is another one than before.
bool BWThumbnails::keep(const BWThumbnailResult &result)
{
    Entry *const before = m_memory.object(result.request.file);
    if (result.unchanged) {
        if (!before)
            return false;
        before->looked = Clock::now();
        before->looksLeft = std::max(before->looksLeft - 1, 0);
    }
    const int looksLeft = result.unchanged ? before->looksLeft : result.made.unsettled ? looksAtUnsettled : 0;
    if (looksLeft > 0 && !m_nextLook.isActive())
        m_nextLook.start();
    if (result.unchanged)
        return false;

    const BWThumbnail &thumbnail = result.made.thumbnail;
    const bool wasImpossible = before && before->thumbnail.kind == BWThumbnail::Kind::Impossible;
    const bool differs = !wasImpossible || thumbnail.kind != BWThumbnail::Kind::Impossible;
    auto *const entry = new Entry{thumbnail, result.made.stamp, result.request.size, Clock::now(), looksLeft};
    return m_memory.insert(result.request.file, entry, entry->cost()) && differs;
}
