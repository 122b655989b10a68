#pragma once

#include "Model/Export/BWExportResult.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <QList>

class BWExportWatch;

/// Saves files elsewhere while the program goes on: one file as a copy, several as one ZIP archive. One export at a
/// time. GUI thread only.
class BWFileExport {
public:
    /// Bytes of the files that are saved, and of how many; at most twenty times a second.
    using Progress = std::function<void(qint64 done, qint64 total)>;
    using Finished = std::function<void(const BWExportResult &result)>;

    BWFileExport() = default;
    /// Cancels what runs, without calling anything.
    ~BWFileExport();

    /// Begins to save the files, one at least, as `target`; a file that stands there is replaced once all is well.
    /// False, and nothing happens, while an export is running. `finished` is called once, later; a failure is logged.
    bool start(const QList<QUrl> &files, const QUrl &target, Finished finished, Progress progress = {});
    /// The end is told as always; it may still be that of an export which was done just before.
    void cancel();
    bool isRunning() const { return m_watch != nullptr; }

private:
    void finish(const BWExportResult &result);

    std::shared_ptr<BWExportWatch> m_watch; // of the export that runs
    Finished m_finished;
    BWAliveToken m_alive;
    BWWorkerPool m_thread;
};
