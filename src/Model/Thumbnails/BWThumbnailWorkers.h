// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Thumbnails/BWThumbnailMaker.h"
#include "Utils/BWWorkerPool.h"

#include <chrono>
#include <functional>
#include <memory>
#include <QList>
#include <QUrl>
#include <vector>

/// A thumbnail that is asked for.
struct BWThumbnailRequest {
    QUrl file;
    BWThumbnailSize size = BWThumbnailSize::Normal;
    bool known = false; ///< there is a thumbnail already, of the file as `knownStamp` describes it
    std::optional<BWFileStamp> knownStamp{};
};

/// What came of it.
struct BWThumbnailResult {
    BWThumbnailRequest request{};
    BWMadeThumbnail made{};
    bool unchanged = false; ///< the file is still as `knownStamp` describes it; `made` is empty then
    bool toBeStored = false;
};

/// Threads of low priority that serve requests in order, and store what they made when no request is left.
///
/// A thread that hangs at a file, on a network that does not answer, is replaced after a while and left behind at the
/// end. All operations belong to one thread, the GUI's.
class BWThumbnailWorkers {
public:
    using Make = std::function<BWThumbnailResult(const BWThumbnailRequest &)>;

    struct Callbacks {
        /// Called once on every worker, for what that worker makes thumbnails with.
        std::function<Make()> newMaker;
        /// Stores a result. Any worker.
        std::function<void(const BWThumbnailResult &)> store;
        /// Results are ready to be taken; not called again before take(). Any worker.
        std::function<void()> resultsWaiting;
    };

    /// As many threads as there are processors if `threads` is 0; started by the first request. A thread counts as
    /// hanging when it has been at one file for longer than `patience`.
    explicit BWThumbnailWorkers(Callbacks callbacks, int threads = 0,
                                std::chrono::milliseconds patience = std::chrono::seconds(3));
    /// Waits for what is under way, but not for long. What has not been stored yet is not stored.
    ~BWThumbnailWorkers();
    BWThumbnailWorkers(const BWThumbnailWorkers &) = delete;
    BWThumbnailWorkers &operator=(const BWThumbnailWorkers &) = delete;

    /// Replaces all requests that no worker has begun. Leaves out files that are under way or whose result is waiting.
    void request(const QList<BWThumbnailRequest> &inOrder);

    /// The results since the last call, in the order in which they came.
    std::vector<BWThumbnailResult> take();

    /// Whether all that was requested is made and taken, and all that was made is stored.
    bool isIdle() const;

private:
    struct State;
    static void run(const std::shared_ptr<State> &state);
    void addWorkers();

    std::shared_ptr<State> m_state; // the workers' too: one that hangs may outlive us
    int m_threads;
    std::chrono::milliseconds m_patience;
    int m_workers = 0;
    BWWorkerPool m_pool;
};
