// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A picture as planes of 8 bits: luma, and two chroma planes with half as many columns (4:2:2). Rows are padded to
/// whole SIMD blocks, so an inner loop may run over the padding.
class BWYuvPlanes {
public:
    /// Columns per block: row strides of the luma plane are multiples of it.
    static constexpr int block = 64;

    BWYuvPlanes() = default;
    BWYuvPlanes(int width, int height) { resize(width, height); }

    /// Keeps memory that is large enough; the contents of the planes are undefined afterwards.
    void resize(int width, int height);

    bool isEmpty() const { return m_width <= 0 || m_height <= 0; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    int chromaWidth() const { return (m_width + 1) / 2; }
    int stride() const { return m_stride; }
    int chromaStride() const { return m_stride / 2; }

    uint8_t *y(int row = 0) { return m_y.data() + offset(row, m_stride); }
    uint8_t *u(int row = 0) { return m_u.data() + offset(row, m_stride / 2); }
    uint8_t *v(int row = 0) { return m_v.data() + offset(row, m_stride / 2); }
    const uint8_t *y(int row = 0) const { return m_y.data() + offset(row, m_stride); }
    const uint8_t *u(int row = 0) const { return m_u.data() + offset(row, m_stride / 2); }
    const uint8_t *v(int row = 0) const { return m_v.data() + offset(row, m_stride / 2); }

    /// One grey for the whole picture.
    void fill(uint8_t luma);
    /// Repeats the last column of a picture of odd width, as JPEG encoders read one more.
    void padOddColumn();
    /// Repeats the last columns up to whole blocks of JPEG.
    void padBlocks();

private:
    static std::size_t offset(int row, int stride)
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(stride);
    }

    int m_width = 0;
    int m_height = 0;
    int m_stride = 0;
    std::vector<uint8_t> m_y;
    std::vector<uint8_t> m_u;
    std::vector<uint8_t> m_v;
};

/// From the raw formats of cameras to planes as JPEG defines them: BT.601, full range.
namespace BWYuvConvert {

/// Unpacks a whole YUYV, UYVY, NV12, YU12 or GREY picture, and converts range and matrix. False for other formats. The
/// chroma planes of a GREY picture stay undefined.
bool toJpegPlanes(const BWFrameInfo &info, BWYuvPlanes &planes);

/// The same for `count` rows of the picture from `first` on, an even one; the planes hold just these.
bool toJpegPlanes(const BWFrameInfo &info, int first, int count, BWYuvPlanes &planes);

/// Converts planes in place to BT.601, full range.
void toJpegColours(BWYuvPlanes &planes, BWColorMatrix matrix, BWColorRange range);

} // namespace BWYuvConvert
