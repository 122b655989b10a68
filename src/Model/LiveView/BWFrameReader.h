// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "Model/LiveView/BWImagePool.h"
#include "Model/LiveView/BWJpegReader.h"

#include <cstdint>
#include <QImage>
#include <QRect>
#include <QSize>
#include <vector>

/// Makes 32-bit pixels (bytes B G R A) of one frame after another: only of the part that is needed, and at a reduced
/// size where that is enough. One thread at a time.
class BWFrameReader {
public:
    /// Takes the next frame and reads what is needed to draw `part` of the picture when the whole of it is scaled to
    /// `whole`. False, and everything stays as it was, if the frame is torn there or above, too short or of an unknown
    /// format. A frame of which nothing is needed yet is not looked at.
    ///
    /// Data lost in the middle of a JPEG show only at its end. That is read now and then, and once damage has been
    /// found, of each frame for some seconds: so a camera that loses data is seen through soon, and others cost little.
    bool setFrame(const BWFrame &frame, QSize whole, const QRect &part);

    /// Reads what another part needs from the same frame, unless that has been read already. Where the frame is torn
    /// there, the pixels are grey: what was seen so far lies above it and stays, and the next frame is soon there.
    void require(QSize whole, const QRect &part);

    /// Releases the frame.
    void clear();

    const BWFrame &frame() const { return m_picture.frame; }
    /// Of the whole picture as it was read; a half or a quarter of the frame's if that was enough.
    QSize size() const { return m_picture.size; }
    /// What has been read, and where it lies in the picture; null if nothing could be. A copy may be kept.
    const QImage &pixels() const { return m_picture.pixels; }
    const QRect &area() const { return m_picture.area; }

private:
    struct Picture {
        BWFrame frame;
        QSize size;
        QSize whole; // what it was read for
        QImage pixels;
        QRect area;
    };
    bool read(Picture &picture, QSize whole, const QRect &part, bool toTheEnd);
    void convert(const BWFrameInfo &info, const QRect &part, bool half, uint8_t *argb, int stride);
    void convertPacked(const BWFrameInfo &info, const QRect &part, bool half, uint8_t *argb, int stride);

    BWJpegReader m_jpeg;
    BWImagePool m_images;
    Picture m_picture;
    QRect m_lastPart;
    int m_suspicion = 0; // so many frames are read to their end
    int m_unchecked = 0; // frames since the last one that was
    std::vector<uint8_t> m_scratch;
};
