#include "Views/Albums/BWThumbnailDrag.h"

#include "Views/Albums/BWThumbnailMimeData.h"

#include <algorithm>
#include <QDrag>
#include <QGuiApplication>
#include <QPainter>
#include <QWidget>

namespace {

constexpr QSize largest(128, 128); // what is larger hides the place where it will be dropped
constexpr QSize placeholder(96, 72);
constexpr int sheetDistance = 3; // between the sheets of a stack
constexpr int badgePadding = 7;
constexpr double opacity = 0.9;

QRectF badgeRect(const QFontMetricsF &metrics, const QString &count, const QSize &whole)
{
    const double height = metrics.height() + 4;
    const double width = std::max(height, metrics.horizontalAdvance(count) + 2 * badgePadding);
    return {whole.width() - width, 0, width, height};
}

} // namespace

void BWThumbnailDrag::run(QWidget &source, const QList<BWThumbnailDragItem> &items)
{
    if (items.isEmpty() || !(QGuiApplication::mouseButtons() & Qt::LeftButton))
        return;
    auto *drag = new QDrag(&source); // Qt deletes it
    drag->setMimeData(new BWThumbnailMimeData(items));
    const QPixmap seen = picture(source, items);
    drag->setPixmap(seen);
    drag->setHotSpot(QRectF(QPointF(), seen.deviceIndependentSize()).center().toPoint());
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

QPixmap BWThumbnailDrag::picture(const QWidget &source, const QList<BWThumbnailDragItem> &items)
{
    const BWThumbnailDragItem &first = items.first();
    const QSize wished = first.size.isEmpty() ? placeholder : first.size;
    const QSize sheet = wished.scaled(wished.boundedTo(largest), Qt::KeepAspectRatio).expandedTo({1, 1});
    const int sheetsBelow = std::min<int>(static_cast<int>(items.size()), 3) - 1;
    const QString count = items.size() > 1 ? QString::number(items.size()) : QString();
    const QFontMetricsF metrics(source.font());
    const int badgeRoom = count.isEmpty() ? 0 : qRound(metrics.height() / 2);
    const QSize whole = sheet + QSize(badgeRoom, badgeRoom) + QSize(1, 1) * (sheetDistance * sheetsBelow);

    QPixmap pixmap(whole * source.devicePixelRatioF());
    pixmap.setDevicePixelRatio(source.devicePixelRatioF());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setOpacity(opacity);
    const QPalette palette = source.palette();
    for (int below = sheetsBelow; below >= 0; --below) {
        const QRect rect(QPoint(0, badgeRoom) + QPoint(1, 1) * (sheetDistance * below), sheet);
        painter.fillRect(rect, palette.color(QPalette::Mid));
        painter.setPen(palette.color(QPalette::Base));
        if (below > 0 || first.image.isNull())
            painter.drawRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5));
        else
            painter.drawImage(rect,
                              first.image.scaled(sheet * source.devicePixelRatioF(), Qt::IgnoreAspectRatio,
                                                 Qt::SmoothTransformation));
    }
    if (!count.isEmpty()) {
        const QRectF badge = badgeRect(metrics, count, whole);
        painter.setOpacity(1);
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette.color(QPalette::Highlight));
        painter.drawRoundedRect(badge, badge.height() / 2, badge.height() / 2);
        painter.setFont(source.font());
        painter.setPen(palette.color(QPalette::HighlightedText));
        painter.drawText(badge, Qt::AlignCenter, count);
    }
    return pixmap;
}
