#include "Views/Albums/BWThumbnailCellPainter.h"

#include "Views/Albums/BWThumbnailCellGeometry.h"
#include "Views/Albums/BWThumbnailPainting.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDataSource.h"
#include "Views/Utils/BWIcons.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

/// The shape of what is or will be seen.
QSize shapeOf(const BWThumbnailValue &value)
{
    if (value.state == BWThumbnailValue::State::NoPicture)
        return {};
    return value.naturalSize.isEmpty() ? value.picture.size() : value.naturalSize;
}

} // namespace

BWThumbnailCellPainter::BWThumbnailCellPainter(const BWThumbnailTableView &view)
    : m_view(view), m_mark(BWIcons::image(u"green_tab_002.png"_s))
{
}

void BWThumbnailCellPainter::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    if (!m_view.hasElement(index))
        return;
    const double scale = painter->device()->devicePixelRatioF();
    const BWThumbnailValue value = m_view.dataSource()->objectValueForTableColumn(m_view, index.column(), index.row());
    // One column may be a point wider than the other; the pictures of a row are still as large.
    QRect cell = option.rect;
    cell.setWidth(m_view.narrowestColumn());
    const QRectF rect = BWThumbnailCellGeometry::pictureRect(cell, shapeOf(value), scale);
    const bool selected = m_view.cellIsSelectedAtRow(index.row(), index.column());

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (selected)
        BWThumbnailPainting::drawSelection(*painter, rect, option.palette);
    paintPicture(*painter, rect, value, option.palette);
    if (value.isMovie)
        BWThumbnailPainting::drawMovieMark(*painter, rect, value.length, option.font);
    if (m_view.hasFocus() && index == m_view.currentIndex())
        BWThumbnailPainting::drawFocus(*painter, rect, option.palette);
    if (selected)
        paintMark(*painter, BWThumbnailCellGeometry::markRect(option.rect));
    painter->restore();
}

void BWThumbnailCellPainter::paintMark(QPainter &painter, const QRectF &rect) const
{
    const QPixmap mark = m_mark.pixmap(rect.size().toSize(), painter.device()->devicePixelRatioF());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect, mark, QRectF(mark.rect()));
}

void BWThumbnailCellPainter::paintPicture(QPainter &painter, const QRectF &rect, const BWThumbnailValue &value,
                                          const QPalette &palette) const
{
    if (value.state == BWThumbnailValue::State::Picture && !value.picture.isNull()) {
        const double scale = painter.device()->devicePixelRatioF();
        QPixmap pixmap = m_pixmaps.scaled(value.picture, (rect.size() * scale).toSize());
        pixmap.setDevicePixelRatio(scale);
        painter.drawPixmap(rect.topLeft(), pixmap);
        return;
    }
    BWThumbnailPainting::drawPlaceholder(painter, rect, palette);
    if (value.state == BWThumbnailValue::State::NoPicture)
        BWThumbnailPainting::drawNoPicture(painter, rect, palette);
}
