#pragma once

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QUrl>

class BWThumbnailTableView;

/// Who knows the elements of a grid of thumbnails, and does what is asked for with them. Elements are files, addressed
/// by their place in the list; sets of indexes are ascending lists without doubles. GUI thread.
///
/// Any of these may make the grid reload.
class BWThumbnailTableViewDelegate {
public:
    virtual ~BWThumbnailTableViewDelegate() = default;

    /// The files shown. Asked for often: the list is to be kept, not made anew.
    virtual QList<QUrl> elementsForThumbnailTableView(const BWThumbnailTableView &view) = 0;
    /// The size of what is seen under the pointer while an element is dragged; empty if there is no thumbnail.
    virtual QSize draggingSizeForElementAt(const BWThumbnailTableView &view, int index) = 0;
    /// The uniform type identifier of an element's file, "public.jpeg" for instance.
    virtual QString dragTypeForElementAt(const BWThumbnailTableView &view, int index) = 0;
    /// The thumbnail of an element as far as it is in memory; null otherwise.
    virtual QImage thumbnailForElementAtIndex(const BWThumbnailTableView &view, int index) = 0;
    /// Moves elements to the Trash.
    virtual void removeIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    virtual void openIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    /// Saves elements elsewhere.
    virtual void saveIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
};
