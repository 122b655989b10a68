#pragma once

#include "Views/Albums/BWThumbnailValue.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

class BWThumbnailTableView;

/// The rows of a grid of thumbnails and what its cells show. Columns and rows are asked for once in a reload, cells only
/// when they are painted, however many there are. GUI thread.
class BWThumbnailTableViewDataSource {
public:
    virtual ~BWThumbnailTableViewDataSource() = default;

    virtual int numberOfColumnsForView(const BWThumbnailTableView &view) = 0;
    virtual int numberOfRowsInTableView(const BWThumbnailTableView &view) = 0;
    /// Points. Rows are equally high, so only the first is asked for: in a reload and whenever the grid's size changes.
    virtual int heightOfRow(const BWThumbnailTableView &view, int row) = 0;
    /// What to paint; must answer at once.
    virtual BWThumbnailValue objectValueForTableColumn(const BWThumbnailTableView &view, int column, int row) = 0;
    /// How a screen reader calls an element: "20240607_image_001, image". That it is selected is told without that.
    virtual QString accessibleNameForElementAt(const BWThumbnailTableView &view, int index) = 0;
    /// Begins to copy files into a folder, replacing what has their names there, and returns the names at once.
    virtual QStringList copyFiles(const QList<QUrl> &files, const QUrl &folder) = 0;
};
