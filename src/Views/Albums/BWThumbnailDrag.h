// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QList>
#include <QMimeData>
#include <QPixmap>
#include <QSize>
#include <QString>
#include <QUrl>

class QWidget;

/// A file that is dragged out of a grid of thumbnails.
struct BWThumbnailDragItem {
    QUrl file;
    QString type; ///< uniform type identifier
    QSize size; ///< of the picture under the pointer, in pixels
    QImage image; ///< null if there is none
};

/// The data of a drag into another program: the files' URLs, the type of the first, and its thumbnail as an image, which
/// is encoded only on request. GUI thread.
class BWThumbnailMimeData : public QMimeData {
    Q_OBJECT

public:
    explicit BWThumbnailMimeData(const QList<BWThumbnailDragItem> &items);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override { return formats().contains(mimeType); }

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    QImage m_image;
};

/// Dragging files out of a grid of thumbnails. GUI thread.
class BWThumbnailDrag {
public:
    /// Returns when the files have been dropped or the drag was cancelled; events are processed meanwhile. Does nothing if
    /// the mouse button is already up.
    static void run(QWidget &source, const QList<BWThumbnailDragItem> &items);

    /// The picture under the pointer: the thumbnail of the first file, with the number of files if there are several.
    static QPixmap picture(const QWidget &source, const QList<BWThumbnailDragItem> &items);
};
