// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWTouchInput.h"

#include <algorithm>
#include <chrono>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QStyleHints>
#include <QTouchEvent>
#include <QWidget>
#include <utility>

BWTouchInput::BWTouchInput(QWidget &widget, BWClock &clock) : QObject(&widget), m_widget(widget), m_clock(clock)
{
    widget.setAttribute(Qt::WA_AcceptTouchEvents);
    widget.ungrabGesture(Qt::PanGesture); // of any scroll area: two fingers would move it twice as far
    widget.installEventFilter(this);
}

bool BWTouchInput::eventFilter(QObject *watched, QEvent *event)
{
    if (m_isHeld && takeMouse(*event))
        return true;
    if (watched != &m_widget)
        return false;
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
    if (event.type() == QEvent::TouchBegin && !begin(event.points().first().position().toPoint()))
        return false;
    const bool wasPointing = isPointing();
    QList<QPointF> fingers;
    for (const QEventPoint &point : event.points()) {
        if (BWFingers::isPalm(point.ellipseDiameters()))
            m_fingers.ignoreTap();
        else if (point.state() != QEventPoint::Released)
            fingers << point.position();
    }
    if (event.type() == QEvent::TouchCancel)
        m_fingers.ignoreTap();
    const auto change = m_fingers.moveTo(fingers, m_clock.now());
    if (wasPointing && !isPointing())
        Q_EMIT pointingEnded();
    if (isPointing() && !fingers.isEmpty()) {
        Q_EMIT pointed(m_fingers.place());
    } else if (change) {
        pan(change->distance);
        if (change->factor != 1)
            Q_EMIT pinched(change->factor, change->middle);
    }
    if (event.type() == QEvent::TouchEnd || event.type() == QEvent::TouchCancel)
        end();
    return true;
}

/// False if Qt is to make a mouse of the finger.
bool BWTouchInput::begin(QPoint at)
{
    const std::chrono::duration<double> longPress =
        std::chrono::milliseconds(QGuiApplication::styleHints()->mousePressAndHoldInterval());
    letGo();
    m_rest = {};
    m_fingers.begin(m_clock.now());
    m_finger = m_widget.childAt(at) ? Finger::IsMouse : Finger::Moves;
    Q_EMIT touched(at);
    if (m_finger == Finger::Moves)
        m_holding = DispatchAfterStrict::dispatchForQueue(
            this,
            [this, at] {
                if (isTap())
                    hold(at);
            },
            longPress.count(), m_clock);
    return m_finger != Finger::IsMouse;
}

void BWTouchInput::hold(QPoint at)
{
    ignoreTap();
    m_isHeld = true;
    QCoreApplication::instance()->installEventFilter(this);
    Q_EMIT held(at);
}

/// While a menu is open, Qt makes a mouse of each finger. The one that has opened it would close it when it goes.
bool BWTouchInput::takeMouse(const QEvent &event)
{
    const bool isMove = event.type() == QEvent::MouseMove;
    const bool isRelease = event.type() == QEvent::MouseButtonRelease;
    if (event.type() == QEvent::MouseButtonPress)
        letGo(); // the next finger
    else if ((isMove || isRelease)
             && static_cast<const QMouseEvent &>(event).source() != Qt::MouseEventNotSynthesized) {
        if (isRelease)
            end();
        return true;
    }
    return false;
}

void BWTouchInput::end()
{
    letGo();
    if (const auto holding = std::exchange(m_holding, nullptr))
        holding->cancel();
    const std::chrono::milliseconds interval(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    if (isTap() || isPointing())
        Q_EMIT tapped(m_fingers.place(), m_fingers.countTap(m_clock.now(), interval));
    m_finger = Finger::Moves;
    Q_EMIT lifted();
}

void BWTouchInput::letGo()
{
    if (std::exchange(m_isHeld, false))
        QCoreApplication::instance()->removeEventFilter(this);
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
