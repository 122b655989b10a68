#pragma once

#include <QPoint>
#include <QSize>

class QWidget;

/// Where the windows beside the camera window belong: touching its frame, or as near to that as the screen allows.
/// Answers where the upper left corner of the frame goes. A window's own frame is not known before it has been shown;
/// it is taken to be like that of the camera window. So a window has to be moved before it is shown: what is set in its
/// showEvent() is the place of the content.
class BWWindowPlacement {
public:
    BWWindowPlacement() = delete;

    /// Centred below it; where the screen has no room there, at its left edge.
    static QPoint below(const QWidget &cameraWindow, QSize content);
    /// To its right, lower edges at the same height.
    static QPoint rightOf(const QWidget &cameraWindow, QSize content);
};
