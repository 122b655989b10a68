#pragma once

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

    /// Memory is kept where it suffices; what the planes hold afterwards is undefined.
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
    /// Repeats the last column of a picture of odd width, which JPEG encoders read.
    void padOddColumn();

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
