// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

/// Gives the window the keyboard at once, without events that a window system would bring along. Qt has no other way
/// that does not wait for them, but would rather see none.
inline void activateAtOnce(QWidget *window)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QApplication::setActiveWindow(window);
    QT_WARNING_POP
}
