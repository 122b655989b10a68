#pragma once

#include "BWACUDriver/BWFrame.h"

#include <cstddef>
#include <cstdint>
#include <QByteArray>

/// JPEG images as cameras deliver and files need them. All operations may be called on any thread at once; codec state
/// is kept per thread and reused.
class BWJpeg {
public:
    BWJpeg() = delete;

    /// Whether the bytes begin like a JPEG image (start marker, frame header, start of scan) and end like one (end
    /// marker, zero padding after it allowed). Reads the headers and the tail only, so it costs nothing per frame; an
    /// image torn in the middle passes.
    static bool looksComplete(const uint8_t *data, std::size_t size);

    /// Whether the whole image decodes without a warning. Costs a full decode.
    static bool decodesCleanly(const uint8_t *data, std::size_t size);

    /// Whether the image defines its Huffman tables before the scan. Many cameras leave out the standard ones.
    static bool hasHuffmanTables(const uint8_t *data, std::size_t size);

    /// The image as every program can read it: the standard Huffman tables put in front of the scan if it leaves them
    /// out, and the padding after the end marker cut off; the picture itself is not touched. Bytes that are no JPEG
    /// image come back as they are.
    static QByteArray withHuffmanTables(const uint8_t *data, std::size_t size);

    /// Encodes a raw frame as 4:2:2 (GREY: grey) at `quality` 1 to 100. Range and matrix of the frame are converted to
    /// what JPEG means by them, so that the colours stay right. A null array, and a line in the log, where it cannot be
    /// done (MJPEG and damaged frames included).
    static QByteArray encode(const BWFrame &rawFrame, int quality);
};
