#include "Model/Export/BWBlockDeflater.h"

#include "Model/Export/BWExportSource.h"

#include <algorithm>
#include <cerrno>
#include <vector>
#include <zlib.h>

namespace {

constexpr qint64 windowSize = 32 << 10; // how far back deflate looks

Bytef *bytes(char *data)
{
    return reinterpret_cast<Bytef *>(data);
}

/// False only for lack of memory. The dictionary is what goes before the block's own bytes.
bool compress(char *dictionary, qint64 dictionarySize, BWDeflatedBlock *block, bool last)
{
    char *const data = dictionary + dictionarySize;
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return false;
    // What went before can be referred to, so that cutting into blocks costs next to nothing.
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
    const bool whole = last ? status == Z_STREAM_END : status == Z_OK && stream.avail_out > 0;
    ::deflateEnd(&stream);
    return whole;
}

} // namespace

BWDeflatedBlock BWBlockDeflater::deflate(const BWExportSource &source, qint64 offset)
{
    BWDeflatedBlock block;
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
