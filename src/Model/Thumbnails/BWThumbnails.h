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

/// The thumbnails of files: what is in memory is there at once, the rest is made by threads in the background or comes
/// from the thumbnails that all programs of the desktop share. GUI thread only.
class BWThumbnails {
public:
    /// Files whose thumbnail has become ready, or another one than it was. GUI thread, from the event loop.
    using Ready = std::function<void(const QList<QUrl> &files)>;

    struct Options {
        qint64 memory = 64 * 1024 * 1024; ///< bytes of images held at most
        QByteArray sharedFolder = BWThumbnailStore::defaultFolder(); ///< of the desktop; empty to do without
        int threads = 0; ///< 0: as many as processors
        /// A requested file is looked at again, whether it has changed, when the last look was longer ago than that.
        std::chrono::milliseconds lookAgainAfter{2000};
    };

    explicit BWThumbnails(Ready ready);
    BWThumbnails(Ready ready, const Options &options);
    ~BWThumbnails();
    BWThumbnails(const BWThumbnails &) = delete;
    BWThumbnails &operator=(const BWThumbnails &) = delete;

    /// What is in memory; nothing if it has not been made yet, or not kept. Never waits. It may be smaller than the size
    /// requested last, until that is ready.
    std::optional<BWThumbnail> thumbnail(const QUrl &file) const;

    /// Replaces all requests: what can be seen first, then what is near. `pixels` is the larger side of the place where
    /// they are shown, in device pixels; thumbnails have at most 500. What is no longer requested and has not been begun is
    /// not made. Only as much of the list is taken up as fits into the memory. Files that have changed since they were
    /// looked at are looked at again, so call this as well when the folder may have changed.
    void request(const QList<QUrl> &inOrder, int pixels);

    /// Whether nothing is left to be made, told or stored.
    bool isIdle() const { return m_workers->isIdle(); }

private:
    struct Entry;
    void takeResults();
    bool keep(const BWThumbnailResult &result);
    void ask();

    Ready m_ready;
    Options m_options;
    BWThumbnailSize m_size = BWThumbnailSize::Normal;
    QList<QUrl> m_wanted;
    QTimer m_nextLook; // at files that may still be written
    QCache<QUrl, Entry> m_memory;
    BWAliveToken m_alive;
    std::unique_ptr<BWThumbnailWorkers> m_workers;
};
