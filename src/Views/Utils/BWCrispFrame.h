// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QRectF>

class QPainter;
class QPixmap;

// What we paint lies on whole pixels of the screen, also where a point is 1.25 or 1.5 of them.

/// Draws a pixmap that was made for this screen, pixel by pixel, its corner on the nearest one.
void drawBWPixmap(QPainter &painter, QPointF corner, const QPixmap &pixmap);

/// How wide a line of about a point must be, in points, to be as wide everywhere.
double bwLineWidth(const QPainter &painter, double width = 1);

/// Where to draw a frame that is as strong on all sides.
struct BWCrispFrame {
    /// Its lines are about `lineWidth` points wide and lie within `outer`.
    BWCrispFrame(const QPainter &painter, const QRectF &outer, double lineWidth = 1);

    QRectF rect; ///< the middle of the lines
    double width;
};
