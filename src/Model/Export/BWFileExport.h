// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Export/BWExportResult.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <QList>
#include <QStringList>

/// Copies one file to a target that may exist, and is then replaced once the copy is whole. The date stays. Any thread.
class BWExportCopy {
public:
    /// Returns when the copy is done, cancelled or failed. If the target is the file itself, does nothing and succeeds.
    static BWExportResult run(const QUrl &file, const QUrl &target, BWExportWatch &watch);
};

/// Saves files elsewhere while the program goes on: one file as a copy, several as one ZIP archive, or whatever else
/// makes a file of them. One export at a time. GUI thread only.
class BWFileExport {
public:
    /// Bytes of the files that are saved, and of how many; at most twenty times a second.
    using Progress = std::function<void(qint64 done, qint64 total)>;
    using Finished = std::function<void(const BWExportResult &result)>;
    /// Makes the target on a thread of its own, which yields to all others. It owns what it uses, and ends soon once the
    /// watch is cancelled.
    using Work = std::function<BWExportResult(BWExportWatch &watch)>;

    BWFileExport() = default;
    /// Cancels a running export, without calling anything.
    ~BWFileExport();

    /// Begins to save the files, one at least, as `target`; a file that stands there is replaced once all is well.
    /// False, and nothing happens, while an export is running. Calls `finished` once, later; logs a failure.
    bool start(const QList<QUrl> &files, const QUrl &target, Finished finished, Progress progress = {});
    /// The same for other work.
    bool start(const Work &work, const QUrl &target, Finished finished, Progress progress = {});
    /// `finished` is called as always; its result may still be that of an export that was done just before.
    void cancel();
    bool isRunning() const { return m_watch != nullptr; }

private:
    bool start(BWWorkerPool &thread, const Work &work, const QUrl &target, Finished finished, Progress progress);
    void finish(const BWExportResult &result);

    std::shared_ptr<BWExportWatch> m_watch; // of the export that runs
    Finished m_finished;
    BWAliveToken m_alive;
    BWWorkerPool m_thread;
    BWWorkerPool m_yielding; // a thread cannot raise its priority again
};

/// Copies files into folders in the background, each on its own. When destroyed it finishes the copies it was asked
/// for. GUI thread only.
class BWFolderCopies {
public:
    /// Begins to copy each file into the folder under its own name, and returns the names at once. A file of that name
    /// is replaced without asking, once the copy is whole. A failure is logged.
    QStringList copy(const QList<QUrl> &files, const QUrl &folder);

private:
    BWWorkerPool m_pool{2, BWWorkerPool::untilDone}; // a disk is not faster with more threads
};
