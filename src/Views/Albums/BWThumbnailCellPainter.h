// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <QAbstractItemDelegate>
#include <QCache>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QString>

class BWThumbnailTableView;
class QPainter;
class QPalette;
struct BWThumbnailValue;

/// The layout of a cell in a grid of thumbnails. All in points.
class BWThumbnailCellGeometry {
public:
    /// The distance between a selected picture and the outer edge of its frame.
    static constexpr double frameDistance = 3;

    /// The area that a picture may fill.
    static QRect pictureArea(const QRect &cell);
    /// The place of a picture of that many pixels: centred, in its own aspect, never enlarged, its edges on pixels of a
    /// screen of that scale. An empty size stands for a picture of unknown shape: 4:3.
    static QRectF pictureRect(const QRect &cell, const QSize &pixels, double scale);
    /// The mark of a selected cell: 5 by 5 points.
    static QRectF markRect(const QRect &cell);
};

/// Thumbnails at the size in which they are drawn, so that scrolling only copies them. Keeps the most recently used ones,
/// up to some megabytes. GUI thread.
class BWThumbnailPixmaps {
public:
    BWThumbnailPixmaps();

    /// The image scaled to that many screen pixels.
    QPixmap scaled(const QImage &image, const QSize &pixels);

private:
    struct Key {
        qint64 image;
        QSize size;
        friend bool operator==(const Key &, const Key &) = default;
        friend size_t qHash(const Key &key, size_t seed = 0)
        {
            return qHashMulti(seed, key.image, key.size.width(), key.size.height());
        }
    };
    QCache<Key, QPixmap> m_pixmaps; // cost in kilobytes
};

/// Paints the cells of a grid of thumbnails: the picture or a placeholder, a movie's length, the selection and the focus.
/// GUI thread.
class BWThumbnailCellPainter : public QAbstractItemDelegate {
    Q_OBJECT

public:
    explicit BWThumbnailCellPainter(const BWThumbnailTableView &view);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    /// Not used: the table sets the sizes.
    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override { return {}; }

    /// "0:12", "1:02:03"; a movie is never shorter than a second.
    static QString lengthText(std::chrono::milliseconds length);

private:
    void paintMark(QPainter &painter, const QRectF &rect, const QColor &ground) const;
    void paintPicture(QPainter &painter, const QRectF &rect, const BWThumbnailValue &value,
                      const QPalette &palette) const;

    const BWThumbnailTableView &m_view; // owns this
    const QIcon m_mark;
    mutable BWThumbnailPixmaps m_pixmaps;
};
