#pragma once

#include "Views/Albums/BWThumbnailPixmaps.h"

#include <QAbstractItemDelegate>
#include <QIcon>

class BWThumbnailTableView;
struct BWThumbnailValue;

/// Paints the cells of a grid of thumbnails: the picture or what stands for it, a movie's length, whether the cell is
/// selected and has the focus. GUI thread.
class BWThumbnailCellPainter : public QAbstractItemDelegate {
    Q_OBJECT

public:
    explicit BWThumbnailCellPainter(const BWThumbnailTableView &view);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    /// The table decides on sizes.
    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override { return {}; }

private:
    void paintMark(QPainter &painter, const QRectF &rect) const;
    void paintPicture(QPainter &painter, const QRectF &rect, const BWThumbnailValue &value,
                      const QPalette &palette) const;

    const BWThumbnailTableView &m_view; // owns this
    const QIcon m_mark;
    mutable BWThumbnailPixmaps m_pixmaps;
};
