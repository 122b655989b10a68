// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QUrl>

class BWThumbnailTableView;
class QMenu;

/// What a cell of a grid shows.
struct BWThumbnailValue {
    enum class State {
        Pending, ///< the picture is not ready yet
        Picture,
        NoPicture, ///< the file is damaged, foreign or empty
    };

    State state = State::Pending;
    QImage picture; ///< null without one
    /// The element's own size in pixels, if known: gives the placeholder the shape of the picture, and keeps a small
    /// picture from being enlarged.
    QSize naturalSize;
    bool isMovie = false;
    std::optional<std::chrono::milliseconds> length; ///< of a movie, once known
};

/// Has the elements of a grid of thumbnails, and acts on them. Elements are files, addressed by their index in the list;
/// sets of indexes are ascending lists without duplicates. Any operation may make the grid reload. GUI thread.
class BWThumbnailTableViewDelegate {
public:
    virtual ~BWThumbnailTableViewDelegate() = default;

    /// The files shown. Called often: keep the list rather than building it for each call.
    virtual QList<QUrl> elementsForThumbnailTableView(const BWThumbnailTableView &view) = 0;
    /// The size of the picture under the pointer while an element is dragged; empty without a thumbnail.
    virtual QSize draggingSizeForElementAt(const BWThumbnailTableView &view, int index) = 0;
    /// The uniform type identifier of an element's file, "public.jpeg" for instance.
    virtual QString dragTypeForElementAt(const BWThumbnailTableView &view, int index) = 0;
    /// The thumbnail of an element if it is in memory; otherwise null.
    virtual QImage thumbnailForElementAtIndex(const BWThumbnailTableView &view, int index) = 0;
    /// Moves elements to the Trash.
    virtual void removeIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    virtual void openIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    /// Shows an element in the main window.
    virtual void showIndexOfModel(BWThumbnailTableView &view, int index) = 0;
    /// Compares an element with the live image.
    virtual void compareIndexOfModel(BWThumbnailTableView &view, int index) = 0;
    /// Saves elements elsewhere.
    virtual void saveIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    /// Makes movies of elements.
    virtual void makeMovieOfIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    /// To the clipboard.
    virtual void copyIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    virtual void renameIndexOfModel(BWThumbnailTableView &view, int index) = 0;
    /// In the desktop's file manager.
    virtual void revealIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes) = 0;
    /// Fills a menu with the albums to which elements can move.
    virtual void offerAlbumsForIndexesOfModel(BWThumbnailTableView &view, QMenu &menu, const QList<int> &indexes) = 0;
};

/// The rows of a grid of thumbnails and what its cells show. The grid asks for columns and rows once per reload, for cells
/// only when it paints them. GUI thread.
class BWThumbnailTableViewDataSource {
public:
    virtual ~BWThumbnailTableViewDataSource() = default;

    virtual int numberOfColumnsForView(const BWThumbnailTableView &view) = 0;
    virtual int numberOfRowsInTableView(const BWThumbnailTableView &view) = 0;
    /// In points. All rows are equally high: called only for the first, in a reload and when the grid's size changes.
    virtual int heightOfRow(const BWThumbnailTableView &view, int row) = 0;
    /// What to paint; must return at once.
    virtual BWThumbnailValue objectValueForTableColumn(const BWThumbnailTableView &view, int column, int row) = 0;
    /// An element's name for screen readers: "20240607_image_001, image". They add whether it is selected.
    virtual QString accessibleNameForElementAt(const BWThumbnailTableView &view, int index) = 0;
    /// Starts copying files into a folder, where they replace files of the same names; returns the names at once.
    virtual QStringList copyFiles(const QList<QUrl> &files, const QUrl &folder) = 0;
};
