#pragma once

#include <QRectF>

class QPainter;
class QPalette;

/// What a flat control shows of its state.
struct BWControlState {
    bool enabled = true;
    bool hovered = false;
    bool pressed = false;
    bool focused = false; ///< has the keyboard's focus, and the focus is to be seen
    bool checked = false; ///< it is on
};

/// Draws the ground of a flat control: nothing at rest, a veil in the text colour when hovered or pressed, and a ring
/// in the highlight colour when focused; a ground and a thin frame of that colour when checked. All controls of the bar
/// share it. GUI thread.
void drawBWControlPanel(QPainter &painter, const QRectF &rect, const QPalette &palette, const BWControlState &state);
