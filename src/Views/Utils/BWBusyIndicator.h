#pragma once

#include <QBasicTimer>
#include <QWidget>

/// A small wheel of spokes that turns while something is being prepared, as large as a line of text. It costs nothing
/// while stopped or hidden. GUI thread.
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
