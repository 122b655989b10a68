// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

/// What a JPEG image says before its first scan. Reads nothing beyond that, and nothing out of bounds.
class BWJpegHeader {
public:
    static constexpr std::size_t usualLimit = 512 << 10;

    /// A header longer than `limit` bytes is not whole.
    BWJpegHeader(const uint8_t *data, std::size_t size, std::size_t limit = usualLimit);

    /// Whether everything up to the first scan is there, including a frame header.
    bool isWhole() const { return m_scanOffset > 0 && m_width > 0; }
    /// Huffman-coded and sequential, as cameras send it.
    bool isBaseline() const { return m_frameMarker == 0xc0 || m_frameMarker == 0xc1; }
    bool hasHuffmanTables() const { return m_huffmanTables; }
    bool hasExif() const { return m_exif; }

    int width() const { return m_width; }
    int height() const { return m_height; } ///< 0 if the image defines it only later
    /// How its components are sampled: the same number for the same components and factors.
    uint32_t sampling() const { return m_sampling; }
    std::size_t scanOffset() const { return m_scanOffset; } ///< of the first start-of-scan marker
    /// Where an Exif segment belongs: first, but after a JFIF segment, which must be first as well.
    std::size_t exifOffset() const { return m_exifOffset; }

private:
    uint8_t m_frameMarker = 0;
    bool m_huffmanTables = false;
    bool m_exif = false;
    int m_width = 0;
    int m_height = 0;
    uint32_t m_sampling = 0;
    std::size_t m_exifOffset = 2;
    std::size_t m_scanOffset = 0;
};
