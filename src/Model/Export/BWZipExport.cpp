// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWZipExport.h"

#include "Model/Export/BWExportSource.h"
#include "Model/Export/BWPartFile.h"
#include "Model/Export/BWZipWriter.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWWorkerPool.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <QScopeGuard>
#include <QThread>
#include <sys/stat.h>
#include <vector>
#include <zlib.h>

namespace {

/// A piece of a file, compressed on its own so that several processors can share the work on one file. The blocks of a
/// file, one after the other, are one deflate stream.
struct DeflatedBlock {
    QByteArray deflated;
    quint32 checksum = 0; ///< CRC-32 of what was read
    qint64 size = 0; ///< bytes read
    bool changed = false; ///< the file had fewer bytes than it had when it was opened
    int error = 0; ///< an errno, or 0
};

constexpr qint64 blockSize = 512 << 10;
constexpr qint64 windowSize = 32 << 10; // how far back deflate looks

Bytef *bytes(char *data)
{
    return reinterpret_cast<Bytef *>(data);
}

/// False only for lack of memory. The dictionary precedes the block's own bytes.
bool compress(char *dictionary, qint64 dictionarySize, DeflatedBlock *block, bool last)
{
    char *const data = dictionary + dictionarySize;
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return false;
    const auto atTheEnd = qScopeGuard([&stream] { ::deflateEnd(&stream); }); // also when the block finds no memory
    // The block may refer to what precedes it, so that cutting into blocks costs next to nothing.
    if (dictionarySize > 0)
        ::deflateSetDictionary(&stream, bytes(dictionary), static_cast<uInt>(dictionarySize));
    constexpr uLong marker = 16; // ends a block that is not the last one
    block->deflated = QByteArray(
        static_cast<qsizetype>(::deflateBound(&stream, static_cast<uLong>(block->size)) + marker), Qt::Uninitialized);
    stream.next_in = bytes(data);
    stream.avail_in = static_cast<uInt>(block->size);
    stream.next_out = bytes(block->deflated.data());
    stream.avail_out = static_cast<uInt>(block->deflated.size());
    const int status = ::deflate(&stream, last ? Z_FINISH : Z_SYNC_FLUSH);
    block->deflated.resize(static_cast<qsizetype>(stream.total_out));
    return last ? status == Z_STREAM_END : status == Z_OK && stream.avail_out > 0;
}

/// The block that begins at that place; the last one of a file ends the stream.
DeflatedBlock deflateBlock(const BWExportSource &source, qint64 offset)
{
    DeflatedBlock block;
    block.size = std::min(blockSize, source.size() - offset);
    const qint64 before = std::min(offset, windowSize);
    std::vector<char> data(static_cast<std::size_t>(before + block.size) + 1);
    if (!source.readAt(offset - before, data.data(), before + block.size)) {
        block.error = errno;
        block.changed = errno == 0;
        return block;
    }
    block.checksum = static_cast<quint32>(::crc32(0, bytes(data.data() + before), static_cast<uInt>(block.size)));
    if (!compress(data.data(), before, &block, offset + block.size == source.size()))
        block.error = ENOMEM;
    return block;
}

using Failure = std::optional<BWExportResult>;

constexpr int mostThreads = 8; // more would only wait for the disk

/// Bytes of the files that are there; the others fail when their turn comes.
qint64 totalSize(const QList<QUrl> &files)
{
    qint64 total = 0;
    struct stat info;
    for (const QUrl &file : files)
        total += ::stat(BWFilePath::native(file).constData(), &info) == 0 ? info.st_size : 0;
    return total;
}

bool contains(const QList<QUrl> &files, const QUrl &target)
{
    struct stat there;
    if (::lstat(BWFilePath::native(target).constData(), &there) != 0)
        return false;
    return std::any_of(files.begin(), files.end(), [&there](const QUrl &file) {
        struct stat info;
        return ::stat(BWFilePath::native(file).constData(), &info) == 0 && info.st_dev == there.st_dev
            && info.st_ino == there.st_ino;
    });
}

/// The blocks of all files in a row: compressed ahead by the pool, written in order by the thread that calls.
class Packer {
public:
    Packer(BWPartFile &part, BWExportWatch &watch) : m_part(part), m_writer(part), m_watch(watch) { }
    ~Packer() { m_stopped = true; } // blocks that are not begun are not worth beginning

