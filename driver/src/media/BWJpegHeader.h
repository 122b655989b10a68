#pragma once

#include <cstddef>
#include <cstdint>
#include <QByteArray>

/// What stands in a JPEG image before its first scan. Reads nothing beyond that, and nothing out of bounds.
class BWJpegHeader {
public:
    static constexpr uint8_t endOfImage = 0xd9; ///< marker code

    BWJpegHeader(const uint8_t *data, std::size_t size);

    /// Whether everything up to the first scan is there, a frame header included.
    bool isWhole() const { return m_scanOffset > 0 && m_width > 0; }
    /// Huffman-coded and sequential, as cameras send it.
    bool isBaseline() const { return m_frameMarker == 0xc0 || m_frameMarker == 0xc1; }
    bool hasHuffmanTables() const { return m_huffmanTables; }

    int width() const { return m_width; }
    int height() const { return m_height; } ///< 0 if the image tells only later
    std::size_t scanOffset() const { return m_scanOffset; } ///< of the first start-of-scan marker

    /// The tables of ITU-T T.81 Annex K.3 as one segment, marker included.
    static QByteArray standardHuffmanTables();

private:
    uint8_t m_frameMarker = 0;
    bool m_huffmanTables = false;
    int m_width = 0;
    int m_height = 0;
    std::size_t m_scanOffset = 0;
};
