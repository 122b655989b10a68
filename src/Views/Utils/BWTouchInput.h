// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/LiveView/BWFingers.h"

#include <QObject>
#include <QPoint>

class QNativeGestureEvent;
class QTouchEvent;
class QWidget;

/// What fingers do to a widget, on a touch screen or a touchpad. Places are the widget's. GUI thread.
class BWTouchInput : public QObject {
    Q_OBJECT

public:
    /// The least width of what a finger is to hit: 9 mm on usual screens, in points.
    static constexpr int fingerWidth = 34;

    /// What a finger does as long as it is alone.
    enum class Finger {
        IsMouse, ///< to a child: Qt makes a mouse of it
        Moves, ///< and taps
        Points ///< to the very place where it will be lifted
    };

    /// The widget's from now on.
    explicit BWTouchInput(QWidget &widget, BWClock &clock = BWClock::system());

    /// While touched() is sent: what this finger does. At first it is a mouse on children, else it moves.
    void setFinger(Finger does) { m_finger = does; }
    /// While the first finger is down: it shall not count as a tap, nor point, whatever it does.
    void ignoreTap() { m_fingers.ignoreTap(); }
    /// Whether the finger has neither moved yet nor got company.
    bool isTap() const { return m_fingers.isTap(); }
    /// Whether a finger that points is down, alone all the time.
    bool isPointing() const { return m_finger == Finger::Points && m_fingers.isAlone(); }

Q_SIGNALS:
    /// The first finger was laid there, also if that is on a child.
    void touched(QPoint at);
    /// One finger was down and did not move, or it pointed there. Comes when it goes, because before that it may become a
    /// pinch. `count` is 2 for the second of two quick ones on one spot, else 1.
    void tapped(QPointF at, int count);
    /// One finger has stayed where it moves things, for so long that it is no tap any more.
    void held(QPoint at);
    /// Where the finger that points is, at first and at each step.
    void pointed(QPointF at);
    /// It does not point any more: another finger has come, or a palm.
    void pointingEnded();
    void panned(QPoint distance);
    /// Fingers were spread or brought together about that point, by that factor since the last time.
    void pinched(double factor, QPointF at);
    /// The last finger is gone.
    void lifted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool touch(const QTouchEvent &event);
    bool begin(QPoint at);
    void hold(QPoint at);
    bool takeMouse(const QEvent &event);
    void end();
    void letGo();
    bool takeGesture(const QNativeGestureEvent &gesture);
    void pan(QPointF distance);

    QWidget &m_widget;
    BWClock &m_clock;
    BWFingers m_fingers;
    Finger m_finger = Finger::Moves;
    DispatchAfterStrict::Handle m_holding;
    bool m_isHeld = false; // since held() was sent
    QPointF m_rest; // of panning, that was less than a point
    double m_gestureScale = 1; // since the fingers were laid on the touchpad
};
