#pragma once

#include "Model/Thumbnails/BWThumbnailRequest.h"
#include "Utils/BWWorkerPool.h"

#include <chrono>
#include <functional>
#include <memory>
#include <QList>
#include <vector>

/// Threads of low priority that carry out requests in their order, and store what they made when nothing is requested.
///
/// A thread that hangs at a file, on a network that does not answer, is replaced after a while and left behind at the
/// end. All operations belong to one thread, the GUI's.
class BWThumbnailWorkers {
public:
    using Make = std::function<BWThumbnailResult(const BWThumbnailRequest &)>;

    struct Work {
        /// Called once on every worker, for what that worker makes thumbnails with.
        std::function<Make()> newMaker;
        /// Stores a result. Any worker.
        std::function<void(const BWThumbnailResult &)> store;
        /// There is something to be taken; told again only after take(). Any worker.
        std::function<void()> resultsWaiting;
    };

    /// As many threads as there are processors if `threads` is 0; begun with the first request. A thread counts as hanging
    /// when it has been at one file for longer than `patience`.
    explicit BWThumbnailWorkers(Work work, int threads = 0,
                                std::chrono::milliseconds patience = std::chrono::seconds(3));
    /// Waits for what has been begun, but not for long. What has not been stored is not stored any more.
    ~BWThumbnailWorkers();
    BWThumbnailWorkers(const BWThumbnailWorkers &) = delete;
    BWThumbnailWorkers &operator=(const BWThumbnailWorkers &) = delete;

    /// Replaces all requests that are not begun. One that is begun already, or waits to be taken, is not begun again.
    void request(const QList<BWThumbnailRequest> &inOrder);

    /// The results since the last call, in the order in which they came.
    std::vector<BWThumbnailResult> take();

    /// Whether everything requested is made and taken, and everything made is stored.
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
