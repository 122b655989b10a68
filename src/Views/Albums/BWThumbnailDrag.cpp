// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailDrag.h"

#include "Views/Utils/BWColors.h"

#include <algorithm>
#include <QBuffer>
#include <QDrag>
#include <QGuiApplication>
#include <QImageWriter>
#include <QPainter>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

const QString qtImage = u"application/x-qt-image"_s; // Qt offers it in every format it can write

/// TIFF if Qt can write it, which needs a plugin.
QString imageFormat()
{
    static const QString format =
        QImageWriter::supportedImageFormats().contains("tiff") ? u"image/tiff"_s : u"image/png"_s;
    return format;
}

constexpr QSize largest(128, 128); // anything larger would hide the drop target
constexpr QSize placeholder(96, 72);
constexpr int sheetDistance = 3; // between the sheets of a stack
constexpr double sheetShare = 0.3; // of the text colour
constexpr int badgePadding = 7;
constexpr double opacity = 0.9;

QRectF badgeRect(const QFontMetricsF &metrics, const QString &count, const QSize &whole)
{
    const double height = metrics.height() + 4;
    const double width = std::max(height, metrics.horizontalAdvance(count) + 2 * badgePadding);
    return {whole.width() - width, 0, width, height};
}

} // namespace

BWThumbnailMimeData::BWThumbnailMimeData(const QList<BWThumbnailDragItem> &items)
    : m_image(items.isEmpty() ? QImage() : items.first().image)
{
    QList<QUrl> files;
    for (const BWThumbnailDragItem &item : items)
        files.append(item.file);
    setUrls(files);
    if (!items.isEmpty())
        setData(u"com.apple.pasteboard.promised-file-content-type"_s, items.first().type.toUtf8());
}

QStringList BWThumbnailMimeData::formats() const
{
    QStringList formats = QMimeData::formats();
    if (!m_image.isNull())
        formats += {imageFormat(), qtImage};
    return formats;
}

QVariant BWThumbnailMimeData::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (m_image.isNull() || (mimeType != imageFormat() && mimeType != qtImage))
        return QMimeData::retrieveData(mimeType, type);
    if (mimeType == qtImage)
        return m_image;
    QByteArray encoded;
    QBuffer buffer(&encoded);
    buffer.open(QIODevice::WriteOnly);
    m_image.save(&buffer, mimeType == u"image/tiff"_s ? "tiff" : "png");
    return encoded;
}

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
    const QSize full = first.size.isEmpty() ? placeholder : first.size;
    const QSize sheet = full.scaled(full.boundedTo(largest), Qt::KeepAspectRatio).expandedTo({1, 1});
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
    const QPalette &palette = source.palette();
    for (int below = sheetsBelow; below >= 0; --below) {
        const QRect rect(QPoint(0, badgeRoom) + QPoint(1, 1) * (sheetDistance * below), sheet);
        painter.fillRect(rect, BWColors::line(palette, sheetShare));
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
