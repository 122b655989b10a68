#include "Views/Utils/BWLightTabItem.h"

#include "Views/Utils/BWIcons.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
constexpr double dotSize = 4;
constexpr double dotDistance = 7;
} // namespace

BWLightTabItem::BWLightTabItem()
    : m_greenImage(BWIcons::image(u"green_tab_002.png"_s)), m_grayImage(BWIcons::image(u"gray_tab_002.png"_s))
{
}

QRectF BWLightTabItem::dotRect(const QRectF &labelRect)
{
    return {labelRect.x() - dotDistance, labelRect.y() + labelRect.height() * 0.5 - 1, dotSize, dotSize};
}

void BWLightTabItem::drawDot(QPainter &painter, const QRectF &labelRect, bool selected) const
{
    const QSize size(static_cast<int>(dotSize), static_cast<int>(dotSize));
    const QPixmap pixmap = (selected ? m_greenImage : m_grayImage).pixmap(size, painter.device()->devicePixelRatioF());
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawPixmap(dotRect(labelRect), pixmap, QRectF(pixmap.rect()));
}
