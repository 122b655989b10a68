// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurement.h"
#include "Views/MainWindow/BWDrawnMeasurements.h"
#include "Views/MainWindow/BWMagnifier.h"

#include <optional>
#include <QEvent>
#include <QTransform>
#include <QWidget>

class BWCenteringClipView;
class BWMeasuringTool;
class BWRemarkField;

/// Lies over the picture and shows what was measured in it. While it is active it takes mouse and keys and hands them to a
/// tool. Beside a picture to compare with it keeps to the main picture's part. Hidden while there is nothing to show or to
/// do; then it costs nothing. GUI thread.
class BWMeasuringLayer : public QWidget {
    Q_OBJECT

public:
    explicit BWMeasuringLayer(BWCenteringClipView &view);

    /// What lies over the picture from now on; the tool must stay until the next call. Call it after every change.
    void showMeasurements(const QList<BWMeasurement> &measurements, BWMeasuringTool &tool, const BWPictureScale &scale);
    /// Whether mouse and keys measure; otherwise they go through to the picture.
    void setActive(bool active);
    bool isActive() const { return m_active; }
    /// Whether keys have moved the cursor last, and not the pointer.
    bool usesKeys() const { return m_usesKeys; }
    void setScaleBar(bool shown);
    /// What is asked for behind an arrow.
    void setTextLabel(const QString &label);
    /// Ends the typing of a text as Return does; without effect if none is being typed.
    void completeText() { answerText(true); }

Q_SIGNALS:
    /// Mouse or keys have done something to the measurements or to what is selected.
    void edited();
    /// The same, and more of it is to come: a point is being moved, or the next one sought.
    void editing();
    /// Escape, with nothing left to give up.
    void escaped();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fingerLaid(QPoint at);
    void fingerPointsTo(QPointF at);
    void fingerTapped(QPointF at, int count);
    void fingerEnds();
    void sendMouse(QEvent::Type type, QPointF at, Qt::MouseButtons buttons);

    /// From the picture to this widget; nothing while no picture shows.
    std::optional<QTransform> toWidget() const;
    QRect mainClip() const;
    bool isOverMain(QPointF position) const;
    QPointF positionOf(const QMouseEvent &event) const;
    QPointF placeAt(QPointF position) const;
    void followPointer();
    void leave();
    double reach(double points) const;
    bool isPlacing() const;
    bool handleKey(const QKeyEvent &event);
    QPoint inPicture(QPoint direction) const;
    void updateCursor();
    void askForText();
    QPoint textPlace() const;
    void answerText(bool accepted);

    QRect magnifierPlace(QPointF at) const;
    void bringIntoView();

    BWCenteringClipView &m_view;
    BWMeasuringTool *m_tool = nullptr;
    QList<BWMeasurement> m_resting; ///< in place of the selected one is nothing
    BWMeasurement m_selected;
    BWPictureScale m_scale;
    bool m_active = false;
    bool m_scaleBar = false;
    bool m_pointerIsOver = false;
    bool m_takesFinger = false; ///< that is down; its mouse is ours, and not Qt's
    bool m_isFinger = false; ///< what sends mouse events now
    std::optional<QPointF> m_fingerFrom; ///< where one that points came down
    bool m_pointerIsAside = false; ///< over the picture to compare with
    QPointF m_pointer; ///< on the screen
    QTransform m_paintedAt; ///< from the picture to the screen
    bool m_usesKeys = false; ///< and not the pointer
    std::optional<QPointF> m_pressed; ///< where the button went down that has begun a measurement
    QPointF m_lastPress;
    BWRemarkField *m_text = nullptr; ///< of an arrow, while it is asked for
    QString m_textLabel;

    BWDrawnMeasurements m_drawn;
    BWMagnifier m_magnifier;
};
