// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBasicTimer>
#include <QWidget>

class QLabel;

/// A small turning wheel of spokes, as large as a line of text. It costs nothing while stopped or hidden. GUI thread.
class BWBusyIndicator : public QWidget {
    Q_OBJECT

public:
    explicit BWBusyIndicator(QWidget *parent = nullptr);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const { return m_animating; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QBasicTimer m_timer;
    bool m_animating = false;
    int m_step = 0;
};

/// A line that says that a camera is being prepared: a busy indicator and a label. It keeps its space while it shows
/// nothing, so that nothing around it moves. GUI thread.
class BWPreparingView : public QWidget {
    Q_OBJECT

public:
    explicit BWPreparingView(QWidget *parent = nullptr);

    void setText(const QString &text);
    /// Shows both and starts the animation, or hides both and stops it.
    void setPreparing(bool preparing);

private:
    BWBusyIndicator *m_indicator;
    QLabel *m_label;
};
