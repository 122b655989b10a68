#pragma once

#include <QItemSelection>
#include <QList>
#include <QSet>

/// Between the elements that are selected and the cells of the table that show them. GUI thread.
class BWThumbnailSelection {
public:
    /// As few rectangles of cells as there are gaps between them, so that thousands of elements cost little.
    static QItemSelection fromIndexes(const QAbstractItemModel &model, const QList<int> &ascending);
    static QSet<int> toIndexes(const QItemSelection &selection);
};
