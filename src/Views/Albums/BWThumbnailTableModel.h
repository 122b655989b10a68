#pragma once

#include <QAbstractTableModel>
#include <QUrl>

class BWThumbnailTableView;

/// The cells of a grid of thumbnails as Qt's table and screen readers see them. What it tells of an element it asks for
/// at that moment; only the size of the grid stays the same from one reload to the next. GUI thread.
class BWThumbnailTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit BWThumbnailTableModel(BWThumbnailTableView &view);

    /// Takes the number of rows and columns from the view's data source.
    void reload();
    /// The element as it was at the last reload; empty for none.
    QUrl elementAt(int index) const { return m_elements.value(index); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    /// Nothing: rows and columns only lay the elements out.
    QVariant headerData(int, Qt::Orientation, int) const override { return {}; }
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    BWThumbnailTableView &m_view; // owns this
    QList<QUrl> m_elements;
    int m_rows = 0;
    int m_columns = 0;
};
