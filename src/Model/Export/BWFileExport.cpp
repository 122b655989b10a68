// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWFileExport.h"

#include "Model/Export/BWExportSource.h"
#include "Model/Export/BWPartFile.h"
#include "Model/Export/BWZipExport.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <optional>
#include <QFile>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 step = 4 << 20;

class Copy {
public:
    Copy(const BWExportSource &source, BWPartFile &part, BWExportWatch &watch)
        : m_source(source), m_part(part), m_watch(watch)
    {
    }

    /// Nothing if all was copied.
    std::optional<BWExportResult> run()
    {
        m_watch.begin(m_source.size());
        for (qint64 done = 0; done < m_source.size();) {
            if (m_watch.isCancelled())
                return BWExportResult::cancelled();
            qint64 count = std::min(step, m_source.size() - done);
            if (auto failure = m_byHand ? copyThroughMemory(done, count) : copyInKernel(done, &count))
                return failure;
            done += count;
            m_watch.add(count);
        }
        return std::nullopt;
    }

private:
    /// Lets the file system copy, which shares the blocks if it can; `count` becomes what it copied, nothing if it
    /// cannot go on. The rest is then copied by hand.
    std::optional<BWExportResult> copyInKernel(qint64 offset, qint64 *count)
    {
        off_t from = offset;
        off_t to = offset;
        *count = ::copy_file_range(m_source.descriptor(), &from, m_part.descriptor(), &to,
                                   static_cast<std::size_t>(*count), 0);
        m_byHand = *count <= 0;
        *count = std::max<qint64>(*count, 0);
        if (!m_part.written(offset + *count))
            return BWExportResult::targetFailed(m_part.target(), errno);
        return std::nullopt;
    }

    std::optional<BWExportResult> copyThroughMemory(qint64 offset, qint64 count)
    {
        m_buffer.resize(step);
        if (!m_source.readAt(offset, m_buffer.data(), count))
            return errno == 0 ? BWExportResult::sourceChanged(m_source.file())
                              : BWExportResult::sourceFailed(m_source.file(), errno);
        if (!m_part.writeAt(offset, m_buffer.data(), count))
            return BWExportResult::targetFailed(m_part.target(), errno);
        return std::nullopt;
    }

    const BWExportSource &m_source;
    BWPartFile &m_part;
    BWExportWatch &m_watch;
    bool m_byHand = false;
    std::vector<char> m_buffer;
};

BWExportResult resultOf(const BWFileExport::Work &work, const QUrl &target, BWExportWatch &watch)
{
    try {
        return work(watch);
    } catch (const std::bad_alloc &) {
        return BWExportResult::targetFailed(target, ENOMEM);
    }
}

void copyFile(const QUrl &file, const QUrl &target)
{
    BWExportWatch watch;
    const BWExportResult result =
        resultOf([&](BWExportWatch &own) { return BWExportCopy::run(file, target, own); }, target, watch);
    if (result.outcome == BWExportResult::Outcome::Failed)
        qCWarning(bwModel).noquote() << "Cannot copy" << file.toDisplayString() << "to" << target.toDisplayString()
                                     << '-' << result.reason;
}

void report(const QUrl &target, const BWExportResult &failure)
{
    QString reason = failure.reason;
    if (failure.file != target)
        reason = failure.file.toDisplayString() + u": "_s + reason;
    qCWarning(bwModel).noquote() << "Cannot save" << target.toDisplayString() << '-' << reason;
}

} // namespace

BWExportResult BWExportCopy::run(const QUrl &file, const QUrl &target, BWExportWatch &watch)
{
    const auto source = BWExportSource::open(file);
    if (!source)
        return BWExportResult::sourceFailed(file, errno);
    if (source->isAt(BWFilePath::native(target)))
        return BWExportResult::done(target);

    BWPartFile part(target);
    if (!part.create((source->rights() | 0600) & 0666)) // a private picture stays private
        return BWExportResult::targetFailed(target, errno);
    if (const auto failure = Copy(*source, part, watch).run())
        return *failure;
    if (!source->isUnchanged())
        return BWExportResult::sourceChanged(file);
    if (watch.isCancelled())
        return BWExportResult::cancelled();
    if (!part.complete(source->modified()))
        return BWExportResult::targetFailed(target, errno);
    return BWExportResult::done(target);
}

QStringList BWFolderCopies::copy(const QList<QUrl> &files, const QUrl &folder)
{
    QStringList names;
    for (const QUrl &file : files) {
        const QByteArray name = BWFilePath::lastComponent(file);
        names.append(QFile::decodeName(name));
        m_pool.run([file, target = BWFilePath::entry(folder, name)] { copyFile(file, target); });
    }
    return names;
}

BWFileExport::~BWFileExport()
{
    cancel();
}

bool BWFileExport::start(const QList<QUrl> &files, const QUrl &target, Finished finished, Progress progress)
{
    if (files.isEmpty())
        return false;
    const Work work = [files, target](BWExportWatch &watch) {
        return files.size() == 1 ? BWExportCopy::run(files.first(), target, watch)
                                 : BWZipExport::run(files, target, watch);
    };
    return start(m_thread, work, target, std::move(finished), std::move(progress));
}

bool BWFileExport::start(const Work &work, const QUrl &target, Finished finished, Progress progress)
{
    const Work yielding = [work](BWExportWatch &watch) {
        BWWorkerPool::lowerPriority();
        return work(watch);
    };
    return start(m_yielding, yielding, target, std::move(finished), std::move(progress));
}

bool BWFileExport::start(BWWorkerPool &thread, const Work &work, const QUrl &target, Finished finished,
                         Progress progress)
{
    if (isRunning())
        return false;
    const std::weak_ptr<void> owner = m_alive.watch();
    m_finished = std::move(finished);
    m_watch = std::make_shared<BWExportWatch>([owner, progress = std::move(progress)](qint64 done, qint64 total) {
        if (progress)
            BWMainQueue::post(owner, [progress, done, total] { progress(done, total); });
    });
    thread.run([this, owner, work, target, watch = m_watch] {
        const BWExportResult result = resultOf(work, target, *watch);
        if (result.outcome == BWExportResult::Outcome::Failed)
            report(target, result);
        else if (result.outcome == BWExportResult::Outcome::Done)
            qCInfo(bwModel).noquote() << "Saved:" << target.toLocalFile();
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
