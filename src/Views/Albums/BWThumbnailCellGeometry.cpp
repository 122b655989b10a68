#include "Views/Albums/BWThumbnailCellGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int margin = 7;
constexpr double markSize = 5;
constexpr QSize unknownShape(4000, 3000);

} // namespace

QRect BWThumbnailCellGeometry::pictureArea(const QRect &cell)
{
    return cell.adjusted(margin, margin, -margin, -margin);
}

QRectF BWThumbnailCellGeometry::pictureRect(const QRect &cell, const QSize &pixels, double scale)
{
    const QRect area = pictureArea(cell);
    const QSizeF shape = pixels.isEmpty() ? unknownShape : pixels;
    const double fit = std::min({area.width() / shape.width(), area.height() / shape.height(), 1 / scale});
    const auto whole = [scale](double length) { return std::max(1.0, std::floor(length * scale + 0.01)) / scale; };
    const QSizeF size(whole(shape.width() * fit), whole(shape.height() * fit));
    const auto onPixel = [scale](double place) { return std::round(place * scale) / scale; };
    return {{onPixel(area.x() + (area.width() - size.width()) / 2),
             onPixel(area.y() + (area.height() - size.height()) / 2)},
            size};
}

QRectF BWThumbnailCellGeometry::markRect(const QRect &cell)
{
    return {cell.x() + cell.width() / 16.0, cell.y() + cell.height() * 7 / 8.0, markSize, markSize};
}
