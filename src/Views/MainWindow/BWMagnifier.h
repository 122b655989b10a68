// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWLiveRenderer.h"

#include <memory>
#include <QObject>

class BWCenteringClipView;
class QPainter;

/// Shows a small part of the main picture enlarged, its pixels as they are, with a cross over one place. The pixels are made
/// by a renderer of its own, because those of the screen are scaled already. GUI thread.
class BWMagnifier : public QObject {
    Q_OBJECT

public:
    static constexpr int size = 120; ///< points
    static constexpr int factor = 4; ///< points for a pixel of the picture

    explicit BWMagnifier(const BWCenteringClipView &view);

    /// `place` is in widths of the picture, `corner` in the painter's points. What lies there may be drawn a moment later:
    /// see imageReady().
    void draw(QPainter &painter, QPointF place, QPoint corner);
    /// Not drawn any more for now: lets go of the picture.
    void stop();

Q_SIGNALS:
    void imageReady();

private:
    void feed();
    BWRenderRequest requestFor(QPointF place) const;

    const BWCenteringClipView &m_view;
    std::unique_ptr<BWLiveRenderer> m_renderer; // made when first wanted
    BWRenderedImage m_image;
    const void *m_pixels = nullptr; // of the last frame that it was given
    uint64_t m_sequence = 0;
};
