#pragma once

#include <QStringList>

class QWidget;

/// Finds texts that cannot be read and widgets in the wrong place, as the style draws them.
class WindowFit {
public:
    WindowFit() = delete;

    /// One line for each text that is cut off and each widget that sticks out of its parent or covers another, for a
    /// window that does not fit a screen of 1280 by 800 points, and for each kind of widget that cannot be judged.
    static QStringList faults(const QWidget &window);
};
