#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Model/Export/BWFileExport.h"
#include "Views/Albums/BWThumbnailTableViewDataSource.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"

#include <functional>

class BWAlbumContents;
class BWThumbnails;

/// What the two grids of the album window show and ask for: the images and the videos of the current album. A grid that
/// is neither of the two ends the program. GUI thread.
class BWAlbumGridModel : public BWThumbnailTableViewDelegate, public BWThumbnailTableViewDataSource {
public:
    struct Callbacks {
        std::function<void(const QList<QUrl> &files, BWMediaType type)> save;
        std::function<bool(const QList<QUrl> &files, BWMediaType type)> trash; ///< whether the user confirmed it
        std::function<void(const QList<QUrl> &files)> open;
    };
    /// How screen readers call an image and a video.
    struct Words {
        QString image;
        QString video;
    };

    BWAlbumGridModel(const BWAlbumContents &contents, const BWThumbnails &thumbnails, Callbacks callbacks);

    void setGrids(const BWThumbnailTableView &images, const BWThumbnailTableView &videos);
    void setWords(const Words &words) { m_words = words; }

    QList<QUrl> elementsForThumbnailTableView(const BWThumbnailTableView &view) override;
    QSize draggingSizeForElementAt(const BWThumbnailTableView &view, int index) override;
    QString dragTypeForElementAt(const BWThumbnailTableView &view, int index) override;
    QImage thumbnailForElementAtIndex(const BWThumbnailTableView &view, int index) override;
    void removeIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void openIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void saveIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;

    int numberOfColumnsForView(const BWThumbnailTableView &view) override;
    /// Takes both lists from the album's contents.
    int numberOfRowsInTableView(const BWThumbnailTableView &view) override;
    int heightOfRow(const BWThumbnailTableView &view, int row) override;
    BWThumbnailValue objectValueForTableColumn(const BWThumbnailTableView &view, int column, int row) override;
    QString accessibleNameForElementAt(const BWThumbnailTableView &view, int index) override;
    QStringList copyFiles(const QList<QUrl> &files, const QUrl &folder) override;

    /// How many rows so many elements take. A grid without columns has one for all of them.
    static int rowCount(int elements, int columns);
    /// How many rows a visible area of that height shows, told by the height of one; both in points.
    static int rowHeight(int visibleHeight);

private:
    BWMediaType typeOf(const BWThumbnailTableView &view) const;
    const QList<QUrl> &listOf(const BWThumbnailTableView &view) const;
    QList<QUrl> filesAt(const BWThumbnailTableView &view, const QList<int> &indexes) const;

    const BWAlbumContents &m_contents;
    const BWThumbnails &m_thumbnails;
    const Callbacks m_callbacks;
    const BWThumbnailTableView *m_imagesGrid = nullptr;
    const BWThumbnailTableView *m_videosGrid = nullptr;
    QList<QUrl> m_images;
    QList<QUrl> m_videos;
    Words m_words;
    BWFolderCopies m_copies;
};
