#include "Views/Albums/BWThumbnailSelection.h"

#include "Views/Albums/BWThumbnailTableView.h"

#include <algorithm>

namespace {

/// All cells of elements from `first` to `last`.
void addRun(QItemSelection &selection, const QAbstractItemModel &model, int first, int last)
{
    const int lastColumn = std::min(model.columnCount(), 2) - 1;
    const auto add = [&](int top, int left, int bottom, int right) {
        right = std::min(right, lastColumn);
        if (top <= bottom && left <= right)
            selection.append({model.index(top, left), model.index(bottom, right)});
    };
    if (first % 2 == 1) {
        add(first / 2, 1, first / 2, 1);
        ++first;
    }
    if (first <= last && last % 2 == 0) {
        add(last / 2, 0, last / 2, 0);
        --last;
    }
    if (first < last)
        add(first / 2, 0, last / 2, 1);
}

} // namespace

QItemSelection BWThumbnailSelection::fromIndexes(const QAbstractItemModel &model, const QList<int> &ascending)
{
    QItemSelection selection;
    for (qsizetype begin = 0; begin < ascending.size();) {
        qsizetype end = begin + 1;
        while (end < ascending.size() && ascending[end] == ascending[end - 1] + 1)
            ++end;
        addRun(selection, model, ascending[begin], ascending[end - 1]);
        begin = end;
    }
    return selection;
}

QSet<int> BWThumbnailSelection::toIndexes(const QItemSelection &selection)
{
    QSet<int> indexes;
    for (const QModelIndex &index : selection.indexes())
        indexes.insert(BWThumbnailTableView::cellIndex(index.row(), index.column()));
    return indexes;
}
