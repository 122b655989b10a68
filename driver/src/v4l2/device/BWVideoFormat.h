// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <cstdint>
#include <linux/videodev2.h>
#include <QString>

/// Translates V4L2's description of a picture into ours.
class BWVideoFormat {
public:
    /// None for a format that we do not show.
    static BWPixelFormat pixelFormat(uint32_t fourcc);
    /// The four letters, such as "YUYV".
    static QString name(uint32_t fourcc);

    BWVideoFormat() = default;
    /// `format` as a device has set it.
    explicit BWVideoFormat(const v4l2_pix_format &format);

    int width() const { return m_frame.width; }
    int height() const { return m_frame.height; }

    /// Whether a buffer with that many bytes holds a whole raw frame; for a compressed one any number does.
    bool fits(std::size_t bytesUsed) const { return bytesUsed >= m_leastSize; }

    /// A frame whose pixels are at `data`; the caller fills in time and number.
    BWFrameInfo frame(const uint8_t *data, std::size_t bytesUsed) const;

private:
    void addPlane(std::size_t plane, int stride, int rows, int bytesPerRow);
    void setColours(const v4l2_pix_format &format);

    BWFrameInfo m_frame; ///< without pixels
    std::array<std::size_t, 3> m_offsets{};
    std::size_t m_end = 0; ///< where the next plane would begin
    std::size_t m_leastSize = 0; ///< the last row may end with its last pixel
};
