// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWTouchInput.h"

#include <algorithm>
#include <QNativeGestureEvent>
#include <QTouchEvent>
#include <QWidget>
#include <utility>

BWTouchInput::BWTouchInput(QWidget &widget) : QObject(&widget), m_widget(widget)
{
    widget.setAttribute(Qt::WA_AcceptTouchEvents);
    widget.installEventFilter(this);
}

bool BWTouchInput::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::NativeGesture:
        event->setAccepted(takeGesture(static_cast<const QNativeGestureEvent &>(*event)));
        return event->isAccepted();
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        event->setAccepted(touch(static_cast<const QTouchEvent &>(*event)));
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

bool BWTouchInput::touch(const QTouchEvent &event)
{
    if (event.type() == QEvent::TouchBegin) {
        const QPoint at = event.points().first().position().toPoint();
        m_fingers.begin();
        m_rest = {};
        Q_EMIT touched(at);
        if (m_widget.childAt(at))
            return false; // then Qt makes a mouse of it
    }
    QList<QPointF> fingers;
    for (const QEventPoint &point : event.points()) {
        if (point.state() != QEventPoint::Released)
            fingers << point.position();
    }
    if (const auto change = m_fingers.moveTo(fingers)) {
        pan(change->distance);
        if (change->factor != 1)
            Q_EMIT pinched(change->factor, change->middle);
    }
    if (event.type() == QEvent::TouchEnd && m_fingers.isTap())
        Q_EMIT tapped();
    return true;
}

/// Each event says what has come to the scale, not by which factor it has grown.
bool BWTouchInput::takeGesture(const QNativeGestureEvent &gesture)
{
    constexpr double smallest = 0.01;
    switch (gesture.gestureType()) {
    case Qt::BeginNativeGesture:
        m_gestureScale = 1;
        m_rest = {};
        return true;
    case Qt::ZoomNativeGesture: {
        const double before = std::exchange(m_gestureScale, std::max(smallest, m_gestureScale + gesture.value()));
        Q_EMIT pinched(m_gestureScale / before, m_widget.mapFromGlobal(gesture.globalPosition()));
        return true;
    }
    case Qt::PanNativeGesture: // of two fingers that pinch; more of them swipe, which is for the desktop
        if (gesture.fingerCount() == 2)
            pan(gesture.delta());
        return true;
    default:
        return false;
    }
}

void BWTouchInput::pan(QPointF distance)
{
    const QPoint whole = (distance + m_rest).toPoint();
    m_rest += distance - whole;
    if (!whole.isNull())
        Q_EMIT panned(whole);
}
