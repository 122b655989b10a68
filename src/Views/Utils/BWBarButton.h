#pragma once

#include <QToolButton>

/// A flat button with an icon, as the bar has them: its ground tells whether the mouse is over it, whether it is pressed
/// or checked, and whether it has the focus; alike in every style and palette. GUI thread.
class BWBarButton : public QToolButton {
    Q_OBJECT

public:
    explicit BWBarButton(QWidget *parent = nullptr);

    /// Both clicks of a double click count as one: for what a second click would undo, as people double-click out of
    /// habit. Not so until it is asked for.
    void setDoubleClickIsClick(bool one) { m_doubleClickIsClick = one; }

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_doubleClickIsClick = false;
};
