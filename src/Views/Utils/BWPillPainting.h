#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

/// The ground of a text that lies over the live image: the same in light and dark palettes, because what lies behind
/// is the picture, not the window. GUI thread.
void drawBWPill(QPainter &painter, const QRectF &rect);

/// The colour of texts on it.
inline constexpr QColor bwPillTextColor(245, 245, 245);
