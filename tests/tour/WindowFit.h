#pragma once

#include <QStringList>

class QWidget;

/// Tells what of a window cannot be read, or does not lie where it should. Measured as the style draws it.
class WindowFit {
public:
    WindowFit() = delete;

    /// One line for each text that is cut off and each widget that sticks out of its parent or covers another, for a
    /// window that does not fit a screen of 1280 by 800 points, and for each kind of widget that cannot be judged.
    static QStringList faults(const QWidget &window);
};
