#pragma once

#include <QRect>
#include <QRectF>
#include <QSize>

/// Where things are in a cell of a grid of thumbnails. All in points.
class BWThumbnailCellGeometry {
public:
    /// How far the frame of a selected picture reaches beyond it.
    static constexpr double frameDistance = 3;

    /// What a picture may fill.
    static QRect pictureArea(const QRect &cell);
    /// Where a picture of that many pixels goes: in the middle, its aspect kept, never larger than itself, its edges on
    /// pixels of a screen of that scale. With an empty size the place of a picture whose shape is not known: 4:3.
    static QRectF pictureRect(const QRect &cell, const QSize &pixels, double scale);
    /// The mark of a selected cell: 5 by 5 points.
    static QRectF markRect(const QRect &cell);
};
