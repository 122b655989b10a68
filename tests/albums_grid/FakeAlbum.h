// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Views/Albums/BWAlbumGridModel.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"

#include <functional>
#include <QSet>

/// An album in memory only, which records what the grid asks for.
class FakeAlbum : public BWThumbnailTableViewDelegate, public BWThumbnailTableViewDataSource {
public:
    explicit FakeAlbum(int count) { setCount(count); }

    void setCount(int count)
    {
        m_elements.clear();
        for (int index = 0; index < count; ++index)
            m_elements.append(QUrl::fromLocalFile(QStringLiteral("/album/%1.jpg").arg(index)));
    }
    void insertFirst(const QString &name) { m_elements.prepend(QUrl::fromLocalFile(QStringLiteral("/album/") + name)); }

    static constexpr int columns = 2;
    QList<QUrl> copied;
    std::function<void()> onOperation = [] {}; ///< called in each of these operations
    QList<int> removed, opened, saved, shown, compared, filmed, onClipboard, renamed, revealed, movable;
    QSet<int> painted; ///< elements whose value the grid requested

    QList<QUrl> elementsForThumbnailTableView(const BWThumbnailTableView &) override { return m_elements; }
    QSize draggingSizeForElementAt(const BWThumbnailTableView &, int) override { return {}; }
    QString dragTypeForElementAt(const BWThumbnailTableView &, int) override { return QStringLiteral("public.jpeg"); }
    QImage thumbnailForElementAtIndex(const BWThumbnailTableView &, int) override { return {}; }
    void removeIndexesOfModel(BWThumbnailTableView &, const QList<int> &indexes) override { operate(removed, indexes); }
    void openIndexesOfModel(BWThumbnailTableView &, const QList<int> &indexes) override { operate(opened, indexes); }
    void showIndexOfModel(BWThumbnailTableView &, int index) override { operate(shown, {index}); }
    void compareIndexOfModel(BWThumbnailTableView &, int index) override { operate(compared, {index}); }
    void saveIndexesOfModel(BWThumbnailTableView &, const QList<int> &indexes) override { operate(saved, indexes); }
    void makeMovieOfIndexesOfModel(BWThumbnailTableView &, const QList<int> &indexes) override
    {
        operate(filmed, indexes);
    }
    void copyIndexesOfModel(BWThumbnailTableView &, const QList<int> &indexes) override
    {
        operate(onClipboard, indexes);
    }
    void renameIndexOfModel(BWThumbnailTableView &, int index) override { operate(renamed, {index}); }
    void revealIndexesOfModel(BWThumbnailTableView &, const QList<int> &indexes) override
    {
        operate(revealed, indexes);
    }
    void offerAlbumsForIndexesOfModel(BWThumbnailTableView &, QMenu &, const QList<int> &indexes) override
    {
        movable = indexes;
    }

    int numberOfColumnsForView(const BWThumbnailTableView &) override { return columns; }
    int numberOfRowsInTableView(const BWThumbnailTableView &) override
    {
        return BWAlbumGridModel::rowCount(static_cast<int>(m_elements.size()), columns);
    }
    int heightOfRow(const BWThumbnailTableView &view, int) override
    {
        return BWAlbumGridModel::rowHeight(view.viewport()->height());
    }
    BWThumbnailValue objectValueForTableColumn(const BWThumbnailTableView &, int column, int row) override
    {
        painted.insert(BWThumbnailTableView::cellIndex(row, column));
        return {};
    }
    QString accessibleNameForElementAt(const BWThumbnailTableView &, int index) override
    {
        return m_elements[index].fileName() + QStringLiteral(", image");
    }
    QStringList copyFiles(const QList<QUrl> &files, const QUrl &) override
    {
        copied = files;
        QStringList names;
        for (const QUrl &file : files)
            names.append(file.fileName());
        return names;
    }

private:
    void operate(QList<int> &log, const QList<int> &indexes)
    {
        log = indexes;
        onOperation();
    }

    QList<QUrl> m_elements;
};
