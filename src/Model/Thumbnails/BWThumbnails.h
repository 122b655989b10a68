// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Thumbnails/BWThumbnailStore.h"
#include "Model/Thumbnails/BWThumbnailWorkers.h"
#include "Utils/BWMainQueue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <QCache>
#include <QList>
#include <QTimer>
#include <QUrl>

/// The thumbnails of files: from memory at once; otherwise made in the background, or taken from the thumbnails that
/// all programs of the desktop share. GUI thread only.
class BWThumbnails {
public:
    /// Files whose thumbnail has become ready or has changed. GUI thread, from the event loop.
    using Ready = std::function<void(const QList<QUrl> &files)>;

    struct Options {
        qint64 memory = 64 << 20; ///< bytes of images held at most
        QByteArray sharedFolder = BWThumbnailStore::defaultFolder(); ///< of the desktop; empty to do without
        int threads = 0; ///< 0: one per processor
        /// A requested file is checked for changes when the last look at it was longer ago than that.
        std::chrono::milliseconds lookAgainAfter{2000};
    };

    explicit BWThumbnails(Ready ready);
    BWThumbnails(Ready ready, const Options &options);
    ~BWThumbnails();
    BWThumbnails(const BWThumbnails &) = delete;
    BWThumbnails &operator=(const BWThumbnails &) = delete;

    /// What is in memory; nothing if it has not been made yet, or not kept. Never waits. May be smaller than last
    /// requested, until that size is ready.
    std::optional<BWThumbnail> thumbnail(const QUrl &file) const;

    /// Replaces all requests: visible files first, then those nearby. `pixels` is the larger side of the place where
    /// they are shown, in device pixels; thumbnails have at most 500. Earlier requests that have not been begun are
    /// dropped. Uses only as much of the list as fits into the memory. Also looks again at files that have changed, at
    /// once or a little later, so call this when the folder may have changed.
    void request(const QList<QUrl> &inOrder, int pixels);

    /// Whether nothing is left to be made, reported or stored.
    bool isIdle() const { return m_workers->isIdle(); }

private:
    struct Entry;
    void takeResults();
    bool keep(const BWThumbnailResult &result);
    void ask(bool isRequested);

    Ready m_ready;
    Options m_options;
    BWThumbnailSize m_size = BWThumbnailSize::Normal;
    QList<QUrl> m_wanted;
    QTimer m_nextLook; // at files that may still be being written
    QCache<QUrl, Entry> m_memory;
    BWAliveToken m_alive;
    std::unique_ptr<BWThumbnailWorkers> m_workers;
};
