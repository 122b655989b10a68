// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWJpegHeader.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint8_t startOfImage = 0xd8;
constexpr uint8_t startOfScan = 0xda;
constexpr uint8_t huffmanTables = 0xc4;
constexpr uint8_t jfif = 0xe0;
constexpr uint8_t exif = 0xe1;

bool isFrameHeader(uint8_t marker)
{
    constexpr uint8_t reserved = 0xc8;
    constexpr uint8_t arithmeticConditioning = 0xcc;
    return marker >= 0xc0 && marker <= 0xcf && marker != huffmanTables && marker != reserved
        && marker != arithmeticConditioning;
}

} // namespace

BWJpegHeader::BWJpegHeader(const uint8_t *data, std::size_t size, std::size_t limit)
{
    if (!data || size < 4 || data[0] != 0xff || data[1] != startOfImage)
        return;
    size = std::min(size, limit);
    std::size_t offset = 2;
    while (offset + 4 <= size && data[offset] == 0xff) {
        const uint8_t marker = data[offset + 1];
        if (marker == 0xff) { // fill byte
            ++offset;
            continue;
        }
        const std::size_t length = static_cast<std::size_t>(data[offset + 2]) << 8 | data[offset + 3];
        const std::size_t next = offset + 2 + length;
        if (length < 2 || next > size)
            return;
        if (marker == startOfScan) {
            m_scanOffset = offset;
            return;
        }
        if (marker == huffmanTables)
            m_huffmanTables = true;
        if (marker == jfif && offset == 2)
            m_exifOffset = next;
        if (marker == exif && length >= 6 && std::memcmp(data + offset + 4, "Exif", 4) == 0)
            m_exif = true;
        if (isFrameHeader(marker) && length >= 8) {
            m_frameMarker = marker;
            m_height = data[offset + 5] << 8 | data[offset + 6];
            m_width = data[offset + 7] << 8 | data[offset + 8];
            m_sampling = 0;
            for (std::size_t factors = offset + 11; factors < next; factors += 3)
                m_sampling = m_sampling << 8 | data[factors];
        }
        offset = next;
    }
}
