// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWMagnifier.h"

#include "Views/MainWindow/BWCenteringClipView.h"

#include <QPainter>
#include <QPainterPath>
#include <utility>

namespace {

constexpr int room = BWMagnifier::size / BWMagnifier::factor + 2; // pixels of the picture, with those that show in part
constexpr double cornerRadius = 6;
constexpr QColor dark(0, 0, 0, 200);
constexpr QColor light(255, 221, 64);

} // namespace

BWMagnifier::BWMagnifier(const BWCenteringClipView &view) : m_view(view) { }

/// One pixel to one, the place in the middle as near as whole pixels allow.
BWRenderRequest BWMagnifier::requestFor(QPointF place) const
{
    const BWLiveViewGeometry &picture = m_view.scene().mainPicture;
    const QPointF middle(room / 2.0, room / 2.0);
    const double width = picture.imageSize().width();
    const auto placed = [&](QPointF at) { return BWRenderRequest::placed(picture, {room, room}, {at, width}, 1); };
    const QPointF found = placed(middle).pictureToViewport().map(place);
    return placed(2 * middle - found);
}

/// A still comes once, a live image frame by frame.
void BWMagnifier::feed()
{
    const BWFrame frame = m_view.mainFrame();
    if (frame.isNull())
        return;
    const bool isNew = std::exchange(m_pixels, frame.plane(0).data) != frame.plane(0).data;
    if (std::exchange(m_sequence, frame.sequence()) != frame.sequence() || isNew)
        m_renderer->prepareBuffer(frame);
}

void BWMagnifier::draw(QPainter &painter, QPointF place, QPoint corner)
{
    if (!m_renderer) {
        m_renderer = std::make_unique<BWLiveRenderer>();
        connect(m_renderer.get(), &BWLiveRenderer::imageReady, this, &BWMagnifier::imageReady);
    }
    m_renderer->setRequest(requestFor(place));
    feed();
    m_renderer->takeImage(m_image);
    if (m_image.image.isNull())
        return;

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(corner);
    QPainterPath frame;
    frame.addRoundedRect(QRectF(0, 0, size, size), cornerRadius, cornerRadius);
    painter.save();
    painter.setClipPath(frame, Qt::IntersectClip);
    painter.fillPath(frame, Qt::black);
    painter.translate(size / 2.0, size / 2.0);
    painter.scale(factor, factor);
    // The image may still be that of the place before: it is laid so that the place is right.
    painter.translate(-m_image.request.pictureToViewport().map(place));
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(m_image.position, m_image.image);
    painter.restore();

    QPainterPath cross;
    constexpr double middle = size / 2.0;
    constexpr double gap = 7; // the very place stays free
    for (const QPointF way : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
        cross.moveTo(QPointF(middle, middle) + gap * way);
        cross.lineTo(QPointF(middle, middle) + (middle - 1) * way);
    }
    // Of even widths, as they lie between two pixels.
    painter.strokePath(cross, QPen(dark, 4, Qt::SolidLine, Qt::FlatCap));
    painter.strokePath(cross, QPen(light, 2, Qt::SolidLine, Qt::FlatCap));
    painter.strokePath(frame, QPen(dark, 4));
    painter.strokePath(frame, QPen(light, 2));
    painter.restore();
}

void BWMagnifier::stop()
{
    m_renderer.reset();
    m_image = {};
    m_pixels = nullptr;
}
