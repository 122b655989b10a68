// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWFrameReader.h"
#include "Model/LiveView/BWImagePool.h"
#include "Model/LiveView/BWRenderRequest.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <QImage>
#include <vector>

/// A piece of the live image, ready to be drawn without scaling.
struct BWRenderedImage {
    QImage image; ///< null if there is nothing to draw; may reach beyond what was requested
    QPoint position; ///< of its upper left corner in the viewport, in device pixels
    uint64_t frameNumber = 0; ///< differs from frame to frame
    BWRenderRequest request; ///< what it was made for
    std::chrono::steady_clock::time_point captured{}; ///< when the camera took it
};

/// Turns frames into pixels of the screen: decodes or converts, scales, mirrors and turns only what is visible.
///
/// Used by one thread. The images it returns share a few buffers with it and may be kept for any time.
class BWFrameRenderer {
public:
    /// Sets the frame to be drawn. False if what is to be seen of it cannot be read; the previous one is then kept.
    bool setFrame(const BWFrame &frame, const BWRenderRequest &requested);
    void clear();

    /// Draws the current frame. If its size is not the one that `requested` is for, the layout is adapted. A null image if
    /// there is no frame or nothing is visible.
    BWRenderedImage render(const BWRenderRequest &requested);

private:
    struct Pixels {
        uint8_t *data;
        int stride;
    };

    void scale(const QRect &part, QSize whole, Pixels target);

    BWFrameReader m_reader;
    uint64_t m_frameNumber = 0;
    std::array<std::vector<uint8_t>, 2> m_steps;
    std::vector<uint8_t> m_lastRows;
    BWImagePool m_images;
};
