// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <QByteArray>
#include <span>

class BWYuvPlanes;

/// JPEG images as cameras deliver and files need them. All operations may be called on any thread at once; codec state
/// is kept per thread and reused.
class BWJpeg {
public:
    BWJpeg() = delete;

    /// Whether the bytes begin like a JPEG image (start marker, frame header, start of scan) and end like one (end
    /// marker, then zero padding at most). Reads only the headers and the tail, so it costs next to nothing per frame;
    /// an image torn in the middle passes.
    static bool looksComplete(const uint8_t *data, std::size_t size);

    /// Whether the whole image decodes without a warning. Costs a full decode.
    static bool decodesCleanly(const uint8_t *data, std::size_t size);

    /// The image as every program can read it: with the standard Huffman tables in front of the scan if it leaves them
    /// out, and without the padding after the end marker; the picture itself is not touched. Bytes that are not a JPEG
    /// image are returned as they are.
    static QByteArray withHuffmanTables(const uint8_t *data, std::size_t size);

    /// The same without a copy, in up to three parts that follow one another and are valid as long as `data`; the last
    /// ones may be empty.
    using Parts = std::array<std::span<const uint8_t>, 3>;
    static Parts partsWithHuffmanTables(const uint8_t *data, std::size_t size);

    /// Encodes a raw frame as 4:2:2 (GREY: grey) at `quality` 1 to 100. Range and matrix of the frame are converted to
    /// those of JPEG, so that the colours stay right. A null array, and a line in the log, if that is not possible
    /// (also for MJPEG and damaged frames).
    static QByteArray encode(const BWFrame &rawFrame, int quality);

    /// Bytes that stay valid until this thread's next call; empty on failure.
    using Bytes = std::span<const uint8_t>;
    /// As encode(), without a copy.
    static Bytes compress(const BWFrame &rawFrame, int quality);
    /// Encodes planes of BT.601 and full range as 4:2:2. Odd columns must be padded.
    static Bytes compress(const BWYuvPlanes &planes, int quality);
};
