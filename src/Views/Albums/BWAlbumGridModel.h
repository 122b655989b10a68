// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Model/Export/BWFileExport.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"

class BWAlbumContents;
class BWAlbumFileActions;
class BWThumbnails;
struct BWAlbumTexts;

/// The model of the album window's two grids: the images and the videos of the current album. A call for any other grid
/// ends the program. GUI thread.
class BWAlbumGridModel : public BWThumbnailTableViewDelegate, public BWThumbnailTableViewDataSource {
public:
    BWAlbumGridModel(const BWAlbumContents &contents, const BWThumbnails &thumbnails, const BWAlbumTexts &texts,
                     const BWThumbnailTableView &images, const BWThumbnailTableView &videos,
                     BWAlbumFileActions &actions);

    QList<QUrl> elementsForThumbnailTableView(const BWThumbnailTableView &view) override;
    QSize draggingSizeForElementAt(const BWThumbnailTableView &view, int index) override;
    QString dragTypeForElementAt(const BWThumbnailTableView &view, int index) override;
    QImage thumbnailForElementAtIndex(const BWThumbnailTableView &view, int index) override;
    void removeIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void openIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void showIndexOfModel(BWThumbnailTableView &view, int index) override;
    void compareIndexOfModel(BWThumbnailTableView &view, int index) override;
    void saveIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    /// Of images one movie, of videos smaller ones.
    void makeMovieOfIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void copyIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void renameIndexOfModel(BWThumbnailTableView &view, int index) override;
    void revealIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) override;
    void offerAlbumsForIndexesOfModel(BWThumbnailTableView &view, QMenu &menu, const QList<int> &indexes) override;

    int numberOfColumnsForView(const BWThumbnailTableView &view) override;
    /// Takes the lists of both grids from the album's contents.
    int numberOfRowsInTableView(const BWThumbnailTableView &view) override;
    int heightOfRow(const BWThumbnailTableView &view, int row) override;
    BWThumbnailValue objectValueForTableColumn(const BWThumbnailTableView &view, int column, int row) override;
    QString accessibleNameForElementAt(const BWThumbnailTableView &view, int index) override;
    QStringList copyFiles(const QList<QUrl> &files, const QUrl &folder) override;

    /// The rows that so many elements need. A grid without columns has one row for all of them.
    static int rowCount(int elements, int columns);
    /// The height of a row in a grid of that visible height, both in points.
    static int rowHeight(int visibleHeight);

private:
    BWMediaType typeOf(const BWThumbnailTableView &view) const;
    const QList<QUrl> &listOf(const BWThumbnailTableView &view) const;
    QList<QUrl> filesAt(const BWThumbnailTableView &view, const QList<int> &indexes) const;

    const BWAlbumContents &m_contents;
    const BWThumbnails &m_thumbnails;
    const BWAlbumTexts &m_texts;
    const BWThumbnailTableView &m_imagesGrid;
    const BWThumbnailTableView &m_videosGrid;
    BWAlbumFileActions &m_actions;
    QList<QUrl> m_images;
    QList<QUrl> m_videos;
    BWFolderCopies m_copies;
};