    Failure run(const QList<QUrl> &files)
    {
        m_watch.begin(totalSize(files));
        if (!m_writer.open())
            return targetFailure();
        Failure missing;
        for (auto file = files.begin(); file != files.end() && !missing; ++file) {
            const auto source = BWExportSource::open(*file);
            if (!source)
                missing = BWExportResult::sourceFailed(*file, errno);
            else if (Failure failure = add(source))
                return failure;
        }
        // If a file is missing, those before it still make an archive that can be read.
        while (!m_blocks.empty()) {
            if (Failure failure = writeFirst())
                return failure;
        }
        if (!m_writer.close())
            return targetFailure();
        return missing;
    }

private:
    struct Block {
        std::shared_ptr<const BWExportSource> source;
        qint64 offset;
        std::future<DeflatedBlock> result;
    };

    Failure targetFailure() const { return BWExportResult::targetFailed(m_part.target(), m_writer.error()); }

    Failure add(const std::shared_ptr<const BWExportSource> &source)
    {
        qint64 offset = 0;
        do {
            enqueue(source, offset);
            offset += blockSize;
            // Twice as many as threads, so that no thread runs out of work while a block is being written.
            while (m_blocks.size() > 2 * static_cast<std::size_t>(m_threads)) {
                if (Failure failure = writeFirst())
                    return failure;
            }
        } while (offset < source->size());
        return {};
    }

    void enqueue(const std::shared_ptr<const BWExportSource> &source, qint64 offset)
    {
        const auto task = std::make_shared<std::packaged_task<DeflatedBlock()>>([this, source, offset] {
            BWWorkerPool::lowerPriority();
            return m_stopped ? DeflatedBlock() : deflateBlock(*source, offset);
        });
        m_blocks.push_back({source, offset, task->get_future()});
        m_pool.run([task] { (*task)(); });
    }

    Failure writeFirst()
    {
        if (m_watch.isCancelled())
            return BWExportResult::cancelled();
        Block block = std::move(m_blocks.front());
        m_blocks.pop_front();
        const BWExportSource &source = *block.source;
        if (block.offset == 0) {
            m_checksum = 0;
            if (!m_writer.beginEntry(
                    {BWFilePath::lastComponent(source.file()), source.modified().tv_sec, source.size()}))
                return targetFailure();
        }
        const DeflatedBlock deflated = block.result.get();
        if (deflated.changed)
            return BWExportResult::sourceChanged(source.file());
        if (deflated.error != 0)
            return BWExportResult::sourceFailed(source.file(), deflated.error);
        m_checksum = static_cast<quint32>(::crc32_combine(m_checksum, deflated.checksum, deflated.size));
        if (!m_writer.write(deflated.deflated))
            return targetFailure();
        if (block.offset + deflated.size == source.size()) {
            if (!source.isUnchanged())
                return BWExportResult::sourceChanged(source.file());
            if (!m_writer.endEntry(m_checksum))
                return targetFailure();
        }
        m_watch.add(deflated.size);
        return {};
    }

    BWPartFile &m_part;
    BWZipWriter m_writer;
    BWExportWatch &m_watch;
    std::deque<Block> m_blocks;
    quint32 m_checksum = 0; // of the entry so far
    std::atomic<bool> m_stopped = false;
    const int m_threads = std::clamp(QThread::idealThreadCount(), 1, mostThreads);
    BWWorkerPool m_pool{m_threads, BWWorkerPool::untilDone}; // last, so that it ends first
};

} // namespace

BWExportResult BWZipExport::run(const QList<QUrl> &files, const QUrl &target, BWExportWatch &watch)
{
    if (contains(files, target))
        return BWExportResult::targetIsSource(target);
    BWPartFile part(target);
    if (!part.create())
        return BWExportResult::targetFailed(target, errno);
    Failure failure = Packer(part, watch).run(files);
    if (!failure && watch.isCancelled())
        failure = BWExportResult::cancelled();
    if (!failure && !part.complete())
        failure = BWExportResult::targetFailed(target, errno);
    if (!failure)
        return BWExportResult::done(target);
    if (failure->outcome == BWExportResult::Outcome::Failed)
        failure->leftover = part.keep();
    return *failure;
}
