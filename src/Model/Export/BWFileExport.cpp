#include "Model/Export/BWFileExport.h"

#include "Model/Export/BWExportCopy.h"
#include "Model/Export/BWExportWatch.h"
#include "Model/Export/BWZipExport.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

void report(const QUrl &target, const BWExportResult &failure)
{
    QString reason = failure.reason;
    if (failure.file != target)
        reason = failure.file.toDisplayString() + u": "_s + reason;
    qCWarning(bwModel).noquote() << "Cannot save" << target.toDisplayString() << '-' << reason;
}

} // namespace

BWFileExport::~BWFileExport()
{
    cancel();
}

bool BWFileExport::start(const QList<QUrl> &files, const QUrl &target, Finished finished, Progress progress)
{
    if (isRunning() || files.isEmpty())
        return false;
    const std::weak_ptr<void> owner = m_alive.watch();
    m_finished = std::move(finished);
    m_watch = std::make_shared<BWExportWatch>([owner, progress = std::move(progress)](qint64 done, qint64 total) {
        if (progress)
            BWMainQueue::post(owner, [progress, done, total] { progress(done, total); });
    });
    m_thread.run([this, owner, files, target, watch = m_watch] {
        const BWExportResult result = files.size() == 1 ? BWExportCopy::run(files.first(), target, *watch)
                                                        : BWZipExport::run(files, target, *watch);
        if (result.outcome == BWExportResult::Outcome::Failed)
            report(target, result);
        BWMainQueue::post(owner, [this, result] { finish(result); });
    });
    return true;
}

void BWFileExport::cancel()
{
    if (m_watch)
        m_watch->cancel();
}

void BWFileExport::finish(const BWExportResult &result)
{
    m_watch.reset();
    // It may begin the next export, or delete this one.
    if (const Finished finished = std::exchange(m_finished, {}))
        finished(result);
}
