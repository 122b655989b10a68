// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QToolButton>

class QPainter;
class QPalette;

/// The state that a flat control shows.
struct BWControlState {
    bool enabled = true;
    bool hovered = false;
    bool pressed = false;
    bool focused = false; ///< has the keyboard focus, and shows it
    bool checked = false;
};

/// Draws the background of a flat control, the same for all controls of the bar: none at rest, a veil in the text colour
/// when hovered or pressed, a ring in the highlight colour when focused, a fill and a thin frame in that colour when
/// checked. GUI thread.
void drawBWControlPanel(QPainter &painter, const QRectF &rect, const QPalette &palette, const BWControlState &state);

/// A flat button of the bar, with an icon. Its background shows its state in the same way in every style and palette.
/// GUI thread.
class BWBarButton : public QToolButton {
    Q_OBJECT

public:
    explicit BWBarButton(QWidget *parent = nullptr);

    /// Counts a double click as one click, for a button whose second click would undo the first: people double-click out
    /// of habit. Off at first.
    void setDoubleClickIsClick(bool one) { m_doubleClickIsClick = one; }

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_doubleClickIsClick = false;
};
