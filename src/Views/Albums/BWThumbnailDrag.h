#pragma once

#include "Views/Albums/BWThumbnailDragItem.h"

#include <QList>
#include <QPixmap>

class QWidget;

/// Dragging files out of a grid of thumbnails. GUI thread.
class BWThumbnailDrag {
public:
    /// Returns when they have been dropped somewhere or the drag was cancelled; events go on being handled meanwhile.
    /// Does nothing when the mouse button is up already.
    static void run(QWidget &source, const QList<BWThumbnailDragItem> &items);

    /// What is seen under the pointer: the thumbnail of the first file, with the number of files if there are several.
    static QPixmap picture(const QWidget &source, const QList<BWThumbnailDragItem> &items);
};
