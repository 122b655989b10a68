#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <QUrl>

/// One file that is dragged out of a grid of thumbnails.
struct BWThumbnailDragItem {
    QUrl file;
    QString type; ///< uniform type identifier
    QSize size; ///< of what is seen under the pointer, pixels
    QImage image; ///< null if there is none
};
