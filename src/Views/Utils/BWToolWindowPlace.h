#pragma once

class QWidget;

/// Moves a small tool window to the upper right of the picture in the main window, or as near to it as the screen
/// allows. For its first showing; later it is where the user has left it. GUI thread.
void placeBWToolWindow(QWidget &tool, const QWidget &mainWindow);
