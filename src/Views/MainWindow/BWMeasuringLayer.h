#pragma once

#include "Model/Measuring/BWMeasurement.h"
#include "Views/MainWindow/BWMagnifier.h"

#include <optional>
#include <QPixmap>
#include <QTransform>
#include <QWidget>

class BWCenteringClipView;
class BWMeasuringTool;
class QLineEdit;

/// Lies over the picture and shows what was measured in it. While it is active it takes mouse and keys and hands them to a
/// tool. Hidden while there is nothing to show or to do; then it costs nothing. GUI thread.
class BWMeasuringLayer : public QWidget {
    Q_OBJECT

public:
    explicit BWMeasuringLayer(BWCenteringClipView &view);

    /// What lies over the picture from now on; the tool must stay until the next call. Call it after every change.
    void showMeasurements(const QList<BWMeasurement> &measurements, BWMeasuringTool &tool, const BWPictureScale &scale);
    /// Whether mouse and keys measure; otherwise they go through to the picture.
    void setActive(bool active);
    bool isActive() const { return m_active; }
    void setScaleBar(bool shown);
    /// What is asked for behind an arrow.
    void setTextLabel(const QString &label);

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
    /// From the picture to this widget; nothing while no picture shows.
    std::optional<QTransform> toWidget() const;
    QPointF placeAt(QPointF position) const;
    double reach() const;
    bool isPlacing() const;
    bool handleKey(const QKeyEvent &event);
    QPoint inPicture(QPoint direction) const;
    void updateCursor();
    void askForText();
    void placeText();
    void answerText(bool accepted);

    void drawFinished(const QTransform &toWidget);
    QRect magnifierPlace(QPointF at) const;
    void bringIntoView();

    BWCenteringClipView &m_view;
    BWMeasuringTool *m_tool = nullptr;
    QList<BWMeasurement> m_measurements;
    BWPictureScale m_scale;
    bool m_active = false;
    bool m_scaleBar = false;
    bool m_allHaveHandles = false;
    qsizetype m_selected = -1;
    bool m_pointerIsOver = false;
    bool m_usesKeys = false; ///< and not the pointer
    std::optional<QPointF> m_pressed; ///< where the button went down that has begun a measurement
    QLineEdit *m_text = nullptr; ///< of an arrow, while it is asked for
    QString m_textLabel;

    QPixmap m_finished; ///< drawn once, because the moving picture below has it painted many times a second
    QTransform m_finishedFor;
    QRegion m_covered; ///< by what is drawn in it
    BWMagnifier m_magnifier;
};
