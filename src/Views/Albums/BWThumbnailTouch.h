// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"

#include <QObject>
#include <QPointF>

class BWTouchInput;
class QAbstractScrollArea;
class QScroller;

/// What fingers do to a grid of thumbnails: a tap is a click there and two quick ones are a double click, a long press opens
/// the menu, and dragging scrolls on by itself for a while. GUI thread.
class BWThumbnailTouch : public QObject {
    Q_OBJECT

public:
    /// The grid's from now on.
    BWThumbnailTouch(QAbstractScrollArea &grid, BWClock &clock);

private:
    void lay(QPointF at);
    void drag(QPointF distance);
    void click(QPointF at, int count);
    void openMenu(QPoint at);
    qint64 milliseconds() const;

    QAbstractScrollArea &m_grid;
    BWClock &m_clock;
    BWTouchInput *m_touch;
    QScroller *m_scroller;
    QPointF m_finger; // as far as it has dragged the grid
};
