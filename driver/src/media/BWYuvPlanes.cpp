#include "media/BWYuvPlanes.h"

#include <algorithm>

void BWYuvPlanes::resize(int width, int height)
{
    m_width = width;
    m_height = height;
    m_stride = (width + 1 + block - 1) / block * block;
    const std::size_t size = static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height);
    m_y.resize(size);
    m_u.resize(size / 2);
    m_v.resize(size / 2);
}

void BWYuvPlanes::fill(uint8_t luma)
{
    std::fill(m_y.begin(), m_y.end(), luma);
    std::fill(m_u.begin(), m_u.end(), uint8_t(128));
    std::fill(m_v.begin(), m_v.end(), uint8_t(128));
}

void BWYuvPlanes::padOddColumn()
{
    if (m_width % 2 == 0)
        return;
    for (int row = 0; row < m_height; ++row)
        y(row)[m_width] = y(row)[m_width - 1];
}
