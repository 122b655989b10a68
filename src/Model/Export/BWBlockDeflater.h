#pragma once

#include <QByteArray>
#include <QtGlobal>

class BWExportSource;

/// A piece of a file, compressed on its own so that several processors can share the work on one file. The blocks of a
/// file, one after the other, are one deflate stream.
struct BWDeflatedBlock {
    QByteArray deflated;
    quint32 checksum = 0; ///< CRC-32 of what was read
    qint64 size = 0; ///< bytes read
    bool changed = false; ///< the file had fewer bytes than it was said to have
    int error = 0; ///< an errno, or 0
};

/// Makes such blocks. Any thread.
class BWBlockDeflater {
public:
    static constexpr qint64 blockSize = 512 << 10;

    /// The block that begins at that place; the last one of a file ends the stream.
    static BWDeflatedBlock deflate(const BWExportSource &source, qint64 offset);
};
