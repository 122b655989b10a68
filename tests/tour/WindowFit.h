// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class QImage;
class QWidget;

/// Finds texts and icons that cannot be read and widgets in the wrong place, as the style draws them.
class WindowFit {
public:
    WindowFit() = delete;

    /// One line for each text that is cut off or has too little contrast, each icon that cannot be seen or does not show
    /// that it is disabled, each widget that sticks out of its parent or covers another, for a window that does not fit
    /// its screen, and for each kind of widget that cannot be judged. `shown` is a picture of the window.
    static QStringList faults(const QWidget &window, const QImage &shown);
};
