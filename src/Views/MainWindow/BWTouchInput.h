// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWFingers.h"

#include <QObject>
#include <QPoint>

class QNativeGestureEvent;
class QTouchEvent;
class QWidget;

/// What fingers do to a widget, on a touch screen or a touchpad. On its children they are a mouse. Places are the
/// widget's. GUI thread.
class BWTouchInput : public QObject {
    Q_OBJECT

public:
    /// The widget's from now on.
    explicit BWTouchInput(QWidget &widget);

    /// While the first finger is down: it shall not count as a tap, whatever it does.
    void ignoreTap() { m_fingers.ignoreTap(); }

Q_SIGNALS:
    /// The first finger was laid there, also if that is on a child.
    void touched(QPoint at);
    /// One finger was down and did not move. Comes when it goes, because before that it may become a pinch.
    void tapped();
    void panned(QPoint distance);
    /// Fingers were spread or brought together about that point, by that factor since the last time.
    void pinched(double factor, QPointF at);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool touch(const QTouchEvent &event);
    bool takeGesture(const QNativeGestureEvent &gesture);
    void pan(QPointF distance);

    QWidget &m_widget;
    BWFingers m_fingers;
    QPointF m_rest; // of panning, that was less than a point
    double m_gestureScale = 1; // since the fingers were laid on the touchpad
};
