// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <limits>
#include <QAbstractTableModel>
#include <QItemSelection>
#include <QList>
#include <QSet>
#include <QUrl>

class BWThumbnailTableView;

/// The cells of a grid of thumbnails for Qt's table and for screen readers. It keeps only the grid's size from one reload
/// to the next; everything about an element comes from the view's delegate and data source when needed. GUI thread.
class BWThumbnailTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit BWThumbnailTableModel(BWThumbnailTableView &view);

    /// Takes rows, columns and elements from the view's data source and delegate.
    void reload();
    /// The element as it was at the last reload; empty for none.
    QUrl elementAt(int index) const { return m_elements.value(index); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    /// None: rows and columns have no meaning of their own.
    QVariant headerData(int, Qt::Orientation, int) const override { return {}; }
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    /// The cells of these elements, in as few rectangles as possible: thousands of elements must cost little.
    QItemSelection cellsOf(const QList<int> &ascending) const;
    static QSet<int> elementsIn(const QItemSelection &cells);
    /// Where an element is now that was at `near`: quick in a long list that has hardly changed. -1 if it is not within
    /// `reach` of that place.
    static int find(const QList<QUrl> &elements, const QUrl &element, int near,
                    int reach = std::numeric_limits<int>::max());

private:
    BWThumbnailTableView &m_view; // owns this
    QList<QUrl> m_elements;
    int m_rows = 0;
    int m_columns = 0;
};
