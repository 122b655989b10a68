#pragma once

#include <QKeySequence>

class BWThumbnailTableView;
class QKeyEvent;

/// What the keys do in a grid of thumbnails. Arrows, Home, End and the page keys move the focus and select where it
/// comes to; with Shift they extend the selection, with Ctrl they leave it alone. Whatever acts on elements acts on
/// those a click on the focused cell would have made the operation's. GUI thread.
class BWThumbnailKeyboard {
public:
    /// Saves elements elsewhere. Not the usual one, which takes a snapshot in all windows.
    static QKeySequence saveAs();
    /// Whether a grid that has the focus wants that key, be it somebody's shortcut.
    static bool takes(const QKeyEvent &event);
    /// False if the key means nothing to the grid as it is.
    static bool press(BWThumbnailTableView &view, const QKeyEvent &event);
};
