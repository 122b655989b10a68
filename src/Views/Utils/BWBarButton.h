#pragma once

#include <QToolButton>

/// A flat button with an icon, as the bar has them: its ground tells whether the mouse is over it, whether it is pressed
/// or checked, and whether it has the focus; alike in every style and palette. GUI thread.
class BWBarButton : public QToolButton {
    Q_OBJECT

public:
    explicit BWBarButton(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};
