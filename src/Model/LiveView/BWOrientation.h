#pragma once

#include "Model/LiveView/BWLiveViewState.h"

#include <QRect>
#include <QSize>

/// Mirroring and rotation of the live image, reduced to the two steps in which pixels are moved: an optional
/// left-right mirror, then a clockwise quarter-turn rotation. Rectangles are in pixels with y growing downwards.
class BWOrientation {
public:
    /// `rotation` is counter-clockwise in degrees; what is no multiple of 90 is taken as the next lower one.
    BWOrientation(int rotation, BWFlip flip);

    bool mirrored() const { return m_mirrored; }
    /// 0, 90, 180 or 270.
    int clockwise() const { return m_clockwise; }
    bool swapsSides() const { return m_clockwise == 90 || m_clockwise == 270; }

    QSize turned(QSize upright) const { return swapsSides() ? upright.transposed() : upright; }

    /// Where a part of the upright image lies in the turned image. `upright` is the size of the whole upright image.
    QRect toTurned(const QRect &part, QSize upright) const;
    /// The reverse: where a part of the turned image comes from.
    QRect toUpright(const QRect &part, QSize upright) const;

private:
    bool m_mirrored;
    int m_clockwise;
};
