// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailTouch.h"

#include "Views/Utils/BWTouchInput.h"

#include <QAbstractScrollArea>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QScroller>

BWThumbnailTouch::BWThumbnailTouch(QAbstractScrollArea &grid, BWClock &clock)
    : QObject(&grid),
      m_grid(grid),
      m_clock(clock),
      m_touch(new BWTouchInput(*grid.viewport(), clock)),
      m_scroller(QScroller::scroller(grid.viewport()))
{
    QScrollerProperties properties = m_scroller->scrollerProperties();
    properties.setScrollMetric(QScrollerProperties::DragStartDistance, 0.0); // it is told only when that has begun
    properties.setScrollMetric(QScrollerProperties::MousePressEventDelay, 0.0);
    properties.setScrollMetric(QScrollerProperties::HorizontalOvershootPolicy, QScrollerProperties::OvershootAlwaysOff);
    properties.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy, QScrollerProperties::OvershootAlwaysOff);
    m_scroller->setScrollerProperties(properties);
    connect(m_touch, &BWTouchInput::touched, this, &BWThumbnailTouch::lay);
    connect(m_touch, &BWTouchInput::panned, this, &BWThumbnailTouch::drag);
    connect(m_touch, &BWTouchInput::tapped, this, &BWThumbnailTouch::click);
    connect(m_touch, &BWTouchInput::held, this, &BWThumbnailTouch::openMenu);
    connect(m_touch, &BWTouchInput::lifted, this,
            [this] { m_scroller->handleInput(QScroller::InputRelease, m_finger, milliseconds()); });
}

qint64 BWThumbnailTouch::milliseconds() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.now()).count();
}

/// A finger laid on what moves stops it, and does no more.
void BWThumbnailTouch::lay(QPointF at)
{
    if (m_scroller->state() == QScroller::Scrolling)
        m_touch->ignoreTap();
    m_finger = at;
    m_scroller->handleInput(QScroller::InputPress, m_finger, milliseconds());
}

void BWThumbnailTouch::drag(QPointF distance)
{
    m_finger += distance;
    m_scroller->handleInput(QScroller::InputMove, m_finger, milliseconds());
}

void BWThumbnailTouch::click(QPointF at, int count)
{
    QWidget *viewport = m_grid.viewport();
    m_grid.setFocus(Qt::MouseFocusReason);
    const auto send = [&](QEvent::Type type, Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, viewport->mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(viewport, &event);
    };
    send(count == 2 ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, Qt::NoButton);
}

void BWThumbnailTouch::openMenu(QPoint at)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, m_grid.viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(m_grid.viewport(), &event);
}
